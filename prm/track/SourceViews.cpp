#include "prm/track/SourceViews.h"

#include <algorithm>
#include <cmath>

namespace Prm::detail {

namespace {

using Position = std::vector<View>::const_iterator;

double distance(View a, View b) {
    return std::abs(static_cast<double>(a.id()) - static_cast<double>(b.id()));
}

/// `above` is the first view behind `view`, neither the first nor the end of the list.
View nearer(Position above, View view) {
    const View below = *(above - 1);
    return distance(below, view) <= distance(*above, view) ? below : *above;
}

SourceViews threeNearest(const std::vector<View>& viewList, Position above, View view) {
    Position first = above - 1;
    Position last = above + 1;
    const bool lowerOne =
        first != viewList.begin() && (last == viewList.end() || distance(*(first - 1), view) <= distance(*last, view));
    if (lowerOne)
        --first;
    else
        ++last;
    SourceViews sources;
    std::for_each(first, last, [&](View source) { sources.append(source); });
    return sources;
}

} // namespace

SourceViews interpolationSourceViews(const MVInterpolationParams& params, const View& view,
                                     const std::vector<View>& viewList) {
    if (params.mode == MVInterpolationParams::Off || viewList.empty() || !view.isValid())
        return {};
    const auto above = std::lower_bound(viewList.begin(), viewList.end(), view);
    if (above == viewList.end())
        return SourceViews(viewList.back());
    if (*above == view || above == viewList.begin())
        return SourceViews(*above);
    if (params.mode == MVInterpolationParams::Nearest)
        return SourceViews(nearer(above, view));
    if (params.mode == MVInterpolationParams::Smooth && viewList.size() >= SourceViews::capacity)
        return threeNearest(viewList, above, view);
    SourceViews sources(*(above - 1));
    sources.append(*above);
    return sources;
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
