#include "prm/detail/KeyframeText.h"

#include "prm/ParameterStrings.h"
#include "prm/detail/LineParts.h"
#include "prm/detail/NumberText.h"
#include "prm/detail/TextTokens.h"

#include <cmath>
#include <stdexcept>

namespace Prm::detail {

namespace {

[[noreturn]] void refuse(const char* message, QStringView line) {
    throw std::runtime_error(QString::fromLatin1(message).arg(line.toString()).toStdString());
}

/// Single precision is part of the format. What is no number is 0, what is too large for one the invalid time.
Time readTime(QStringView text) {
    const float time = toFloat(text);
    return std::isinf(time) ? Time(Time::INVALID) : Time::fromFloat(time);
}

} // namespace

void writeKeyframe(QString& text, View view, Time time, const QString& value, const IType& itype) {
    const QLatin1String separator(", ");
    const bool isBezier = itype.interpolation == Interpolation::Bezier;
    if (view != View(View::defaultViewId()))
        text += view.toString();
    text += ParameterStrings::keyframes;
    text += QLatin1String(".append( ");
    text += isBezier ? ParameterStrings::bezierKey : ParameterStrings::key;
    text += QLatin1String("( ");
    addSixDigits(text, time.toDouble());
    text += separator;
    text += value;
    text += separator;
    if (isBezier) {
        addSixDigits(text, itype.x1);
        for (const double number : {itype.y1, itype.x2, itype.y2})
            addSixDigits(text += separator, number);
    } else {
        text += qstrInterpolationTypeString(itype.interpolation);
    }
    text += QLatin1String(" ) )");
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
