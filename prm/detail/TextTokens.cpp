#include "prm/detail/TextTokens.h"

#include "prm/ParameterStrings.h"
#include "prm/detail/NumberText.h"

#include <QLatin1String>
#include <QVector>

#include <algorithm>
#include <array>

namespace Prm::detail {

namespace {

const QLatin1String plainCharacters("\f\"\\\r\n\t\v");
const QLatin1String escapeLetters("f\"\\rntv");

const QLatin1Char quote('"');
const QLatin1Char comma(',');
const QLatin1Char backslash('\\');

const QLatin1String keyOpening("Key(");
const QLatin1String keyEnding(") )");

/// The position of the first "Key(", -1 without one.
int findOpening(const QString& text) {
    int position = -1;
    do
        position = text.indexOf(keyOpening.at(0), position + 1);
    while (position >= 0 && text.midRef(position, keyOpening.size()) != keyOpening);
    return position;
}

/// Whether a quote at the position ends a quoted token.
bool closesQuotes(const QString& text, int pos) {
    const bool isLast = pos + 1 == text.size();
    return isLast || text.midRef(pos + 1, 2) == QLatin1String(", ");
}

/// The range of a text between two positions, without the blanks and tabs at its end.
QStringRef withoutBlanksAtEnd(const QString& text, int start, int end) {
    while (end > start && (text.at(end - 1) == QLatin1Char(' ') || text.at(end - 1) == QLatin1Char('\t')))
        --end;
    return text.midRef(start, end - start);
}

/// The position of the comma that ends the value of a Bezier declaration, -1 where there is none.
int fourthCommaFromEnd(const QStringRef& text) {
    int position = text.size();
    for (int found = 0; found < 4; ++found) {
        if (position == 0)
            return -1;
        position = text.lastIndexOf(comma, position - 1);
        if (position <= 0)
            return -1;
    }
    return position;
}

/// The usual four numbers, without quotes; false for everything else.
bool readPlainShape(QStringView text, std::array<double, 4>& numbers) {
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        const auto end = i + 1 < numbers.size() ? text.indexOf(comma) : text.size();
        bool isNumber = false;
        if (end >= 0)
            numbers[i] = toDouble(text.left(end).trimmed(), &isNumber);
        if (!isNumber)
            return false;
        text = text.mid(std::min(end + 1, text.size()));
    }
    return true;
}

bool readShape(const QStringRef& numbersText, IType& itype) {
    std::array<double, 4> plain{};
    if (readPlainShape(numbersText, plain)) {
        itype = IType(Interpolation::Bezier, plain[0], plain[1], plain[2], plain[3]);
        return true;
    }
    const QString text = numbersText.toString();
    QVector<QString> numbers;
    int pos = 0;
    while (pos < text.size()) {
        const QString token = getToken(text, pos);
        if (!token.isNull())
            numbers.append(token);
    }
    if (numbers.size() != 4)
        return false;
    itype = IType(Interpolation::Bezier, numbers.at(0).toDouble(), numbers.at(1).toDouble(), numbers.at(2).toDouble(),
                  numbers.at(3).toDouble());
    return true;
}

/// The two most frequent names, and then all.
bool readKind(const QStringRef& name, Interpolation& kind) {
    if (name == ParameterStrings::linear)
        kind = Interpolation::Linear;
    else if (name == ParameterStrings::constant)
        kind = Interpolation::Constant;
    else
        return bStringToInterpolationType(name.toString(), kind);
    return true;
}

/// The character at the same place of the other alphabet, or null.
QChar counterpart(QChar character, QLatin1String from, QLatin1String to) {
    for (int i = 0; i < from.size(); ++i) {
        if (character == from.at(i))
            return to.at(i);
    }
    return {};
}

} // namespace

QString getToken(const QString& text, int& pos) {
    QString token;
    while (pos < text.size() && text.at(pos).isSpace())
        ++pos;
    bool quoted = false;
    for (; pos < text.size(); ++pos) {
        const QChar c = text.at(pos);
        if (c == backslash) {
            if (pos + 1 < text.size() && text.at(pos + 1) == quote) {
                token += quote;
                ++pos;
            }
            token += backslash;
        } else if (c == quote && !quoted && token.isEmpty()) {
            token = QLatin1String("");
            quoted = true;
        } else if (c == quote && quoted && closesQuotes(text, pos)) {
            quoted = false;
        } else if (c == comma && !quoted) {
            ++pos;
            break;
        } else {
            token += c;
        }
    }
    return token;
}

bool parseKeyframeDeclaration(const QString& declaration, QString& timeText, QString& valueText, IType& itype) {
    const int opening = findOpening(declaration);
    if (opening < 0)
        return false;
    const QStringRef whole = withoutBlanksAtEnd(declaration, 0, declaration.size());
    if (!whole.endsWith(keyEnding))
        return false;
    const int start = opening + keyOpening.size();
    const int bezierStart = start - ParameterStrings::bezierKey.size() - 1;
    const bool isBezier =
        bezierStart >= 0 && declaration.leftRef(start).indexOf(ParameterStrings::bezierKey) == bezierStart;
    const int end = whole.size() - keyEnding.size();
    const QStringRef text = withoutBlanksAtEnd(declaration, start, std::max(start, end));
    int first = 0;
    while (first < text.size() && text.at(first).isSpace())
        ++first;
    const int valueStart = text.indexOf(comma, first);
    if (valueStart < 0)
        return false;
    timeText = text.mid(first, valueStart - first).toString();
    const int valueEnd = isBezier ? fourthCommaFromEnd(text) : text.lastIndexOf(comma);
    if (valueEnd < 0 || (isBezier && valueEnd <= valueStart))
        return false;
    const QStringRef rest = text.mid(valueEnd + 1);
    const bool understood = isBezier ? readShape(rest, itype) : readKind(rest.trimmed(), itype.interpolation);
    if (!understood)
        return false;
    valueText = text.mid(valueStart + 1, std::max(0, valueEnd - valueStart - 1)).trimmed().toString();
    return true;
}

std::vector<View> parseViewList(const QString& text) {
    const int opening = text.indexOf(QLatin1Char('['));
    const int closing = text.indexOf(QLatin1Char(']'));
    std::vector<View> views;
    if (opening < 0 || closing < 0)
        return views;
    // With the brackets the wrong way round the length is negative, and everything behind the opening one counts.
    const QVector<QStringRef> parts = text.midRef(opening + 1, closing - opening - 1).split(comma, Qt::SkipEmptyParts);
    for (const QStringRef& part : parts) {
        bool isNumber = false;
        const uint id = part.toUInt(&isNumber);
        if (isNumber)
            views.emplace_back(id);
    }
    return views;
}

QString& escapeString(QString& s) {
    QString escaped;
    escaped.reserve(s.size());
    for (const QChar character : qAsConst(s)) {
        const QChar letter = counterpart(character, plainCharacters, escapeLetters);
        if (letter.isNull()) {
            escaped += character;
        } else {
            escaped += backslash;
            escaped += letter;
        }
    }
    if (escaped.size() != s.size())
        s = escaped;
    return s;
}

QString& unescapeString(QString& s) {
    QString plain;
    plain.reserve(s.size());
    for (int i = 0; i < s.size(); ++i) {
        QChar character = s.at(i);
        if (character == backslash && i + 1 < s.size()) {
            const QChar meant = counterpart(s.at(i + 1), escapeLetters, plainCharacters);
            if (!meant.isNull()) {
                character = meant;
                ++i;
            }
        }
        plain += character;
    }
    if (plain.size() != s.size())
        s = plain;
    return s;
}

} // namespace Prm::detail
