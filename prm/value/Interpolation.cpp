#include "prm/Interpolation.h"

#include "prm/ParameterStrings.h"

#include <limits>

namespace Prm {

namespace {

/// The kind named by a text that contains "Custom", given the number of the first custom kind.
quint32 customKind(const QString& name, quint32 first) {
    const int start = name.indexOf(ParameterStrings::custom) + ParameterStrings::custom.size();
    const int end = name.indexOf(ParameterStrings::custom, start);
    const quint32 offset = name.midRef(start, end < 0 ? -1 : end - start).toUInt();
    return offset > std::numeric_limits<quint32>::max() - first ? first : first + offset;
}

} // namespace

QString qstrInterpolationTypeString(Interpolation kind) {
    switch (kind) {
    case Interpolation::Linear:
        return ParameterStrings::linear;
    case Interpolation::Bezier:
        return ParameterStrings::bezier;
    case Interpolation::Custom0:
        return ParameterStrings::custom + QLatin1Char('0');
    default:
        return ParameterStrings::constant;
    }
}

QString qstrExtrapolationTypeString(Extrapolation kind) {
    switch (kind) {
    case Extrapolation::Linear:
        return ParameterStrings::linear;
    case Extrapolation::Custom0:
        return ParameterStrings::custom + QLatin1Char('0');
    default:
        return ParameterStrings::constant;
    }
}

bool bStringToInterpolationType(const QString& name, Interpolation& kind) {
    if (name == ParameterStrings::constant)
        kind = Interpolation::Constant;
    else if (name == ParameterStrings::linear)
        kind = Interpolation::Linear;
    else if (name == ParameterStrings::bezier)
        kind = Interpolation::Bezier;
    else if (name.contains(ParameterStrings::custom))
        kind = static_cast<Interpolation>(customKind(name, static_cast<quint32>(Interpolation::Custom0)));
    else
        return false;
    return true;
}

bool bStringToExtrapolationType(const QString& name, Extrapolation& kind) {
    if (name == ParameterStrings::constant)
        kind = Extrapolation::Constant;
    else if (name == ParameterStrings::linear)
        kind = Extrapolation::Linear;
    else if (name.contains(ParameterStrings::custom))
        kind = static_cast<Extrapolation>(customKind(name, static_cast<quint32>(Extrapolation::Custom0)));
    else
        return false;
    return true;
}

} // namespace Prm
