#pragma once

#include "prm/Export.h"

#include <QString>
#include <QStringView>

class QDebug;

namespace Prm {

/// One view of a project, for example the left eye: an id, which counts from 0 in the order of the registry `Views`.
/// Every id with the top bit set, that is, negative as a signed number, is invalid.
///
/// \snippet stereo_offset.cpp split
/// \threads A plain value.
class PRM_EXPORT View {
public:
    constexpr View(quint32 id = 0) : m_id(id) {}

    /// The id of the first view, 0.
    static constexpr quint32 defaultViewId() { return 0; }
    /// The invalid view (all bits set): one object for the whole process.
    static const View& INVALID();

    /// The id, also of an invalid view.
    constexpr quint32 id() const { return m_id; }
    /// Whether the id is at most 2147483647.
    constexpr bool isValid() const { return static_cast<qint32>(m_id) >= 0; }

    /// "view[N]." with the id in decimal, the prefix of this view's lines in project text.
    QString toString() const;

    /// Removes one leading "view[N]." from the text and stores N in `view`. The prefix is case-sensitive, N a decimal
    /// number up to 2147483646. Without such a prefix, returns false and changes neither argument.
    static bool extractStringPrefix(QString& text, View& view);
    static bool extractStringPrefix(QStringView& text, View& view);

    friend constexpr bool operator==(View a, View b) { return a.m_id == b.m_id; }
    friend constexpr bool operator!=(View a, View b) { return a.m_id != b.m_id; }
    friend constexpr bool operator<(View a, View b) { return a.m_id < b.m_id; }

private:
    quint32 m_id;
};

inline uint qHash(View view, uint seed = 0) noexcept {
    return view.id() ^ seed;
}

PRM_EXPORT QDebug operator<<(QDebug debug, View view);

} // namespace Prm

Q_DECLARE_TYPEINFO(Prm::View, Q_PRIMITIVE_TYPE);
