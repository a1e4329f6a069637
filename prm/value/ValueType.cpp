#include "prm/ValueType.h"

#include "prm/text/LineNotes.h"
#include "prm/text/NumberText.h"
#include "prm/text/TextTokens.h"

#include <QtEndian>

#include <cmath>
#include <cstring>
#include <limits>
#include <utility>

namespace Prm {

namespace {

/// Adds an unsigned number's bytes, lowest first.
template <class Number> void addBytes(Bsc::Hash& hash, Number number) {
    const Number bytes = qToLittleEndian(number);
    hash.addData(&bytes, sizeof bytes);
}

void addBytes(Bsc::Hash& hash, double number) {
    quint64 bits = 0;
    std::memcpy(&bits, &number, sizeof bits);
    addBytes(hash, bits);
}

template <class Integer> Integer rounded(double value) {
    using Limits = std::numeric_limits<Integer>;
    if (std::isnan(value))
        return 0;
    const double nearest = std::round(value);
    if (nearest <= static_cast<double>(Limits::min()))
        return Limits::min();
    if (nearest >= static_cast<double>(Limits::max()))
        return Limits::max();
    return static_cast<Integer>(nearest);
}

/// Whether Qt converts what the variant holds to a whole number: a real number outside the range of 64 bits it does
/// not, that is undefined. Inside that range Qt rounds, and keeps the lowest 32 bits.
bool isConvertedByQt(const QVariant& variant) {
    if (variant.userType() != QMetaType::Double && variant.userType() != QMetaType::Float)
        return true;
    constexpr double limit = 9e18;
    return std::abs(variant.toDouble()) < limit;
}

template <class Integer> Integer integerFromVariant(const QVariant& variant) {
    return isConvertedByQt(variant) ? GeneralValueType<Integer>::fromVariant(variant)
                                    : rounded<Integer>(variant.toDouble());
}

/// What a text stream makes of a text that is more, or other, than a number: the number that it begins with, or 0.
template <class Number> Number readLeadingNumber(const QString& text) {
    QString copy = text;
    QTextStream stream(&copy, QIODevice::ReadOnly);
    stream.setIntegerBase(10);
    Number number{};
    stream >> number;
    return number;
}

int parse(const QString& text, bool& whole, int) {
    return text.toInt(&whole);
}

unsigned int parse(const QString& text, bool& whole, unsigned int) {
    return text.toUInt(&whole);
}

template <class Integer> Integer readInteger(const QString& text) {
    bool whole = false;
    const Integer number = parse(text, whole, Integer{});
    if (whole)
        return number;
    const auto leading = readLeadingNumber<Integer>(text);
    const double real = detail::toDouble(text, &whole);
    if (!whole || real != static_cast<double>(leading))
        detail::LineNotes::addLoss("value", text, "is not a whole number that fits");
    return leading;
}

double readReal(const QString& text) {
    bool whole = false;
    const double number = detail::toDouble(text, &whole);
    if (whole)
        return number;
    detail::LineNotes::addLoss("value", text, "is not a number");
    return readLeadingNumber<double>(text);
}

/// What the stream operator makes of a text that is neither 0 nor 1.
bool readSwitch(const QString& text) {
    QString copy = text;
    QTextStream stream(&copy, QIODevice::ReadOnly);
    bool value = false;
    stream >> value;
    const bool isNumber = stream.status() == QTextStream::Ok;
    if (!isNumber || !stream.readAll().trimmed().isEmpty())
        detail::LineNotes::addLoss("value", text, "is neither 0 nor another whole number");
    return value;
}

/// The two numbers of a point, between which there is white space.
std::pair<QString, QString> partsOf(const QString& text) {
    const QLatin1Char blank(' ');
    const QString parts = text.simplified();
    const int first = parts.indexOf(blank);
    const int second = first < 0 ? -1 : parts.indexOf(blank, first + 1);
    if (second >= 0)
        detail::LineNotes::addLoss("value", text, "has more than two numbers");
    if (first < 0)
        return {parts, QString()};
    return {parts.left(first), parts.mid(first + 1, second < 0 ? -1 : second - first - 1)};
}

} // namespace

void detail::addTextToHash(Bsc::Hash& hash, const QString& text) {
    const QByteArray bytes = text.toUtf8();
    addBytes(hash, static_cast<quint64>(bytes.size()));
    hash.addData(bytes.constData(), static_cast<std::size_t>(bytes.size()));
}

void ValueType<bool>::write(QString& text, const bool& value) {
    text += QLatin1Char(value ? '1' : '0');
}

bool ValueType<bool>::read(const QString& text) {
    const ushort only = text.size() == 1 ? text.front().unicode() : 0;
    return only == '0' || only == '1' ? only == '1' : readSwitch(text);
}

void ValueType<bool>::addToHash(Bsc::Hash& hash, const bool& value) {
    addBytes(hash, static_cast<quint8>(value));
}

void ValueType<int>::write(QString& text, const int& value) {
    text += QString::number(value);
}

int ValueType<int>::read(const QString& text) {
    return readInteger<int>(text);
}

int ValueType<int>::fromComponents(const double* components) {
    return rounded<int>(components[0]);
}

int ValueType<int>::fromVariant(const QVariant& variant) {
    return integerFromVariant<int>(variant);
}

void ValueType<int>::addToHash(Bsc::Hash& hash, const int& value) {
    addBytes(hash, static_cast<quint32>(value));
}

void ValueType<unsigned int>::write(QString& text, const unsigned int& value) {
    text += QString::number(value);
}

unsigned int ValueType<unsigned int>::read(const QString& text) {
    return readInteger<unsigned int>(text);
}

unsigned int ValueType<unsigned int>::fromComponents(const double* components) {
    return rounded<unsigned int>(components[0]);
}

unsigned int ValueType<unsigned int>::fromVariant(const QVariant& variant) {
    return integerFromVariant<unsigned int>(variant);
}

void ValueType<unsigned int>::addToHash(Bsc::Hash& hash, const unsigned int& value) {
    addBytes(hash, value);
}

bool ValueType<double>::equal(const double& a, const double& b) {
    return a == b || (std::isnan(a) && std::isnan(b));
}

void ValueType<double>::write(QString& text, const double& value) {
    detail::addShortest(text, value);
}

double ValueType<double>::read(const QString& text) {
    return readReal(text);
}

void ValueType<double>::addToHash(Bsc::Hash& hash, const double& value) {
    addBytes(hash, value);
}

void ValueType<QString>::write(QString& text, const QString& value) {
    QString escaped = value;
    text += QLatin1Char('"') + detail::escapeString(escaped) + QLatin1Char('"');
}

QString ValueType<QString>::read(const QString& text) {
    QString value = text;
    if (value.size() >= 2 && value.startsWith(QLatin1Char('"')) && value.endsWith(QLatin1Char('"')))
        value = value.mid(1, value.size() - 2);
    return detail::unescapeString(value);
}

void ValueType<QString>::addToHash(Bsc::Hash& hash, const QString& value) {
    detail::addTextToHash(hash, value);
}

bool ValueType<QPointF>::equal(const QPointF& a, const QPointF& b) {
    return ValueType<double>::equal(a.x(), b.x()) && ValueType<double>::equal(a.y(), b.y());
}

void ValueType<QPointF>::write(QString& text, const QPointF& value) {
    detail::addShortest(text, value.x());
    detail::addShortest(text += QLatin1Char(' '), value.y());
}

QPointF ValueType<QPointF>::read(const QString& text) {
    const auto [x, y] = partsOf(text);
    return {readReal(x), readReal(y)};
}

void ValueType<QPointF>::addToHash(Bsc::Hash& hash, const QPointF& value) {
    addBytes(hash, static_cast<double>(value.x()));
    addBytes(hash, static_cast<double>(value.y()));
}

void ValueType<QPoint>::write(QString& text, const QPoint& value) {
    text += QString::number(value.x()) + QLatin1Char(' ') + QString::number(value.y());
}

QPoint ValueType<QPoint>::read(const QString& text) {
    const auto [x, y] = partsOf(text);
    return {readInteger<int>(x), readInteger<int>(y)};
}

void ValueType<QPoint>::addToHash(Bsc::Hash& hash, const QPoint& value) {
    addBytes(hash, static_cast<quint32>(value.x()));
    addBytes(hash, static_cast<quint32>(value.y()));
}

} // namespace Prm
