#pragma once

// Explanations, calculated again from what they say.

#include "prm/track/CurveShapes.h"
#include "tests/world/World.h"

namespace Worlds {

using Steps = std::vector<Explanation::Step>;

/// To the bit.
template <class T> bool isSame(const T& a, const T& b) {
    return exact(QVariant::fromValue(a)) == exact(QVariant::fromValue(b));
}

/// The value of an explanation at a time, from the data of its steps alone. Throws where a step has another value.
template <class T> class Replay {
public:
    explicit Replay(Time time) : m_time(time) {}

    T value(const Steps& steps, std::size_t at = 0) const {
        const T replayed = valueOf(steps.at(at), [&] { return value(steps, at + 1); });
        if (!isSame(replayed, typed(steps[at].value)))
            throw std::logic_error("step " + std::to_string(at) + " has another value");
        return replayed;
    }

private:
    static T typed(const QVariant& value) { return ValueType<T>::fromVariant(value); }
    static KeyframeData<T> typed(const Explanation::Keyframe& keyframe) {
        return {keyframe.time, typed(keyframe.value), keyframe.interpolationData};
    }

    template <class Next> T valueOf(const Explanation::Step& step, const Next& next) const {
        switch (step.kind) {
        case Explanation::AtKeyframe:
            return typed(step.from->value);
        case Explanation::Between:
            return between(step);
        case Explanation::Before:
            return step.shown.isValid() ? next() : outside(step, *step.from);
        case Explanation::After:
            return step.shown.isValid() ? next() : outside(step, *step.to);
        case Explanation::Blend:
            return blend(step);
        case Explanation::Default:
        case Explanation::NotKeyframed:
        case Explanation::NoKeyframes:
        case Explanation::Hook:
            return typed(step.value);
        default:
            return next();
        }
    }

    T between(const Explanation::Step& step) const {
        if constexpr (blends<T>) {
            if (step.timePart > 0 && step.timePart < 1)
                return detail::blended(typed(step.from->value), typed(step.to->value), step.changePart);
        }
        return typed(step.timePart < 1 ? step.from->value : step.to->value);
    }
    T outside(const Explanation::Step& step, const Explanation::Keyframe& edge) const {
        if constexpr (blends<T>) {
            if (step.extrapolation == Extrapolation::Linear && step.from && step.to)
                return detail::continuedValue(typed(edge.value), typed(*step.from), typed(*step.to), step.slope,
                                              m_time - edge.time);
        }
        return typed(edge.value);
    }
    T blend(const Explanation::Step& step) const {
        if constexpr (blends<T>) {
            detail::WeightedSum<T> sum;
            for (const Explanation::Source& source : step.sources)
                sum.add(value(source.steps), source.weight);
            return sum.value();
        }
        throw std::logic_error("values that do not blend are blended");
    }

    Time m_time;
};

template <class T> bool isExplained(const Parameter<T>& parameter, const Explanation& explanation) {
    const T value = parameter.value(explanation.context);
    return isSame(value, ValueType<T>::fromVariant(explanation.value)) &&
           isSame(value, Replay<T>(explanation.context.time).value(explanation.steps));
}

/// Whether what an explanation says of a parameter leads to its value, and the same for each part of a compound.
inline bool isExplained(const P& parameter, const Explanation& explanation) {
    if (const auto* const compound = dynamic_cast<const CompoundParameter*>(&parameter)) {
        const std::vector<Explanation>& parts = explanation.steps.at(0).parts;
        const QList<P*> own = compound->subparameters();
        return std::equal(own.begin(), own.end(), parts.begin(), parts.end(),
                          [](const P* part, const Explanation& ofPart) { return isExplained(*part, ofPart); });
    }
    return asTyped(parameter, [&](const auto& typed) { return isExplained(typed, explanation); }) ||
           (dynamic_cast<const Bare*>(&parameter) && explanation.value == parameter.variantValue(explanation.context));
}

} // namespace Worlds
