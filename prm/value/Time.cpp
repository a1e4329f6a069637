#include "prm/Time.h"

#include "prm/Context.h"
#include "prm/text/NumberText.h"
#include "prm/text/PlainNumbers.h"

#include <QDebug>
#include <QTextStream>

namespace Prm {

Time writtenTime(Time time) {
    QString text;
    detail::addSixDigits(text, time.toDouble());
    return Time::fromFloat(detail::toFloat(text));
}

Frame::Frame(const BaseContext& context) {
    *this = context;
}

Frame& Frame::operator=(const BaseContext& context) {
    constexpr double below64Bits = -9223372036854775808.0;
    const double time = context.time.toDouble();
    if (time < below64Bits)
        return *this = Frame(INVALID);
    return *this = fromUInt(static_cast<quint32>(static_cast<qint64>(time)));
}

QTextStream& operator<<(QTextStream& stream, const Frame& frame) {
    const detail::PlainNumbers plain(stream);
    return stream << frame.toUInt();
}

QTextStream& operator>>(QTextStream& stream, Frame& frame) {
    const detail::PlainNumbers plain(stream);
    quint32 number = 0;
    stream >> number;
    frame = Frame(number);
    return stream;
}

QDebug operator<<(QDebug debug, Time time) {
    const QDebugStateSaver saver(debug);
    if (time.isValid())
        debug.nospace() << "Time(" << time.toDouble() << ')';
    else
        debug.nospace() << "Time(invalid)";
    return debug;
}

QDebug operator<<(QDebug debug, Frame frame) {
    const QDebugStateSaver saver(debug);
    if (frame.isValid())
        debug.nospace() << "Frame(" << frame.toUInt() << ')';
    else
        debug.nospace() << "Frame(invalid)";
    return debug;
}

} // namespace Prm
