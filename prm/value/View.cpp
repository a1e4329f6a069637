#include "prm/View.h"

#include "prm/text/LineParts.h"

#include <QDebug>
#include <QLatin1String>

namespace Prm {

namespace {

constexpr quint32 largestPrefixId = 2147483646u;

/// Reads ASCII digits from `position` on; false when there are none or the number is too large for a prefix.
bool readId(QStringView text, qsizetype& position, quint32& id) {
    const qsizetype start = position;
    quint64 number = 0;
    for (; position < text.size(); ++position) {
        const ushort digit = text[position].unicode();
        if (digit < '0' || digit > '9')
            break;
        number = number * 10 + (digit - '0');
        if (number > largestPrefixId)
            return false;
    }
    id = static_cast<quint32>(number);
    return position > start;
}

} // namespace

const View& View::INVALID() {
    static const View invalid(0xFFFFFFFFu);
    return invalid;
}

QString View::toString() const {
    return QLatin1String("view[") + QString::number(m_id) + QLatin1String("].");
}

bool View::extractStringPrefix(QStringView& text, View& view) {
    constexpr QStringView opening(u"view[");
    constexpr QStringView closing(u"].");
    if (!detail::beginsWith(text, opening))
        return false;
    qsizetype position = opening.size();
    quint32 id = 0;
    if (!readId(text, position, id) || !detail::beginsWith(text.mid(position), closing))
        return false;
    text = text.mid(position + closing.size());
    view = View(id);
    return true;
}

bool View::extractStringPrefix(QString& text, View& view) {
    QStringView rest(text);
    if (!extractStringPrefix(rest, view))
        return false;
    text.remove(0, text.size() - static_cast<int>(rest.size()));
    return true;
}

QDebug operator<<(QDebug debug, View view) {
    const QDebugStateSaver saver(debug);
    if (view.isValid())
        debug.nospace() << "View(" << view.id() << ')';
    else
        debug.nospace() << "View(invalid)";
    return debug;
}

} // namespace Prm
