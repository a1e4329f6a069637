#include "prm/Explanation.h"

#include "prm/ParameterWithoutType.h"
#include "prm/ValueType.h"

#include <cmath>

namespace Prm {

namespace {

using Step = Explanation::Step;
using Keyframe = Explanation::Keyframe;
using Values = QVector<QVariant>;

template <class T> QString written(const T& value) {
    QString text;
    ValueType<T>::write(text, value);
    return text;
}

QString percent(double part) {
    return QString::number(100.0 * part, 'g', 4) + QLatin1String(" percent");
}

/// With the number of each custom kind, of which project text writes only the first.
template <class Kind> QString kindName(Kind kind, const QString& name) {
    if (kind < Kind::Custom0)
        return name;
    return QStringLiteral("Custom%1").arg(static_cast<quint32>(kind) - static_cast<quint32>(Kind::Custom0));
}

QString pathOf(const BasicParameter& parameter) {
    const auto* const animatable = dynamic_cast<const ParameterWithoutType*>(&parameter);
    const bool isInSets = animatable && !animatable->namePrefix().isEmpty();
    return isInSets ? animatable->extendedName() : parameter.scriptName();
}

/// The words of one explanation.
class Words {
public:
    explicit Words(const Explanation& explanation, const Explanation::Naming& naming)
        : m_explanation(explanation), m_naming(naming) {}

    QString question() const {
        const Context& at = m_explanation.context;
        const bool isAnimated = m_explanation.steps.empty() || m_explanation.steps[0].kind != Explanation::Unanimated;
        const QString when = isAnimated ? QStringLiteral(" at %1 in %2").arg(name(at.time), name(at.view)) : QString();
        return name(m_explanation.parameter) + when + QLatin1String(" is ") + value(m_explanation.value);
    }

    QString value(const QVariant& of) const { return m_explanation.valueText(of); }

    QString source(const Explanation::Source& source) const {
        return QStringLiteral("%1, %2: %3").arg(name(source.view), percent(source.weight), value(source.value));
    }

    QString step(const Step& step) const {
        const QString result = value(step.value);
        switch (step.kind) {
        case Explanation::Master:
            return QStringLiteral("tied to \"%1\": its value is shown").arg(name(step.parameter));
        case Explanation::MasterOfAnotherType:
            return QStringLiteral("tied to \"%1\", without effect: its values are of another type")
                .arg(name(step.parameter));
        case Explanation::OwnView:
            return name(step.view) + QLatin1String(" has data of its own");
        case Explanation::SharedView:
            return QStringLiteral("not splittable: %1 is read").arg(name(step.view));
        case Explanation::SourceView:
            return withoutData() + QStringLiteral("%1 is read").arg(name(step.view));
        case Explanation::NearestView:
            return withoutData() + QStringLiteral("%1, the nearest one, is read").arg(name(step.view));
        case Explanation::Blend:
            return withoutData() + QStringLiteral("%1 views are blended: ").arg(step.sources.size()) + result;
        case Explanation::Default:
            return QLatin1String("no view has data: the default value is ") + result;
        case Explanation::NotKeyframed:
            return QStringLiteral("not keyframed: the static value of %1 is %2").arg(name(step.view), result);
        case Explanation::NoKeyframes:
            return QStringLiteral("%1 has no keyframes: its static value is %2").arg(name(step.view), result);
        case Explanation::AtKeyframe:
            return QStringLiteral("the keyframe at %1 is %2").arg(name(step.from->time), result);
        case Explanation::Between:
            return place(step.from, step.to) + segment(step) + result;
        case Explanation::Before:
            return place({}, step.from) + outside(step, *step.from, result);
        case Explanation::After:
            return place(step.to, {}) + outside(step, *step.to, result);
        case Explanation::Hook:
            return place(step.from, step.to) + QLatin1String("computed by its class: ") + result;
        case Explanation::Parts:
            return QStringLiteral("a compound: the values of its parts");
        case Explanation::Unanimated:
            break;
        }
        return QStringLiteral("not animated: one value for all frames and views");
    }

private:
    static QString name(View view) {
        return view.isValid() ? QStringLiteral("view %1").arg(view.id()) : QStringLiteral("an invalid view");
    }
    static QString name(Time time) {
        return time.isValid() ? QLatin1String("frame ") + written(time.toDouble()) : QStringLiteral("no valid frame");
    }
    QString name(const QPointer<const BasicParameter>& parameter) const {
        return parameter ? m_naming(*parameter) : QStringLiteral("a deleted parameter");
    }
    QString withoutData() const { return name(m_explanation.context.view) + QLatin1String(" has no data: "); }

    QString keyframe(const Keyframe& keyframe) const {
        return QStringLiteral("%1 (%2)").arg(name(keyframe.time), value(keyframe.value));
    }
    /// Where a time is that lies after one keyframe and before another.
    QString place(const std::optional<Keyframe>& before, const std::optional<Keyframe>& after) const {
        if (before && after)
            return QStringLiteral("between %1 and %2, ").arg(keyframe(*before), keyframe(*after));
        if (after)
            return QStringLiteral("before the first keyframe, at %1, ").arg(keyframe(*after));
        return before ? QStringLiteral("after the last keyframe, at %1, ").arg(keyframe(*before)) : QString();
    }

    static QString segment(const Step& step) {
        const IType& shape = step.from->interpolationData;
        const QString kind = kindName(shape.interpolation, qstrInterpolationTypeString(shape.interpolation));
        if (!(step.timePart > 0.0)) {
            const bool holds = shape.interpolation <= Interpolation::Constant;
            return kind + QLatin1String(holds ? ", held: " : ", but values of this type are held: ");
        }
        const QString passed = QStringLiteral("after %1 of the time").arg(percent(step.timePart));
        if (shape.interpolation == Interpolation::Linear)
            return QStringLiteral("%1, %2: ").arg(kind, passed);
        if (step.lacksFunction)
            return QStringLiteral("%1, which is not registered and so a straight line, %2: ").arg(kind, passed);
        return QStringLiteral("%1, %2 and %3 of the change: ").arg(kind, passed, percent(step.changePart));
    }

    QString outside(const Step& step, const Keyframe& edge, const QString& result) const {
        const QString kind = kindName(step.extrapolation, qstrExtrapolationTypeString(step.extrapolation));
        if (step.shown.isValid())
            return QStringLiteral("%1: %2 is shown").arg(kind, name(step.shown));
        if (step.lacksFunction)
            return kind + QLatin1String(", which is not registered, held: ") + result;
        if (step.extrapolation != Extrapolation::Linear)
            return kind + QLatin1String(", held: ") + result;
        if (step.slope == 0.0)
            return kind + QLatin1String(", but without a slope, held: ") + result;
        const QString distance = QString::number(std::abs(m_explanation.context.time - edge.time), 'g', 6);
        const QLatin1String unit(distance == QLatin1String("1") ? "frame" : "frames");
        return QStringLiteral("%1, continued by %2 %3: %4").arg(kind, distance, unit, result);
    }

    const Explanation& m_explanation;
    const Explanation::Naming& m_naming;
};

/// A line for the question and each step, indented by depth.
class Lines {
public:
    explicit Lines(const Explanation::Naming& naming) : m_naming(naming) {}

    void add(const Explanation& explanation, int depth) {
        const Words words(explanation, m_naming);
        addLine(depth, words.question());
        addSteps(words, explanation.steps, depth + 1);
    }
    QString joined() const { return m_lines.join(QLatin1Char('\n')); }

private:
    void addLine(int depth, const QString& line) { m_lines.append(QString(2 * depth, QLatin1Char(' ')) + line); }

    void addSteps(const Words& words, const std::vector<Step>& steps, int depth) {
        for (const Step& step : steps) {
            addLine(depth, words.step(step));
            for (const Explanation::Source& source : step.sources) {
                addLine(depth + 1, words.source(source));
                addSteps(words, source.steps, depth + 2);
            }
            for (const Explanation& part : step.parts)
                add(part, depth + 1);
        }
    }

    const Explanation::Naming& m_naming;
    QStringList m_lines;
};

} // namespace

QString Explanation::toString(const Naming& naming) const {
    const Naming used = naming ? naming : Naming(pathOf);
    Lines lines(used);
    lines.add(*this, 0);
    return lines.joined();
}

QString Explanation::valueText(const QVariant& of) const {
    if (writer)
        return writer(of);
    const bool isText = of.userType() == QMetaType::QString;
    if (steps.empty() || steps[0].kind != Parts || !of.canConvert<Values>())
        return isText ? written(of.toString()) : of.toString();
    const std::vector<Explanation>& parts = steps[0].parts;
    const auto values = of.value<Values>();
    QStringList texts;
    for (std::size_t i = 0; i < parts.size() && static_cast<int>(i) < values.size(); ++i)
        texts.append(parts[i].valueText(values.at(static_cast<int>(i))));
    return QLatin1Char('(') + texts.join(QLatin1String(", ")) + QLatin1Char(')');
}

Explanation explain(const BasicParameter& parameter, const Context& context) {
    Explanation explanation;
    explanation.parameter = &parameter;
    explanation.context = context;
    if (const auto* const animatable = dynamic_cast<const ParameterWithoutType*>(&parameter)) {
        animatable->explainTo(explanation, context);
    } else {
        explanation.steps.emplace_back();
        explanation.steps.back().kind = Explanation::Unanimated;
        explanation.steps.back().value = parameter.variantValue(context);
    }
    if (!explanation.steps.empty())
        explanation.value = explanation.steps.back().value;
    return explanation;
}

} // namespace Prm
