#pragma once

#include "prm/ReshapingEdits.h"
#include "tool/edit/Editing.h"

#include <functional>
#include <memory>

namespace Tool {

/// The edit of a parameter, which has values of its kind; null to leave it alone.
using CurveEdit = std::function<std::unique_ptr<Prm::ParameterReshapeEdit>(Prm::ParameterWithoutType& parameter,
                                                                           Prm::KeyframeSpan span)>;

/// The options `view`, `from` and `to`, and what they say.
void declareSpan(Arguments& arguments);
Prm::KeyframeSpan spanOption(const Arguments& arguments);

/// Reads the parameters that the patterns name as values of their kinds, edits each, and writes the text. A keyframe
/// that the edit leaves as it is keeps its bytes. Says for each how many keyframes it had and has, or why it is left as
/// it is; the exit code is then that of findings.
int reshapeCurves(const Arguments& arguments, const Prm::KeyframeSpan& span, const CurveEdit& edit);

} // namespace Tool
