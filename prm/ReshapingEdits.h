#pragma once

#include "prm/Export.h"
#include "prm/ParameterEdits.h"

#include <QString>

#include <memory>

namespace Prm {

namespace detail {
struct Reshaping;
class ReshapingPlan;
} // namespace detail

/// An edit that reshapes the keyframes of a parameter as a whole; of a compound, those of each part. A parameter that
/// is not splittable has one place for all views.
///
/// Everything is computed before anything changes. If one part or view refuses, nothing is done. Where a compound keys
/// its parts together, each part keeps a keyframe at every time at which another one has one; keyframes that are added
/// for that keep the curve. A locked flag is for the host.
///
/// Emits for each parameter that changes: one KEYFRAME_MOVED for each view if only times have changed, in the same
/// order; otherwise one PARAMETER_ASSIGNED, for all views, whose extent is the difference. VIEW_ADDED comes before it
/// where a view gains data. Nothing is emitted if nothing changes.
///
/// \snippet reshaping.cpp insert
class PRM_EXPORT ParameterReshapeEdit : public ParameterSnapshotEdit {
public:
    ~ParameterReshapeEdit() override;
    /// Why doing the edit now would be refused, in words that follow a colon; empty if it would not.
    QString refusal() const;

protected:
    /// In one view; in all views with data for the invalid view.
    ParameterReshapeEdit(ParameterWithoutType& parameter, const View& view, const detail::Reshaping& how);

    bool applies() override;
    void apply() override;
    detail::Places places() const override;

private:
    std::unique_ptr<detail::ReshapingPlan> planned() const;

    View m_view;
    std::unique_ptr<const detail::Reshaping> m_how;
    /// From `applies` to `apply`.
    std::unique_ptr<const detail::ReshapingPlan> m_plan;
};

/// Inserts a keyframe and keeps the curve: a Bezier segment is cut by de Casteljau's algorithm, and both halves are as
/// before within 1e-12 of their values. A view without data gets a copy of what it shows. Does nothing where there is
/// a keyframe.
///
/// Refuses where the values are computed by a function or a class of the application, where a view without data shows a
/// blend of others, and in a segment that is vertical within.
///
/// \snippet reshaping.cpp insert
class PRM_EXPORT ParameterInsertKeyframeEdit : public ParameterReshapeEdit {
public:
    enum Inexact {
        /// Where a half would begin and end at one value although it bends, a shape cannot say that: it also gets a
        /// keyframe at its extremum. The value of `int` and `unsigned int` is rounded, and the halves keep their
        /// shapes: before rounding, the curve moves by half a whole number at most.
        AddOrRound,
        /// Refuses in these cases.
        Refuse
    };

    /// At the context's time in its view; in all views with data for the invalid view.
    ParameterInsertKeyframeEdit(ParameterWithoutType& parameter, const Context& at, Inexact inexact = AddOrRound);
};

} // namespace Prm
