#include "tool/ParameterState.h"

#include "prm/Parameter.h"
#include "tool/BuiltParameter.h"
#include "tool/Table.h"

namespace Tool {

namespace {

QString quoted(const QString& text) {
    QString written;
    Prm::ValueType<QString>::write(written, text);
    return written;
}

template <class T> QString rewritten(const QString& text) {
    QString written;
    Prm::ValueType<T>::write(written, Prm::ValueType<T>::read(text));
    return written;
}

/// The same for all ways of writing a value.
QString normalised(const QString& text, ValueKind kind) {
    switch (kind) {
    case ValueKind::Number:
    case ValueKind::NumberOrSwitch:
        return rewritten<double>(text);
    case ValueKind::Switch:
        return rewritten<bool>(text);
    case ValueKind::Point:
        return rewritten<QPointF>(text);
    case ValueKind::Text:
        return rewritten<QString>(text);
    case ValueKind::Opaque:
        break;
    }
    return text.trimmed();
}

QString curveText(const Prm::IType& shape) {
    if (shape.interpolation >= Prm::Interpolation::Custom0) {
        const auto first = static_cast<quint32>(Prm::Interpolation::Custom0);
        return QStringLiteral("Custom%1").arg(static_cast<quint32>(shape.interpolation) - first);
    }
    QString text = Prm::qstrInterpolationTypeString(shape.interpolation);
    if (shape.interpolation == Prm::Interpolation::Bezier) {
        for (const double number : {shape.x1, shape.y1, shape.x2, shape.y2})
            text += QLatin1Char(' ') + plainText(number);
    }
    return text;
}

QString extrapolationText(Prm::Extrapolation kind) {
    if (kind < Prm::Extrapolation::Custom0)
        return Prm::qstrExtrapolationTypeString(kind);
    const auto first = static_cast<quint32>(Prm::Extrapolation::Custom0);
    return QStringLiteral("Custom%1").arg(static_cast<quint32>(kind) - first);
}

ParameterState::ViewData viewData(const Prm::Parameter<QString>& parameter, Prm::View view) {
    ParameterState::ViewData data;
    data.value = parameter.staticValue(view);
    const unsigned int count = parameter.keyframeCount(view);
    data.keys.reserve(count);
    for (unsigned int i = 0; i < count; ++i)
        data.keys.push_back({parameter.keyframeTime(i, view).time.toDouble(), parameter.keyframeValue(i, view),
                             curveText(parameter.interpolationData({&parameter, view, i}))});
    return data;
}

} // namespace

ParameterState stateOf(const ProjectText& text, int node, ValueKind kind) {
    Prm::Parameter<QString> parameter;
    // Between quotes, whatever a value's text holds is read back as it is.
    const std::vector<int> refused =
        readInto(parameter, text, node, [kind](const QString& value) { return quoted(normalised(value, kind)); });
    ParameterState state;
    for (const Prm::View view : parameter.viewList())
        state.views[view.id()] = viewData(parameter, view);
    state.before = extrapolationText(parameter.extrapolationBefore());
    state.after = extrapolationText(parameter.extrapolationAfter());
    state.master = parameter.pendingMasterParameterId();
    state.isHidden = parameter.isHidden();
    for (const int line : refused)
        state.refused.append(toText(text.line(line)));
    return state;
}

} // namespace Tool
