#pragma once

#include "prm/ReshapingEdits.h"
#include "tool/edit/Editing.h"

#include <functional>
#include <memory>

namespace Tool {

/// An edit of a parameter, which has values of its kind, and what is reported of it.
struct CurveEdit {
    using Make = std::function<std::unique_ptr<Prm::ParameterReshapeEdit>(Prm::ParameterWithoutType& parameter,
                                                                          const Prm::KeyframeSpan& span)>;

    /// Null to leave the parameter alone.
    Make make;
    /// What has become of keyframes that are as many as before.
    QString verb = QStringLiteral("changed");
    /// The edit that this one comes near, if its error is to be reported; null for that of doing nothing.
    Make exact = {};
    /// The error that is allowed.
    double error = 0.0;
    /// Whether there is something to do for a parameter without keyframes.
    bool takesStatic = false;
    /// Whether it adds and subtracts times, which are then those of the file as decimals.
    bool movesTimes = false;
};

/// The options `view`, `from` and `to`, and what they say.
void declareSpan(Arguments& arguments);
Prm::KeyframeSpan spanOption(const Arguments& arguments);

/// Reads the parameters that the patterns name as values of their kinds, edits each, and writes the text. A keyframe
/// that the edit leaves as it is keeps its bytes. Says what was done to each that has changed, or why it is left as it
/// is; the exit code is then that of findings.
int reshapeCurves(const Arguments& arguments, const Prm::KeyframeSpan& span, const CurveEdit& edit);

} // namespace Tool
