#include "prm/text/NumberText.h"

#include <QLatin1String>
#include <QLocale>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

namespace Prm::detail {

namespace {

using Buffer = std::array<char, longestNumber>;

char* add(char* next, const char* start, const char* end) {
    return std::copy(start, end, next);
}

char* add(char* next, const QString& text) {
    return std::transform(text.begin(), text.end(), next, [](QChar character) { return character.toLatin1(); });
}

char* addWhole(char* next, qint64 number) {
    return std::to_chars(next, next + longestNumber, number).ptr;
}

/// Numbers with up to three decimals, which most are. No other text of at most 15 digits means the same double, so this
/// is the shortest one, and it is what rounding to six digits gives if it has no more.
bool addThousandths(char*& next, double number, bool onlySixDigits) {
    constexpr double limit = 999999;
    const double size = std::abs(number);
    if (!(size < limit) || (number == 0 && std::signbit(number)))
        return false;
    const auto whole = static_cast<qint64>(size);
    const bool isWhole = static_cast<double>(whole) == size;
    const qint64 thousandths = isWhole ? whole * 1000 : std::llround(size * 1000);
    if (!isWhole && (static_cast<double>(thousandths) / 1000 != size || (onlySixDigits && thousandths >= 1000000)))
        return false;
    if (number < 0)
        *next++ = '-';
    next = addWhole(next, whole);
    if (!isWhole) {
        *next++ = '.';
        for (int rest = static_cast<int>(thousandths - whole * 1000), unit = 100; rest != 0; rest %= unit, unit /= 10)
            *next++ = static_cast<char>('0' + rest / unit);
    }
    return true;
}

/// Digits and the exponent of ten of a number's shortest text: 0.00125 is "125" and -3.
struct Shortest {
    explicit Shortest(double signedNumber) {
        const double number = std::abs(signedNumber);
        Buffer buffer;
        const auto end =
            std::to_chars(buffer.data(), buffer.data() + buffer.size(), number, std::chars_format::scientific);
        const char* next = buffer.data();
        for (; *next != 'e'; ++next) {
            if (*next != '.')
                digits[static_cast<std::size_t>(count++)] = *next;
        }
        next += next[1] == '+' ? 2 : 1;
        std::from_chars(next, end.ptr, exponent);
    }

    bool endsHalfwayBehind(int kept) const {
        return count == kept + 1 && digits[static_cast<std::size_t>(kept)] == '5';
    }

    Buffer digits{};
    int count = 0;
    int exponent = 0;
};

/// Numbers that Qt writes without an exponent, whatever their digits are.
bool addDecimal(char*& next, double number) {
    const double size = std::abs(number);
    if (!(size >= 0.001 && size < 99999))
        return false;
    const Shortest shortest(number);
    const char* const digits = shortest.digits.data();
    const int whole = shortest.exponent + 1;
    if (number < 0)
        *next++ = '-';
    if (whole <= 0) {
        constexpr const char* zeros = "0.000";
        next = add(next, zeros, zeros + 2 - whole);
        next = add(next, digits, digits + shortest.count);
        return true;
    }
    if (whole >= shortest.count) {
        next = add(next, digits, digits + shortest.count);
        next = std::fill_n(next, whole - shortest.count, '0');
        return true;
    }
    next = add(next, digits, digits + whole);
    *next++ = '.';
    next = add(next, digits + whole, digits + shortest.count);
    return true;
}

bool isDigit(QChar character) {
    return character >= QLatin1Char('0') && character <= QLatin1Char('9');
}

/// Reads up to 15 digits, among them perhaps a decimal point. The digits are a double as they stand, and so is the
/// power of ten that divides them: the quotient is rounded once, to the nearest double, as it has to be.
bool readShortDecimal(QStringView text, double& number) {
    static constexpr std::array<double, 15> powersOfTen{1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6, 1e7,
                                                        1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14};
    const bool isNegative = !text.isEmpty() && text.front() == QLatin1Char('-');
    const QChar* next = text.begin() + (isNegative ? 1 : 0);
    const QChar* const end = text.end();
    if (next == end || !isDigit(*next) || end - next > static_cast<std::ptrdiff_t>(powersOfTen.size()))
        return false;
    qint64 digits = 0;
    const QChar* point = nullptr;
    for (; next != end; ++next) {
        if (isDigit(*next))
            digits = digits * 10 + (next->unicode() - '0');
        else if (*next == QLatin1Char('.') && !point && next + 1 != end)
            point = next;
        else
            return false;
    }
    const std::ptrdiff_t decimals = point ? end - point - 1 : 0;
    const double size = static_cast<double>(digits) / powersOfTen[static_cast<std::size_t>(decimals)];
    number = isNegative ? -size : size;
    return true;
}

/// Reads what is a number by all conventions; false for everything that Qt should judge.
bool readPlainNumber(QStringView text, double& number) {
    if (readShortDecimal(text, number))
        return true;
    Buffer buffer;
    if (text.isEmpty() || text.size() > static_cast<int>(buffer.size()) || !isDigit(text.back()))
        return false;
    char* end = buffer.data();
    for (const QChar character : text) {
        const bool isPart = isDigit(character) || character == QLatin1Char('.') || character == QLatin1Char('-') ||
                            character == QLatin1Char('e');
        if (!isPart)
            return false;
        *end++ = static_cast<char>(character.unicode());
    }
    if (!isDigit(text[buffer[0] == '-' ? 1 : 0]))
        return false;
    const auto result = std::from_chars(buffer.data(), end, number);
    return result.ec == std::errc() && result.ptr == end;
}

} // namespace

char* addSixDigits(char* next, double number) {
    if (addThousandths(next, number, true))
        return next;
    // Qt rounds halves up, and has a zero without a sign.
    if (!std::isfinite(number) || number == 0 || Shortest(number).endsHalfwayBehind(6))
        return add(next, QString::number(number, 'g', 6));
    return std::to_chars(next, next + longestNumber, number, std::chars_format::general, 6).ptr;
}

void addSixDigits(QString& text, double number) {
    Buffer buffer;
    text += QLatin1String(buffer.data(), static_cast<int>(addSixDigits(buffer.data(), number) - buffer.data()));
}

void addShortest(QString& text, double number) {
    Buffer buffer;
    char* end = buffer.data();
    if (addThousandths(end, number, false) || addDecimal(end, number))
        text += QLatin1String(buffer.data(), static_cast<int>(end - buffer.data()));
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
