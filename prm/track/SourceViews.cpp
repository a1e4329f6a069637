#include "prm/track/SourceViews.h"

#include <algorithm>
#include <cmath>

namespace Prm::detail {

namespace {

using Position = const View*;

double distance(View a, View b) {
    return std::abs(static_cast<double>(a.id()) - static_cast<double>(b.id()));
}

/// `above` is the first view after `view`, neither the first nor the end of the list.
View nearer(Position above, View view) {
    const View below = *(above - 1);
    return distance(below, view) <= distance(*above, view) ? below : *above;
}

SourceViews threeNearest(Position begin, Position end, Position above, View view) {
    Position first = above - 1;
    Position last = above + 1;
    const bool lowerOne = first != begin && (last == end || distance(*(first - 1), view) <= distance(*last, view));
    if (lowerOne)
        --first;
    else
        ++last;
    SourceViews sources;
    std::for_each(first, last, [&](View source) { sources.append(source); });
    return sources;
}

SourceViews sourceViews(MVInterpolationParams::Mode mode, View view, Position begin, Position end) {
    if (mode == MVInterpolationParams::Off || begin == end || !view.isValid())
        return {};
    const Position above = std::lower_bound(begin, end, view);
    if (above == end)
        return SourceViews(*(end - 1));
    if (*above == view || above == begin)
        return SourceViews(*above);
    if (mode == MVInterpolationParams::Nearest)
        return SourceViews(nearer(above, view));
    if (mode == MVInterpolationParams::Smooth && end - begin >= SourceViews::capacity)
        return threeNearest(begin, end, above, view);
    SourceViews sources(*(above - 1));
    sources.append(*above);
    return sources;
}

} // namespace

SourceViews interpolationSourceViews(const MVInterpolationParams& params, const View& view,
                                     const std::vector<View>& viewList) {
    return sourceViews(params.mode, view, viewList.data(), viewList.data() + viewList.size());
}

SourceViews interpolationSourceViews(const MVInterpolationParams& params, const View& view, const ViewsAround& views) {
    return sourceViews(params.mode, view, views.begin(), views.end());
}

std::array<double, SourceViews::capacity> sourceWeights(const SourceViews& sources, const View& view) {
    std::array<double, SourceViews::capacity> weights{};
    const double at = view.id();
    for (int i = 0; i < sources.size(); ++i) {
        double weight = 1.0;
        for (int j = 0; j < sources.size(); ++j) {
            if (j != i)
                weight *= (at - sources[j].id()) / (static_cast<double>(sources[i].id()) - sources[j].id());
        }
        weights[static_cast<std::size_t>(i)] = weight;
    }
    return weights;
}

} // namespace Prm::detail
