#pragma once

#include "prm/Export.h"
#include "prm/View.h"
#include "prm/ViewInterpolation.h"

#include <array>
#include <vector>

namespace Prm::detail {

/// A few views in place: evaluation allocates nothing.
template <int most> class FewViews {
public:
    static constexpr int capacity = most;

    FewViews() = default;
    explicit FewViews(View view) { append(view); }

    void append(View view) { m_views[static_cast<std::size_t>(m_size++)] = view; }
    int size() const { return m_size; }
    bool empty() const { return m_size == 0; }
    View operator[](int position) const { return m_views[static_cast<std::size_t>(position)]; }
    const View* begin() const { return m_views.data(); }
    const View* end() const { return m_views.data() + m_size; }

private:
    std::array<View, static_cast<std::size_t>(most)> m_views;
    int m_size = 0;
};

/// The views from which a value is made.
using SourceViews = FewViews<3>;
/// Of a list of views in ascending order, the two last ones before a view and the two first ones from it on.
using ViewsAround = FewViews<4>;

/// The views, in ascending order, from which the value in `view` is made: the view itself when it is in the list, else
/// what the mode says; none for `Off`. The list is in ascending order.
PRM_EXPORT SourceViews interpolationSourceViews(const MVInterpolationParams& params, const View& view,
                                                const std::vector<View>& viewList);

/// The same of the views around it, which are all that matter.
PRM_EXPORT SourceViews interpolationSourceViews(const MVInterpolationParams& params, const View& view,
                                                const ViewsAround& views);

/// How much each source view counts in `view`; the weights add up to 1. Lagrange's formula over the view ids.
PRM_EXPORT std::array<double, SourceViews::capacity> sourceWeights(const SourceViews& sources, const View& view);

} // namespace Prm::detail
