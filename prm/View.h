#pragma once

#include "prm/Export.h"

#include <QString>
#include <QStringView>

class QDebug;

namespace Prm {

/// One view of a project, for example the left eye: an id, numbered from 0 in the order of the registry `Views`.
/// Ids are compared and tested as signed numbers where that matters: every id with the top bit set is invalid.
///
/// \snippet stereo_offset.cpp split
/// \threads A plain value.
class PRM_EXPORT View {
public:
    constexpr View(quint32 id = 0) : m_id(id) {}

    static constexpr quint32 defaultViewId() { return 0; }
    /// The invalid view (all bits set): one object for the whole process.
    static const View& INVALID();

    constexpr quint32 id() const { return m_id; }
    constexpr bool isValid() const { return static_cast<qint32>(m_id) >= 0; }

    /// "view[N]." with the id in decimal, the prefix of this view's lines in project text.
    QString toString() const;

    /// Takes a leading "view[N]." off the text, once, and stores N in `view`. The prefix is case-sensitive and N is a
    /// decimal number up to 2147483646; without such a prefix both arguments are left alone and the answer is false.
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
