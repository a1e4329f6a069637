#include "prm/ProjectFileVersion.h"

#include "host/product/ProductInfo.h"
#include "prm/ParameterSet.h"
#include "prm/StaticParameter.h"

#include <QStringList>
#include <QTextStream>

#include <memory>
#include <tuple>

namespace Prm {

namespace {

auto inOrder(const BuildVersion& version) {
    return std::make_tuple(version.majorNumber(), version.minorNumber(), version.patchNumber(), version.buildNumber());
}

} // namespace

BuildVersion::BuildVersion(const QString& version, const QString& build)
    : m_build(build.section(QLatin1Char('.'), 0, 0).toInt()) {
    const QStringList parts = version.split(QLatin1Char('.'));
    if (parts.size() < 2)
        return;
    m_major = parts.at(0).toInt();
    m_minor = parts.at(1).toInt();
    if (parts.size() > 2)
        m_patch = parts.at(2).section(QLatin1Char(' '), 0, 0).toInt();
}

bool BuildVersion::operator<(const BuildVersion& other) const {
    return inOrder(*this) < inOrder(other);
}

bool BuildVersion::operator==(const BuildVersion& other) const {
    return inOrder(*this) == inOrder(other);
}

ProjectFileVersion::ProjectFileVersion(const QString& application)
    : streamVersion(StreamVersion::latest), productName(Product::qstrGetProductName(application)),
      productVersion(Product::qstrGetProductVersion(application)),
      productBuildNumber(Product::qstrGetProductBuildNumber(application)) {
    setTimestamp(QDateTime::currentDateTimeUtc());
}

QDateTime ProjectFileVersion::timestamp() const {
    return QDateTime::fromString(m_timestamp, Qt::ISODate);
}

void ProjectFileVersion::setTimestamp(const QDateTime& time) {
    m_timestamp = time.toUTC().toString(Qt::ISODate);
}

void ProjectFileVersion::initialiseProperties(ParameterSet& set) {
    const auto bind = [&](const char* name, auto& field) {
        using Value = std::remove_reference_t<decltype(field)>;
        set.adoptBasicParameter(std::make_unique<VirtualParameter<Value>>(QString::fromLatin1(name), field));
    };
    bind("FileVersion", streamVersion);
    bind("ProductName", productName);
    bind("ProductBuildNumber", productBuildNumber);
    bind("ProductVersion", productVersion);
    bind("FileTimestamp", m_timestamp);
}

void ProjectFileVersion::read(QTextStream& stream) {
    *this = ProjectFileVersion();
    ParameterSet properties;
    initialiseProperties(properties);
    while (!stream.atEnd() && !atEnd())
        properties.bStreamIn(stream.readLine(), *this);
}

bool ProjectFileVersion::atEnd() const {
    if (streamVersion == StreamVersion::invalid)
        return false;
    return streamVersion < StreamVersion::versionInfo2 || (!productName.isEmpty() && !productVersion.isEmpty());
}

} // namespace Prm
