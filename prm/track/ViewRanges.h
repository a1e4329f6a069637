#pragma once

#include "prm/Export.h"
#include "prm/TimeSpan.h"
#include "prm/View.h"
#include "prm/track/ShortList.h"
#include "prm/track/SourceViews.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace Prm::detail {

/// A set of views: ranges of ids in ascending order, of which no two meet. Invalid ids, which are the last ones, count.
class PRM_EXPORT ViewRanges {
public:
    static constexpr quint32 last = 0xFFFFFFFFu;

    ViewRanges() = default;
    static ViewRanges all() { return fromTo(0, last); }
    static ViewRanges of(View view) { return fromTo(view.id(), view.id()); }
    static ViewRanges fromTo(quint32 from, quint32 to) {
        ViewRanges one;
        one.m_ranges = Ranges(std::in_place, from, to);
        return one;
    }

    /// After all others.
    void append(quint32 from, quint32 to);
    bool contains(View view) const;
    bool isEmpty() const { return m_ranges.isEmpty(); }
    bool isAll() const { return *this == all(); }

    friend bool operator==(const ViewRanges& a, const ViewRanges& b) {
        return std::equal(a.m_ranges.begin(), a.m_ranges.end(), b.m_ranges.begin(), b.m_ranges.end());
    }

private:
    struct Range {
        quint32 from;
        quint32 to;

        friend bool operator==(Range a, Range b) { return a.from == b.from && a.to == b.to; }
    };
    using Ranges = ShortList<Range>;

    Ranges m_ranges;
};

/// Times in views.
struct ViewTimes {
    ViewRanges views;
    TimeSpans times;
};

/// Where values may differ: united, in any order.
using Reach = ShortList<ViewTimes>;

inline Reach everywhere() {
    return Reach(std::in_place, ViewRanges::all(), TimeSpan::all());
}

/// What decides from which data the value in a view is made.
struct PRM_EXPORT ViewRules {
    /// None without data, where every view shows the default value; otherwise one, or those that are blended.
    SourceViews sourcesOf(View view) const;
    /// The views whose sources include one that has data.
    ViewRanges readersOf(View source) const;
    /// The same if that view had data.
    ViewRanges readersIfAdded(View source) const;

    bool splittable;
    MVInterpolationParams::Mode mode;
    /// The views with data, in ascending order.
    const std::vector<View>& list;
};

/// The first ids of ranges within which all views have the same sources, by both rules; 0 is the first one.
PRM_EXPORT std::vector<quint32> rangesWithSameSources(const ViewRules& a, const ViewRules& b);

} // namespace Prm::detail
