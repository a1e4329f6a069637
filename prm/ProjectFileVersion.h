#pragma once

#include "prm/Export.h"

#include <QDateTime>
#include <QString>

class QTextStream;

namespace Prm {

class ParameterSet;

/// The versions of the project text's format. Several names share a value: they mark features that came together.
namespace StreamVersion {

inline constexpr quint32 invalid = 0;
inline constexpr quint32 v2_0 = 2000;
inline constexpr quint32 v2001 = 2001;
inline constexpr quint32 v2018 = 2018;
inline constexpr quint32 projectMerging = 2019;
inline constexpr quint32 v2019 = 2019;
inline constexpr quint32 mvInternal = 3000;
/// From here on the header also carries the product's name and version.
inline constexpr quint32 versionInfo2 = 3001;
inline constexpr quint32 v4_1 = 3001;
/// From here on a list of views, and a value without a view, reset a parameter's views.
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
    /// From texts such as "4.1.2 beta" and "12". What is no number counts as 0, and so does a version without a dot.
    BuildVersion(const QString& version, const QString& build);

    int majorNumber() const { return m_major; }
    int minorNumber() const { return m_minor; }
    int patchNumber() const { return m_patch; }
    int buildNumber() const { return m_build; }

    bool operator<(const BuildVersion& other) const;
    bool operator==(const BuildVersion& other) const;
    bool operator!=(const BuildVersion& other) const { return !(*this == other); }

private:
    qint32 m_major = 0;
    qint32 m_minor = 0;
    qint32 m_patch = 0;
    qint32 m_build = 0;
};

/// What the header of a project text says: the version of its format, and the product that wrote it. Every reader gets
/// the version of its file, to tell old text from new.
///
/// \snippet saving_and_loading.cpp version
/// \threads One at a time, together with the parameters that are bound to its fields.
class PRM_EXPORT ProjectFileVersion {
public:
    /// A header not yet read.
    ProjectFileVersion() = default;
    /// A header for text about to be written: the latest version, the product as the host names it for `application`,
    /// and the present time.
    explicit ProjectFileVersion(const QString& application);

    /// The time of writing, invalid when it is not known.
    QDateTime timestamp() const;
    /// Text in ISO 8601 form, in UTC.
    const QString& timestampText() const { return m_timestamp; }
    void setTimestamp(const QDateTime& time);

    operator BuildVersion() const { return {productVersion, productBuildNumber}; }

    /// Adds five virtual parameters, bound to the fields of this object, that the set then owns: FileVersion,
    /// ProductName, ProductBuildNumber, ProductVersion and FileTimestamp. Written by a set without a name, they are the
    /// header.
    void initialiseProperties(ParameterSet& set);
    /// Reads the header from the start of a text, and leaves the stream at the first line after it. With the written
    /// order that is the FileTimestamp line: the time of writing stays unknown. A header that is cut short is looked
    /// for up to the end of the text.
    void read(QTextStream& stream);
    /// Whether the header has been read far enough: the version alone before `StreamVersion::versionInfo2`, product
    /// name and version from there on.
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
