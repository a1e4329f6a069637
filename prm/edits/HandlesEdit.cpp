#include "prm/HandlesEdit.h"

#include "prm/track/Reshaping.h"
#include "prm/untyped/UntypedAnswers.h"

#include <memory>
#include <vector>

namespace Prm {

namespace {

detail::Reshaping changeAt(Time time, const HandleChange& change) {
    const auto times = std::make_shared<const std::vector<Time>>(1, time);
    return {detail::SelectedKeyframes{times, times, KeyframeChange::withHandles(change)}};
}

} // namespace

KeyframeHandles handles(const KeyframeIndex& keyframe, int component) {
    const auto* const answers = keyframe.parameter ? detail::UntypedAnswers::of(*keyframe.parameter) : nullptr;
    return answers ? answers->handles(*keyframe.parameter, keyframe, component) : KeyframeHandles();
}

ParameterHandlesEdit::ParameterHandlesEdit(ParameterWithoutType& parameter, const Context::Explicit& keyframe,
                                           const HandleChange& change)
    : ParameterReshapeEdit(parameter, keyframe.view, changeAt(keyframe.time, change)) {}

} // namespace Prm
