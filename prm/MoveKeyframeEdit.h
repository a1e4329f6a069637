#pragma once

#include "prm/Context.h"
#include "prm/Export.h"
#include "prm/ParameterEdits.h"

namespace Prm {

/// Moves one keyframe of one view to another time. A keyframe already there gets value and interpolation of the moved
/// one. The move is a shift in single precision: at large frame numbers, fractions of a frame are rounded.
///
/// Does nothing if there is no keyframe to move, or if the target is no valid time.
///
/// \snippet position.cpp move
class PRM_EXPORT MoveKeyframeEdit : public ParameterSnapshotEdit {
public:
    /// From a keyframe's time and view to another time.
    MoveKeyframeEdit(ParameterWithoutType& parameter, const Context& from, const Context& to);

    /// Moves without undo; returns whether there was a keyframe to move. Emits KEYFRAME_REMOVED, then the changes of
    /// `importKeyframe`.
    bool doMoveKeyframe(const Context& from, const Context& to);

    /// Appends one edit for the view.
    static void appendToCommand(ParameterWithoutType& parameter, const Frame& from, const Frame& to, const View& view,
                                Bsc::CompositeCommand& command);
    /// Appends one edit for each of the parameter's views, also for those without a keyframe at `from`.
    static void appendToCommand(ParameterWithoutType& parameter, const Frame& from, const Frame& to,
                                Bsc::CompositeCommand& command);
    /// A compound moves as one parameter, not as a set.
    static void appendToCommand(CompoundParameter& parameter, const Frame& from, const Frame& to,
                                Bsc::CompositeCommand& command);
    static void doAppendToCommand(ParameterWithoutType* parameter, const Frame& from, const Frame& to,
                                  Bsc::CompositeCommand& command);
    /// The same for every parameter of the set and its subsets. A set that is a compound counts as one parameter.
    static void appendToCommand(ParameterSet& set, const Frame& from, const Frame& to, Bsc::CompositeCommand& command);

protected:
    bool applies() override;
    void apply() override;
    int countNow() const override;
    detail::Places places() const override;

private:
    Context m_from;
    Context m_to;
};

} // namespace Prm
