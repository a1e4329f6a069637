#include "prm/edits/KeyframeMoves.h"

#include "prm/ParameterSet.h"
#include "prm/SerialisedKeyframe.h"

#include <QSet>

namespace Prm::detail {

namespace {

void addOwners(ParameterWithoutType& parameter, Owners& owners, QSet<const ParameterWithoutType*>& reached) {
    if (reached.contains(&parameter))
        return;
    reached.insert(&parameter);
    if (const auto* const compound = dynamic_cast<ParameterSet*>(&parameter)) {
        for (const auto& part : compound->parameters())
            addOwners(*part, owners, reached);
    } else {
        owners.emplace_back(&parameter);
    }
}

} // namespace

Owners ownersOf(ParameterWithoutType& parameter) {
    Owners owners;
    QSet<const ParameterWithoutType*> reached;
    addOwners(parameter, owners, reached);
    return owners;
}

std::vector<Time> keyframeTimes(const ParameterWithoutType& parameter, const View& view) {
    std::vector<Time> times;
    times.reserve(parameter.keyframeCount(view));
    parameter.forEachKeyframeTime([&](const Context& at) { times.push_back(at.time); }, view);
    return times;
}

namespace {

/// The first index whose keyframe passes the test, which all after it do.
template <class Test> int firstIndex(const ParameterWithoutType& parameter, const View& view, const Test& test) {
    int from = 0;
    int to = static_cast<int>(parameter.keyframeCount(view));
    while (from < to) {
        const int middle = from + (to - from) / 2;
        const bool passes = test(parameter.keyframeTime(static_cast<unsigned int>(middle), view).time);
        (passes ? to : from) = passes ? middle : middle + 1;
    }
    return from;
}

} // namespace

int countKeyframes(const ParameterWithoutType& parameter, const View& view, Time first, Time last) {
    const View written = writtenAt(parameter, Context(Time(), view)).view;
    std::vector<View> views{written};
    if (!written.isValid())
        views = parameter.viewList();
    int count = 0;
    for (const View one : views) {
        const int end = firstIndex(parameter, one, [=](Time time) { return time > last; });
        count += std::max(0, end - firstIndex(parameter, one, [=](Time time) { return time >= first; }));
    }
    return count;
}

SerialisedKeyframes serialised(const ParameterWithoutType& parameter, const View& view,
                               const std::vector<Time>& times) {
    SerialisedKeyframes keyframes;
    keyframes.reserve(times.size());
    for (const Time time : times) {
        if (auto keyframe = parameter.getSerialisedKeyframe({time, view}))
            keyframes.push_back(std::move(keyframe));
    }
    return keyframes;
}

QString exactLines(const ParameterWithoutType& parameter, const View& view, const std::vector<Time>& times) {
    QString text;
    for (const auto& keyframe : serialised(parameter, view, times))
        text += keyframe->toExactString() + QLatin1Char('\n');
    return text;
}

/// One shift is rounded to single precision; each further one takes away most of what is left.
void shiftTo(SerialisedKeyframe& keyframe, Time time) {
    constexpr int mostShifts = 8;
    for (int i = 0; i < mostShifts && keyframe.context().time != time; ++i)
        keyframe.adjustTime(static_cast<float>(time.toDouble() - keyframe.context().time.toDouble()));
}

bool sameKeyframes(const SerialisedKeyframe* a, const SerialisedKeyframe* b) {
    return a && b ? a->equals(*b) : !a && !b;
}

Context writtenAt(const BasicParameter& parameter, const Context& context) {
    const auto* const own = qobject_cast<const ParameterWithoutType*>(&parameter);
    const bool isApart = !own || own->splittable() || dynamic_cast<const ParameterSet*>(own);
    return isApart ? context : Context(context.time, View(View::defaultViewId()), context.flags);
}

void importAll(ParameterWithoutType& parameter, const SerialisedKeyframes& keyframes) {
    const LifeGuard guard(parameter);
    for (const auto& keyframe : keyframes) {
        if (guard.alive())
            parameter.importKeyframe(*keyframe);
    }
    if (guard.alive())
        mendAll(parameter, keyframes);
}

void mendAll(ParameterWithoutType& parameter, const SerialisedKeyframes& keyframes) {
    const LifeGuard guard(parameter);
    for (const auto& keyframe : keyframes) {
        if (!guard.alive())
            return;
        if (!sameKeyframes(parameter.getSerialisedKeyframe(keyframe->context()).get(), keyframe.get()))
            parameter.importKeyframe(*keyframe);
    }
}

} // namespace Prm::detail
