#pragma once

#include "prm/Export.h"

#include <QDateTime>
#include <QString>

class QTextStream;

namespace Prm {

class ParameterSet;

/// The versions of the project text's format. Names with the same value mark features of the same version.
namespace StreamVersion {

inline constexpr quint32 invalid = 0;
inline constexpr quint32 v2_0 = 2000;
inline constexpr quint32 v2001 = 2001;
inline constexpr quint32 v2018 = 2018;
inline constexpr quint32 projectMerging = 2019;
inline constexpr quint32 v2019 = 2019;
inline constexpr quint32 mvInternal = 3000;
/// Since this version the header has the product's name and version.
inline constexpr quint32 versionInfo2 = 3001;
inline constexpr quint32 v4_1 = 3001;
/// Since this version a list of views, and a value without a view, reset a parameter's views.
inline constexpr quint32 anyViewList = 3001;
inline constexpr quint32 trackLayerBelow = 3002;
inline constexpr quint32 latest = 3002;

} // namespace StreamVersion

/// A product's version and build number, comparable.
///
/// \snippet saving_and_loading.cpp version
/// \threads A plain value.
class PRM_EXPORT BuildVersion {
public:
    /// 0.0.0 build 0.
    BuildVersion() = default;
    /// From texts such as "4.1.2 beta" and "12". A part that is no number is 0, and so is a version without a dot.
    BuildVersion(const QString& version, const QString& build);

    int majorNumber() const { return m_major; }
    int minorNumber() const { return m_minor; }
    int patchNumber() const { return m_patch; }
    int buildNumber() const { return m_build; }

    /// Compares major, minor, patch and build number, in this order.
    bool operator<(const BuildVersion& other) const;
    bool operator==(const BuildVersion& other) const;
    bool operator!=(const BuildVersion& other) const { return !(*this == other); }

private:
    qint32 m_major = 0;
    qint32 m_minor = 0;
    qint32 m_patch = 0;
    qint32 m_build = 0;
};

/// The header of a project text: the version of its format, and the product that wrote it. Readers receive it, so that
/// they can read old versions.
///
/// \snippet saving_and_loading.cpp version
/// \threads One at a time, together with the parameters that are bound to its fields.
class PRM_EXPORT ProjectFileVersion {
public:
    /// A header that was not read yet.
    ProjectFileVersion() = default;
    /// A header for writing: the latest version, the product (`Product::productName(application)` and so on), and the
    /// present time.
    explicit ProjectFileVersion(const QString& application);

    /// The time of writing, invalid if it is not known.
    QDateTime timestamp() const;
    /// The time of writing in ISO 8601 form, in UTC.
    const QString& timestampText() const { return m_timestamp; }
    /// Sets the time of writing; stored in UTC.
    void setTimestamp(const QDateTime& time);

    /// The version and build number of the product.
    operator BuildVersion() const { return {productVersion, productBuildNumber}; }

    /// Adds five virtual parameters, which the set owns and which refer to the fields of this object: FileVersion,
    /// ProductName, ProductBuildNumber, ProductVersion and FileTimestamp. A set without a name writes them as the
    /// header.
    void initialiseProperties(ParameterSet& set);
    /// Reads lines until `atEnd()`. In the written order the FileTimestamp line is next, so the time of writing stays
    /// unknown. If the header is incomplete, reads to the end of the text.
    void read(QTextStream& stream);
    /// Whether the header has been read: the version, and since `StreamVersion::versionInfo2` product name and version.
    bool atEnd() const;

    quint32 streamVersion = StreamVersion::invalid;
    QString productName;
    /// Dotted, such as "4.1.2".
    QString productVersion;
    QString productBuildNumber;

private:
    QString m_timestamp;
};

} // namespace Prm
