#include "prm/text/NumberText.h"

#include <QLatin1String>
#include <QLocale>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace Prm::detail {

namespace {

using Buffer = std::array<char, longestNumber>;

/// Numbers that Qt writes without an exponent, whatever their digits are.
bool isPlain(double number) {
    const double size = std::abs(number);
    return (size >= 1e-4 && size < 1e6) || (number == 0 && !std::signbit(number));
}

/// The shortest text of a plain number.
char* addPlain(char* next, double number) {
    return std::to_chars(next, next + longestNumber, number, std::chars_format::fixed).ptr;
}

char* addByQt(char* next, double number) {
    const QString text = QString::number(number, 'g', 6);
    return std::transform(text.begin(), text.end(), next, [](QChar character) { return character.toLatin1(); });
}

bool isDigit(QChar character) {
    return character >= QLatin1Char('0') && character <= QLatin1Char('9');
}

/// Reads what is a number by all conventions; false for everything that Qt should judge.
bool readPlainNumber(QStringView text, double& number) {
    Buffer buffer;
    const auto size = static_cast<std::size_t>(text.size());
    if (size == 0 || size > buffer.size() || !isDigit(text.back()))
        return false;
    uint allBits = 0;
    for (std::size_t i = 0; i < size; ++i) {
        allBits |= text.utf16()[i];
        buffer[i] = static_cast<char>(text.utf16()[i]);
    }
    const char first = buffer[0] == '-' ? buffer[1] : buffer[0];
    if (allBits >= 128 || first < '0' || first > '9')
        return false;
    const char* const end = buffer.data() + size;
    const auto result = std::from_chars(buffer.data(), end, number);
    return result.ec == std::errc() && result.ptr == end;
}

} // namespace

char* addSixDigits(char* next, double number) {
    if (!isPlain(number))
        return addByQt(next, number);
    char* const end = addPlain(next, number);
    const char* const first = std::find_if(next, end, [](char c) { return c >= '1' && c <= '9'; });
    const auto digits = end - first - std::count(first, static_cast<const char*>(end), '.');
    if (digits <= 6)
        return end;
    // Qt rounds halves up, `to_chars` to even.
    if (digits == 7 && end[-1] == '5')
        return addByQt(next, number);
    return std::to_chars(next, next + longestNumber, number, std::chars_format::general, 6).ptr;
}

void addSixDigits(QString& text, double number) {
    Buffer buffer;
    text += QLatin1String(buffer.data(), static_cast<int>(addSixDigits(buffer.data(), number) - buffer.data()));
}

void addShortest(QString& text, double number) {
    Buffer buffer;
    if (isPlain(number))
        text += QLatin1String(buffer.data(), static_cast<int>(addPlain(buffer.data(), number) - buffer.data()));
    else
        text += QString::number(number, 'g', QLocale::FloatingPointShortest);
}

double toDouble(QStringView text, bool* isNumber) {
    double number = 0;
    if (!readPlainNumber(text, number))
        return text.toString().toDouble(isNumber);
    if (isNumber)
        *isNumber = true;
    return number;
}

float toFloat(QStringView text, bool* isNumber) {
    double number = 0;
    const bool isPlain = readPlainNumber(text, number);
    const double size = std::abs(number);
    // Where single precision ends, Qt has its own way.
    const bool fits = number == 0 || (size > 1e-30 && size < 1e30);
    if (!isPlain || !fits)
        return text.toString().toFloat(isNumber);
    if (isNumber)
        *isNumber = true;
    return static_cast<float>(number);
}

} // namespace Prm::detail
