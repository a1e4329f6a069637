#pragma once

#include "prm/Export.h"
#include "prm/TimeSpan.h"
#include "prm/View.h"
#include "prm/track/SourceViews.h"

#include <QVarLengthArray>
#include <boost/container/small_vector.hpp>

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
        ViewRanges ranges;
        ranges.append(from, to);
        return ranges;
    }

    /// After all others.
    void append(quint32 from, quint32 to);
    bool contains(View view) const;
    bool isAll() const { return m_ranges.size() == 1 && m_ranges.first().from == 0 && m_ranges.first().to == last; }

    friend bool operator==(const ViewRanges& a, const ViewRanges& b) { return a.m_ranges == b.m_ranges; }

private:
    struct Range {
        quint32 from;
        quint32 to;

        friend bool operator==(Range a, Range b) { return a.from == b.from && a.to == b.to; }
    };

    QVarLengthArray<Range, 1> m_ranges;
};

/// Times in views.
struct ViewTimes {
    ViewRanges views;
    TimeSpans times;
};

/// Where values may differ: united, in any order.
using Reach = boost::container::small_vector<ViewTimes, 1>;

inline Reach everywhere() {
    return {{ViewRanges::all(), TimeSpan::all()}};
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
