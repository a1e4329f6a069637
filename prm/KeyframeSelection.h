#pragma once

#include "prm/Context.h"
#include "prm/Export.h"
#include "prm/ParameterWithoutType.h"
#include "prm/TimeSpan.h"

#include <QPointer>

#include <cstddef>
#include <map>
#include <utility>
#include <vector>

namespace Prm {

/// Keyframes of several parameters, selected by parameter, view and time, for copying and for edits of many keyframes
/// at once. A compound is selected as its subparameters.
///
/// \snippet clipboard.cpp copy
/// \threads The owning thread of the parameters.
class PRM_EXPORT KeyframeSelection {
public:
    /// What is selected in one view of one parameter.
    struct OfView {
        /// Null after the parameter was deleted.
        QPointer<ParameterWithoutType> parameter;
        View view;
        /// In ascending order. Empty if the span that was added has no keyframe.
        std::vector<Time> times;
    };

    /// Adds the keyframes in the span of all views with data.
    void add(ParameterWithoutType& parameter, const TimeSpan& span = TimeSpan::all());
    /// Adds the keyframes in the span of one view. A view without data has none, but an unsplittable parameter has
    /// those of its only view.
    void add(ParameterWithoutType& parameter, const View& view, const TimeSpan& span = TimeSpan::all());
    /// Adds the keyframes in the span of all parameters of a set and its subsets, in all views with data.
    void addSet(const ParameterSet& set, const TimeSpan& span = TimeSpan::all());

    /// One for each parameter and view, in the order in which they were added.
    const std::vector<OfView>& views() const { return m_views; }
    /// The number of keyframes.
    std::size_t count() const;

private:
    void addTimes(ParameterWithoutType& owner, const View& view, const TimeSpan& span);

    std::vector<OfView> m_views;
    std::map<std::pair<const ParameterWithoutType*, View>, std::size_t> m_places;
};

} // namespace Prm
