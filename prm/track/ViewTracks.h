#pragma once

#include "prm/track/ChangedTimes.h"
#include "prm/track/ViewRanges.h"

#include <algorithm>
#include <array>
#include <map>
#include <utility>
#include <vector>

namespace Prm::detail {

/// All that a parameter's values are made of, as plain data. Copies share keyframes.
template <class T> struct ViewTracks {
    ViewRules rules() const { return {splittable, mode, views}; }
    /// That of a view with data; without data, the default value.
    const Track<T>& trackOf(View view) const {
        const auto found = std::lower_bound(views.begin(), views.end(), view);
        const bool isThere = found != views.end() && *found == view;
        return isThere ? tracks[static_cast<std::size_t>(found - views.begin())] : defaults;
    }

    bool splittable = false;
    MVInterpolationParams::Mode mode = MVInterpolationParams::Off;
    Outside outside;
    /// The views with data, in ascending order, and what each has: no keyframes if the parameter is not keyframed.
    std::vector<View> views;
    std::vector<Track<T>> tracks;
    Track<T> defaults;
};

/// Where the values of two differ in views that are made from these sources.
template <class T>
TimeSpans differentTimes(const ViewTracks<T>& former, const ViewTracks<T>& now, const SourceViews& formerSources,
                         const SourceViews& sources) {
    const auto compared = [&](View formerSource, View source) {
        return ChangedTrack<T>(former.trackOf(formerSource), former.outside, now.trackOf(source), now.outside).times();
    };
    const auto first = [](const SourceViews& views) { return views.empty() ? View::INVALID() : views[0]; };
    if (formerSources.size() < 2 && sources.size() < 2)
        return compared(first(formerSources), first(sources));
    TimeSpans times;
    if (!std::equal(formerSources.begin(), formerSources.end(), sources.begin(), sources.end()))
        times = TimeSpan::all();
    for (const View source : sources)
        times |= compared(source, source);
    return times;
}

/// Where the values of two differ, for each group of views that are made from the same data.
template <class T> Reach differenceOf(const ViewTracks<T>& former, const ViewTracks<T>& now) {
    using Sources = std::array<SourceViews, 2>;
    const auto idsOf = [](const Sources& sources) {
        std::array<quint32, 2 * static_cast<std::size_t>(SourceViews::capacity)> ids{};
        ids.fill(ViewRanges::last);
        std::size_t place = 0;
        for (const SourceViews& one : sources) {
            for (int i = 0; i < one.size(); ++i)
                ids[place + static_cast<std::size_t>(i)] = one[i].id();
            place += static_cast<std::size_t>(SourceViews::capacity);
        }
        return ids;
    };
    std::map<decltype(idsOf({})), std::pair<Sources, ViewRanges>> groups;
    const std::vector<quint32> bounds = rangesWithSameSources(former.rules(), now.rules());
    for (std::size_t i = 0; i < bounds.size(); ++i) {
        const Sources sources{former.rules().sourcesOf(View(bounds[i])), now.rules().sourcesOf(View(bounds[i]))};
        auto& group = groups[idsOf(sources)];
        group.first = sources;
        group.second.append(bounds[i], i + 1 == bounds.size() ? ViewRanges::last : bounds[i + 1] - 1);
    }
    Reach reach;
    for (const auto& [ids, group] : groups) {
        TimeSpans times = differentTimes(former, now, group.first[0], group.first[1]);
        if (!times.isEmpty())
            reach.append({group.second, std::move(times)});
    }
    return reach;
}

} // namespace Prm::detail
