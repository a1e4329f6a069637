#pragma once

#include "prm/KeyframeChange.h"
#include "prm/KeyframeSelection.h"
#include "prm/edits/ReshapingPlan.h"
#include "prm/untyped/State.h"

#include <memory>
#include <utility>
#include <vector>

namespace Prm::detail {

/// What changes of a selection make of the keyframes, each from those that there were when the plan was made.
/// Parameters may be deleted meanwhile.
class SelectionPlan {
public:
    explicit SelectionPlan(const KeyframeSelection& selection);

    /// Returns why the change is refused, or null.
    const char* compute(const KeyframeChange& change);
    /// The parameters that would change, and where.
    State::EditedPlaces places() const;
    /// Stores all and then notifies of all.
    void apply() const { m_plan.apply(); }
    /// The same with the keyframes at the beginning. All observers are notified, then the first exception goes on.
    void putBack();

private:
    struct OfView {
        KeyframeReshaper* reshaper;
        View view;
        SelectedKeyframes::Times selected;
        SelectedKeyframes::Times together;
    };

    ReshapingPlan m_plan;
    std::vector<OfView> m_views;
};

} // namespace Prm::detail
