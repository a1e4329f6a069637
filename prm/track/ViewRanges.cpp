#include "prm/track/ViewRanges.h"

#include <algorithm>

namespace Prm::detail {

void ViewRanges::append(quint32 from, quint32 to) {
    const int count = m_ranges.size();
    const Range* const former = count > 0 ? m_ranges.end() - 1 : nullptr;
    if (former && former->to + 1 == from)
        m_ranges.replace(count - 1, count, {former->from, to});
    else
        m_ranges.append({from, to});
}

bool ViewRanges::contains(View view) const {
    const auto endsBefore = [](const Range& range, quint32 id) { return range.to < id; };
    const auto found = std::lower_bound(m_ranges.begin(), m_ranges.end(), view.id(), endsBefore);
    return found != m_ranges.end() && found->from <= view.id();
}

SourceViews ViewRules::sourcesOf(View view) const {
    if (list.empty())
        return {};
    if (splittable && view.isValid() && mode != MVInterpolationParams::Off)
        return interpolationSourceViews({mode}, view, list);
    const bool hasData = splittable && std::binary_search(list.begin(), list.end(), view);
    return SourceViews(hasData ? view : list.front());
}

namespace {

/// The first id of the views that are nearer to the later one of two.
quint32 middle(View a, View b) {
    return static_cast<quint32>((quint64{a.id()} + b.id()) / 2 + 1);
}

void addBounds(std::vector<quint32>& bounds, const ViewRules& rules, std::size_t from, std::size_t to) {
    const std::vector<View>& list = rules.list;
    for (std::size_t i = from; i < to; ++i) {
        bounds.push_back(list[i].id());
        bounds.push_back(list[i].id() + 1);
        // `Nearest` changes between two views, `Smooth` between the outer two of four.
        if (rules.mode != MVInterpolationParams::Off && i + 1 < list.size())
            bounds.push_back(middle(list[i], list[i + 1]));
        if (rules.mode != MVInterpolationParams::Off && i + 3 < list.size())
            bounds.push_back(middle(list[i], list[i + 3]));
    }
}

void sort(std::vector<quint32>& bounds) {
    constexpr quint32 firstInvalid = 0x80000000u;
    bounds.insert(bounds.end(), {0, firstInvalid});
    std::sort(bounds.begin(), bounds.end());
    bounds.erase(std::unique(bounds.begin(), bounds.end()), bounds.end());
}

bool isIn(const SourceViews& sources, View view) {
    return std::find(sources.begin(), sources.end(), view) != sources.end();
}

/// All except those in the list after its first one.
ViewRanges allButFurther(const std::vector<View>& list) {
    ViewRanges others;
    quint32 from = 0;
    for (std::size_t i = 1; i < list.size(); ++i) {
        if (from < list[i].id())
            others.append(from, list[i].id() - 1);
        from = list[i].id() + 1;
    }
    others.append(from, ViewRanges::last);
    return others;
}

} // namespace

/// With view interpolation, up to three views away.
ViewRanges ViewRules::readersOf(View source) const {
    const auto found = std::lower_bound(list.begin(), list.end(), source);
    if (found == list.end() || *found != source)
        return {};
    const bool isFirst = found == list.begin();
    if (!splittable || list.size() == 1)
        return isFirst ? ViewRanges::all() : ViewRanges();
    if (mode == MVInterpolationParams::Off)
        return isFirst ? allButFurther(list) : ViewRanges::of(source);
    constexpr std::size_t farthest = 3;
    const auto at = static_cast<std::size_t>(found - list.begin());
    std::vector<quint32> bounds;
    addBounds(bounds, *this, at - std::min(at, farthest), std::min(at + farthest + 1, list.size()));
    sort(bounds);
    ViewRanges readers;
    for (std::size_t i = 0; i < bounds.size(); ++i) {
        const bool isLast = i + 1 == bounds.size();
        if (isIn(sourcesOf(View(bounds[i])), source))
            readers.append(bounds[i], isLast ? ViewRanges::last : bounds[i + 1] - 1);
    }
    return readers;
}

ViewRanges ViewRules::readersIfAdded(View source) const {
    std::vector<View> more = list;
    const auto place = std::lower_bound(more.begin(), more.end(), source);
    if (place == more.end() || *place != source)
        more.insert(place, source);
    return ViewRules{splittable, mode, more}.readersOf(source);
}

std::vector<quint32> rangesWithSameSources(const ViewRules& a, const ViewRules& b) {
    std::vector<quint32> bounds;
    addBounds(bounds, a, 0, a.list.size());
    addBounds(bounds, b, 0, b.list.size());
    sort(bounds);
    return bounds;
}

} // namespace Prm::detail
