#include "prm/text/TextTokens.h"

#include "prm/ParameterStrings.h"
#include "prm/text/LineNotes.h"
#include "prm/text/LineParts.h"
#include "prm/text/NumberText.h"

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

constexpr QStringView keyOpening(u"Key(");
constexpr QStringView keyEnding(u") )");
constexpr QStringView bezierPrefix(u"Bezier");

/// The position of the first such character from a position on, -1 without one. It is near, mostly.
qsizetype find(QStringView text, QChar character, qsizetype from = 0) {
    for (qsizetype position = from; position < text.size(); ++position) {
        if (text[position] == character)
            return position;
    }
    return -1;
}

/// The position of the first "Key(" from a position on, -1 without one.
qsizetype findOpening(QStringView text, qsizetype position) {
    while (position >= 0 && !beginsWith(text.mid(position), keyOpening))
        position = find(text, keyOpening.front(), position + 1);
    return position;
}

/// Whether the opening is that of the first "BezierKey" in the text, whose first K is at a position.
bool opensBezier(QStringView text, qsizetype opening, qsizetype firstK) {
    const qsizetype start = opening - bezierPrefix.size();
    if (start < 0 || !beginsWith(text.mid(start), bezierPrefix))
        return false;
    return opening == firstK || text.indexOf(ParameterStrings::bezierKey) == start;
}

/// Whether a quote at the position ends a quoted token.
bool closesQuotes(const QString& text, int pos) {
    const bool isLast = pos + 1 == text.size();
    return isLast || text.midRef(pos + 1, 2) == QLatin1String(", ");
}

QStringView withoutBlanksAtEnd(QStringView text) {
    const QChar* last = text.end();
    while (last != text.begin() && (last[-1] == QLatin1Char(' ') || last[-1] == QLatin1Char('\t')))
        --last;
    return {text.begin(), last};
}

QStringView withoutSpaceAtStart(QStringView text) {
    const QChar* first = text.begin();
    while (first != text.end() && first->isSpace())
        ++first;
    return {first, text.end()};
}

QStringView withoutSpace(QStringView text) {
    const QChar* last = text.end();
    while (last != text.begin() && last[-1].isSpace())
        --last;
    return withoutSpaceAtStart({text.begin(), last});
}

/// The positions of the last commas, ascending, and the end of the text.
template <std::size_t count> using LastCommas = std::array<qsizetype, count + 1>;

/// False where there are not so many. One at the very beginning does not count.
template <std::size_t count> bool findLastCommas(QStringView text, LastCommas<count>& commas) {
    std::size_t left = count;
    commas[count] = text.size();
    for (qsizetype position = text.size() - 1; left > 0 && position > 0; --position) {
        if (text[position] == comma)
            commas[--left] = position;
    }
    return left == 0;
}

/// The usual four numbers, without quotes; false for everything else.
bool readPlainShape(QStringView text, const LastCommas<4>& commas, std::array<double, 4>& numbers) {
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        const qsizetype start = commas[i] + 1;
        bool isNumber = false;
        numbers[i] = toDouble(withoutSpace(text.mid(start, commas[i + 1] - start)), &isNumber);
        if (!isNumber)
            return false;
    }
    return true;
}

bool readShape(QStringView inside, const LastCommas<4>& commas, IType& itype) {
    std::array<double, 4> plain{};
    if (readPlainShape(inside, commas, plain)) {
        itype = IType(Interpolation::Bezier, plain[0], plain[1], plain[2], plain[3]);
        return true;
    }
    const QString text = inside.mid(commas[0] + 1).toString();
    QVector<QString> numbers;
    int pos = 0;
    while (pos < text.size()) {
        const QString token = getToken(text, pos);
        if (!token.isNull())
            numbers.append(token);
    }
    if (numbers.size() != 4)
        return false;
    const auto number = [&](int i) {
        bool isNumber = false;
        const double read = numbers.at(i).toDouble(&isNumber);
        if (!isNumber)
            LineNotes::addLoss("shape number", numbers.at(i), "is not a number");
        return read;
    };
    itype = IType(Interpolation::Bezier, number(0), number(1), number(2), number(3));
    return true;
}

/// The two most frequent names, and then all.
bool readKind(QStringView name, Interpolation& kind) {
    const auto is = [name](QStringView known) { return name.size() == known.size() && beginsWith(name, known); };
    if (is(ParameterStrings::linear)) {
        kind = Interpolation::Linear;
    } else if (is(ParameterStrings::constant)) {
        kind = Interpolation::Constant;
    } else if (!bStringToInterpolationType(name.toString(), kind)) {
        LineNotes::addLoss("interpolation", name, "is not known");
        return false;
    }
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

bool parseKeyframeDeclaration(QStringView declaration, QStringView& timeText, QStringView& valueText, IType& itype) {
    const qsizetype firstK = find(declaration, keyOpening.front());
    const qsizetype opening = findOpening(declaration, firstK);
    const qsizetype end = withoutBlanksAtEnd(declaration).size() - keyEnding.size();
    if (opening < 0 || end < 0 || !beginsWith(declaration.mid(end), keyEnding))
        return false;
    const qsizetype start = opening + keyOpening.size();
    const QStringView inside = declaration.mid(start, std::max<qsizetype>(0, end - start));
    const QStringView text = withoutSpaceAtStart(withoutBlanksAtEnd(inside));
    const qsizetype timeEnd = find(text, comma);
    if (timeEnd < 0)
        return false;
    qsizetype valueEnd = -1;
    if (opensBezier(declaration, opening, firstK)) {
        LastCommas<4> commas{};
        if (!findLastCommas<4>(text, commas) || commas[0] <= timeEnd || !readShape(text, commas, itype))
            return false;
        valueEnd = commas[0];
    } else {
        LastCommas<1> commas{};
        valueEnd = findLastCommas<1>(text, commas) ? commas[0] : -1;
        if (!readKind(withoutSpace(text.mid(valueEnd + 1)), itype.interpolation))
            return false;
    }
    timeText = text.left(timeEnd);
    valueText = withoutSpace(text.mid(timeEnd + 1, std::max<qsizetype>(0, valueEnd - timeEnd - 1)));
    return true;
}

// By value, as it is published. NOLINTNEXTLINE(performance-unnecessary-value-param)
bool parseKeyframeDeclaration(QString declaration, QString& timeText, QString& valueText, IType& itype) {
    QStringView time;
    QStringView value;
    if (!parseKeyframeDeclaration(QStringView(declaration), time, value, itype))
        return false;
    timeText = time.toString();
    valueText = value.toString();
    return true;
}

std::vector<View> parseViewList(const QString& text) {
    const int opening = text.indexOf(QLatin1Char('['));
    const int closing = text.indexOf(QLatin1Char(']'));
    std::vector<View> views;
    if (opening < 0 || closing < 0) {
        LineNotes::addLoss("list of views", text, "has no brackets");
        return views;
    }
    // If the brackets are in the wrong order the length is negative, and everything after the opening one is used.
    const QVector<QStringRef> parts = text.midRef(opening + 1, closing - opening - 1).split(comma, Qt::SkipEmptyParts);
    for (const QStringRef& part : parts) {
        bool isNumber = false;
        const uint id = part.toUInt(&isNumber);
        if (isNumber)
            views.emplace_back(id);
        else
            LineNotes::addLoss("view", part, "is not a number");
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
