#pragma once

// The steps of an explanation, noted while a parameter is evaluated.

#include "prm/Explanation.h"
#include "prm/parameter/FastViewMap.h"
#include "prm/track/Evaluation.h"

#include <algorithm>
#include <utility>

namespace Prm::detail {

/// The steps of one evaluation, in order.
template <class T> class StepNotes {
public:
    using Step = Explanation::Step;
    using Steps = std::vector<Step>;
    using Keyframes = QVector<KeyframeData<T>>;

    void restart() {
        m_steps.clear();
        m_sources.clear();
    }
    /// The steps so far and what they lead to. Those that only lead on get the value of the last one.
    Steps take(Steps after = {}) {
        std::move(after.begin(), after.end(), std::back_inserter(m_steps));
        for (Step& step : m_steps) {
            if (!step.value.isValid())
                step.value = m_steps.back().value;
        }
        return std::exchange(m_steps, {});
    }

    Step& add(Explanation::Kind kind) {
        m_steps.emplace_back();
        m_steps.back().kind = kind;
        return m_steps.back();
    }
    Step& add(Explanation::Kind kind, const T& value) {
        Step& step = add(kind);
        step.value = ValueType<T>::toVariant(value);
        return step;
    }

    /// The view whose data are read; invalid where no view has data. `isOneOfSeveral`: views have different data.
    void reads(View view, View asked, bool isSplittable, bool isOneOfSeveral, bool isNearest) {
        if (!view.isValid())
            return;
        if (view != asked)
            add(!isSplittable ? Explanation::SharedView
                : isNearest   ? Explanation::NearestView
                              : Explanation::SourceView)
                .view = view;
        else if (isSplittable && isOneOfSeveral)
            add(Explanation::OwnView).view = view;
    }
    void readsStaticValue(const HeldTrack<T>& held, bool isKeyframed) {
        const auto own = isKeyframed ? Explanation::NoKeyframes : Explanation::NotKeyframed;
        add(held.view.isValid() ? own : Explanation::Default, held.track.staticValue).view = held.view;
    }

    T evaluate(const HeldTrack<T>& held, Time time) {
        Course course;
        int cursor = 0;
        T value = detail::evaluate(held.track, held.settings.outside, time, cursor, &course);
        const Keyframes& keyframes = held.track.keyframes;
        if (keyframes.isEmpty())
            readsStaticValue(held, true);
        else if (course.at.before == course.at.after)
            isAt(keyframes.at(firstAtTime(keyframes, course.at.before)));
        else if (course.at.before < 0 || course.at.after < 0)
            isOutside(keyframes, course, held.settings.outside, value);
        else
            isBetween(keyframes, course.at, course.part, value);
        return value;
    }

    void isAt(const KeyframeData<T>& keyframe) {
        add(Explanation::AtKeyframe, keyframe.value).from = variant(keyframe);
    }
    /// The positions are -1 where there is no keyframe.
    void asksHook(const Keyframes& keyframes, Bracket at, const T& value) {
        setKeyframes(add(Explanation::Hook, value), keyframes, at);
    }

    /// The steps since the last source are those of this one.
    void endSource(View view, double weight, const T& value) {
        m_sources.push_back({view, weight, ValueType<T>::toVariant(value), take()});
    }
    void endBlend(const T& value) { add(Explanation::Blend, value).sources = std::exchange(m_sources, {}); }

private:
    static Explanation::Keyframe variant(const KeyframeData<T>& keyframe) {
        return {keyframe.time, ValueType<T>::toVariant(keyframe.value), keyframe.interpolationData};
    }

    static void setKeyframes(Step& step, const Keyframes& keyframes, Bracket at) {
        if (at.before >= 0)
            step.from = variant(keyframes.at(at.before));
        if (at.after >= 0)
            step.to = variant(keyframes.at(at.after));
    }

    void isBetween(const Keyframes& keyframes, Bracket at, SegmentPart part, const T& value) {
        Step& step = add(Explanation::Between, value);
        setKeyframes(step, keyframes, at);
        step.timePart = part.time;
        step.changePart = part.change;
        step.lacksFunction = Prm::blends<T> && isCustom(step.from->interpolationData) &&
                             !isRegistered(step.from->interpolationData.interpolation);
    }

    void isOutside(const Keyframes& keyframes, const Course& course, Outside outside, const T& value) {
        const int last = keyframes.size() - 1;
        const bool isBefore = course.at.before < 0;
        Step& step = add(isBefore ? Explanation::Before : Explanation::After);
        setKeyframes(step, keyframes, isBefore ? Bracket{0, last > 0 ? 1 : -1} : Bracket{last - 1, last});
        step.extrapolation = isBefore ? outside.before : outside.after;
        step.slope = course.slope;
        step.shown = course.shown;
        if (course.shown.isValid())
            return shows(keyframes, course, value);
        step.value = ValueType<T>::toVariant(value);
        step.lacksFunction = Prm::blends<T> && last > 0 && step.extrapolation >= Extrapolation::Custom0;
    }

    void shows(const Keyframes& keyframes, const Course& course, const T& value) {
        const Bracket at = bracket(keyframes.constData(), keyframes.size(), course.shown);
        if (at.before == at.after)
            isAt(keyframes.at(at.before));
        else
            isBetween(keyframes, at, course.part, value);
    }

    Steps m_steps;
    std::vector<Explanation::Source> m_sources;
};

} // namespace Prm::detail
