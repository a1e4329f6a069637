#pragma once

#include "prm/untyped/KeyframeReshaper.h"

#include <memory>
#include <vector>

namespace Prm::detail {

/// What an edit makes of the keyframes of one or several parameters, of a compound those of its parts, each once.
/// Everything is computed first; `apply` then stores all and notifies of all.
class ReshapingPlan {
public:
    /// Adds the parameters whose keyframes this one shows, unless they are there. Those without keyframes are left out.
    void add(ParameterWithoutType& parameter);

    /// All parameters that were added, in order.
    const std::vector<std::unique_ptr<KeyframeReshaper>>& reshapers() const { return m_reshapers; }
    /// Null for one that was not added.
    KeyframeReshaper* reshaperOf(const ParameterWithoutType& parameter) const;

    /// Takes the keyframes as they were when the parameters were added.
    void restart();
    /// Reshapes the keyframes of a view of each, of all views for the invalid view.
    void reshape(const View& view, const Reshaping& how);
    /// Reshapes those of one parameter.
    void reshape(KeyframeReshaper& one, const View& view, const Reshaping& how);
    /// Where the parts of a compound are keyed together: each part that lacks a keyframe which another one has gained
    /// or kept gets one that keeps its curve.
    void keepTogether(ParameterWithoutType& edited);

    /// Why the edit cannot be done, null if it can.
    const char* refusal() const { return m_refusal; }
    /// Where something would change; empty if nowhere.
    Places places() const;
    /// Observers may delete parameters.
    void apply() const;

private:
    bool completeTimes(ParameterWithoutType& compound);

    std::vector<std::unique_ptr<KeyframeReshaper>> m_reshapers;
    const char* m_refusal = nullptr;
};

} // namespace Prm::detail
