#include "prm/text/KeyframeText.h"

#include "prm/ParameterStrings.h"
#include "prm/text/LineNotes.h"
#include "prm/text/LineParts.h"
#include "prm/text/NumberText.h"
#include "prm/text/TextTokens.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace Prm::detail {

namespace {

[[noreturn]] void refuse(const char* message, QStringView line) {
    throw MalformedKeyframe(QString::fromLatin1(message).arg(line.toString()).toStdString());
}

/// A few characters on the stack: appending them one by one to a text takes longer than making them. Those after the
/// end are never read. NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init)
class Characters {
public:
    void add(QLatin1String text) { m_end = std::copy(text.begin(), text.end(), m_end); }
    void addNumber(double number, Digits digits, QString& text) {
        if (digits == Digits::Six) {
            m_end = detail::addSixDigits(m_end, number);
        } else {
            addTo(text);
            detail::addShortest(text, number);
        }
    }
    void addTo(QString& text) {
        text += QLatin1String(m_characters.data(), static_cast<int>(m_end - m_characters.data()));
        m_end = m_characters.data();
    }

private:
    /// Four numbers and what is between them, at the most.
    std::array<char, 4 * (longestNumber + 2) + 8> m_characters;
    char* m_end = m_characters.data();
};

} // namespace

MalformedKeyframe::~MalformedKeyframe() = default;

QString exactName(Interpolation kind) {
    if (kind < Interpolation::Custom0)
        return qstrInterpolationTypeString(kind);
    const auto number = static_cast<quint32>(kind) - static_cast<quint32>(Interpolation::Custom0);
    return ParameterStrings::custom + QString::number(number);
}

QString exactName(Extrapolation kind) {
    if (kind < Extrapolation::Custom0)
        return qstrExtrapolationTypeString(kind);
    const auto number = static_cast<quint32>(kind) - static_cast<quint32>(Extrapolation::Custom0);
    return ParameterStrings::custom + QString::number(number);
}

std::optional<double> exactTimeIn(QStringView line) {
    const auto start = line.indexOf(QLatin1String("Key("), 0, Qt::CaseInsensitive) + 4;
    const auto end = line.indexOf(QLatin1Char(','), start);
    bool isNumber = false;
    const double time = toDouble(line.mid(start, std::max<qsizetype>(end - start, 0)).trimmed(), &isNumber);
    return start >= 4 && end > start && isNumber ? std::optional<double>(time) : std::nullopt;
}

Time readTime(QStringView text) {
    bool isNumber = false;
    const float number = toFloat(text, &isNumber);
    const Time time = std::isinf(number) ? Time(Time::INVALID) : Time::fromFloat(number);
    if (!isNumber || !time.isValid())
        LineNotes::addLoss("time", text, std::isinf(number) || isNumber ? "is out of range" : "is not a number");
    return time;
}

void writeKeyframe(QString& text, View view, Time time, const QString& value, const IType& itype, Digits digits) {
    const QLatin1String separator(", ");
    const bool isBezier = itype.interpolation == Interpolation::Bezier;
    if (view != View(View::defaultViewId()))
        text += view.toString();
    Characters characters;
    characters.add(isBezier ? QLatin1String("keyframes.append( BezierKey( ")
                            : QLatin1String("keyframes.append( Key( "));
    characters.addNumber(time.toDouble(), digits, text);
    characters.add(separator);
    characters.addTo(text);
    text += value;
    if (isBezier) {
        for (const double number : {itype.x1, itype.y1, itype.x2, itype.y2}) {
            characters.add(separator);
            characters.addNumber(number, digits, text);
        }
    } else {
        characters.add(separator);
        characters.addTo(text);
        text +=
            digits == Digits::All ? exactName(itype.interpolation) : qstrInterpolationTypeString(itype.interpolation);
    }
    characters.add(QLatin1String(" ) )"));
    characters.addTo(text);
}

KeyframeText readKeyframe(QStringView line, IType& itype) {
    KeyframeText keyframe;
    QStringView rest = line;
    View::extractStringPrefix(rest, keyframe.view);
    if (!hasKey(rest, ParameterStrings::keyframes))
        refuse("Cannot parse keyframe string '%1'", rest);
    QStringView time;
    if (!parseKeyframeDeclaration(rest, time, keyframe.value, itype))
        refuse("Failed to parse Key() block: '%1'", rest);
    keyframe.time = readTime(time);
    return keyframe;
}

} // namespace Prm::detail
