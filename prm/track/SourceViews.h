#pragma once

#include "prm/Export.h"
#include "prm/View.h"
#include "prm/ViewInterpolation.h"

#include <array>
#include <vector>

namespace Prm::detail {

/// Up to three views in place: evaluation allocates nothing.
class SourceViews {
public:
    static constexpr int capacity = 3;

    SourceViews() = default;
    explicit SourceViews(View view) { append(view); }

    void append(View view) { m_views[static_cast<std::size_t>(m_size++)] = view; }
    int size() const { return m_size; }
    bool empty() const { return m_size == 0; }
    View operator[](int position) const { return m_views[static_cast<std::size_t>(position)]; }
    const View* begin() const { return m_views.data(); }
    const View* end() const { return m_views.data() + m_size; }

private:
    std::array<View, capacity> m_views;
    int m_size = 0;
};

/// The views, in ascending order, from which the value in `view` is made: the view itself when it is in the list, else
/// what the mode says; none for `Off`. The list is in ascending order.
PRM_EXPORT SourceViews interpolationSourceViews(const MVInterpolationParams& params, const View& view,
                                                const std::vector<View>& viewList);

/// How much each source view counts in `view`; the weights add up to 1. Lagrange's formula over the view ids.
PRM_EXPORT std::array<double, SourceViews::capacity> sourceWeights(const SourceViews& sources, const View& view);

} // namespace Prm::detail
