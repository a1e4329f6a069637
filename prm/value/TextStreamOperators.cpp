#include "prm/TextStreamOperators.h"

#include "prm/text/NumberText.h"
#include "prm/text/PlainNumbers.h"

#include <QPoint>
#include <QPointF>

namespace Prm {

namespace {

QTextStream& write(QTextStream& stream, const QString& text) {
    const detail::PlainNumbers plain(stream);
    return stream << text;
}

template <class Number> Number read(QTextStream& stream) {
    const detail::PlainNumbers plain(stream);
    Number number{};
    stream >> number;
    return number;
}

} // namespace

QTextStream& operator<<(QTextStream& stream, bool value) {
    return write(stream, QString(QLatin1Char(value ? '1' : '0')));
}

QTextStream& operator>>(QTextStream& stream, bool& value) {
    value = read<int>(stream) != 0;
    return stream;
}

QTextStream& operator<<(QTextStream& stream, unsigned char value) {
    return write(stream, QString::number(value));
}

QTextStream& operator>>(QTextStream& stream, unsigned char& value) {
    value = static_cast<unsigned char>(read<unsigned int>(stream));
    return stream;
}

QTextStream& operator<<(QTextStream& stream, const QPoint& value) {
    return write(stream, QString::number(value.x()) + QString::number(value.y()));
}

QTextStream& operator>>(QTextStream& stream, QPoint& value) {
    value.setX(read<int>(stream));
    value.setY(read<int>(stream));
    return stream;
}

QTextStream& operator<<(QTextStream& stream, const QPointF& value) {
    QString text;
    detail::addShortest(text, value.x());
    detail::addShortest(text, value.y());
    return write(stream, text);
}

QTextStream& operator>>(QTextStream& stream, QPointF& value) {
    value.setX(read<double>(stream));
    value.setY(read<double>(stream));
    return stream;
}

} // namespace Prm
