#include "prm/ReshapingEdits.h"

#include "prm/edits/KeyframeMoves.h"
#include "prm/edits/ReshapingPlan.h"
#include "prm/untyped/State.h"

#include <type_traits>
#include <variant>

namespace Prm {

namespace {

EditWords wordsOf(const detail::KeyInsertion&) {
    return {"Insert %n keyframe into %p", "Insert %n keyframes into %p"};
}
EditWords wordsOf(const detail::SegmentEasing&) {
    return {"Ease %n keyframe of %p", "Ease %n keyframes of %p"};
}
EditWords wordsOf(const detail::Simplification&) {
    return {"Simplify %n keyframe of %p", "Simplify %n keyframes of %p"};
}
EditWords wordsOf(const detail::Baking&) {
    return {"Bake %p", "Bake %p"};
}
EditWords wordsOf(const detail::Smoothing&) {
    return {"Smooth %p", "Smooth %p"};
}
EditWords wordsOf(const detail::Reversal&) {
    return {"Reverse %n keyframe of %p", "Reverse %n keyframes of %p"};
}
EditWords wordsOf(const detail::ValueMapping&) {
    return {"Change values of %n keyframe of %p", "Change values of %n keyframes of %p"};
}
EditWords wordsOf(const detail::SelectedKeyframes&) {
    return {"Change handles of %n keyframe of %p", "Change handles of %n keyframes of %p"};
}

/// The times of the keyframes that are counted; null where they are not.
template <class Act> const detail::KeyframeRange* rangeOf(const Act& act) {
    if constexpr (std::is_same_v<Act, detail::SegmentEasing> || std::is_same_v<Act, detail::Simplification> ||
                  std::is_same_v<Act, detail::Reversal> || std::is_same_v<Act, detail::ValueMapping>)
        return &act.range;
    else
        return nullptr;
}

} // namespace

ParameterReshapeEdit::ParameterReshapeEdit(ParameterWithoutType& parameter, const View& view,
                                           const detail::Reshaping& how)
    : ParameterSnapshotEdit(&parameter, std::visit([](const auto& act) { return wordsOf(act); }, how.act)),
      m_view(view), m_how(std::make_unique<const detail::Reshaping>(how)) {}

int ParameterReshapeEdit::countNow() const {
    const auto* const range = std::visit([](const auto& act) { return rangeOf(act); }, m_how->act);
    return range && parameter() ? detail::countKeyframes(*parameter(), m_view, range->first, range->last) : 1;
}

ParameterReshapeEdit::~ParameterReshapeEdit() = default;

std::unique_ptr<detail::ReshapingPlan> ParameterReshapeEdit::planned() const {
    auto plan = std::make_unique<detail::ReshapingPlan>();
    plan->add(*parameter());
    plan->reshape(m_view, *m_how);
    plan->keepTogether(*parameter());
    return plan;
}

QString ParameterReshapeEdit::refusal() const {
    return parameter() ? QString::fromLatin1(planned()->refusal()) : QString();
}

bool ParameterReshapeEdit::applies() {
    m_plan = planned();
    return !m_plan->refusal() && !m_plan->places().empty();
}

void ParameterReshapeEdit::apply() {
    if (countNow() == 0) // a value without keyframes
        describeAs({"Change value of %p", "Change value of %p"});
    const auto plan = std::move(m_plan);
    plan->apply();
}

detail::Places ParameterReshapeEdit::places() const {
    return m_plan->places();
}

ParameterInsertKeyframeEdit::ParameterInsertKeyframeEdit(ParameterWithoutType& parameter, const Context& at,
                                                         Inexact inexact)
    : ParameterReshapeEdit(parameter, at.view, {detail::KeyInsertion{at.time, inexact == AddOrRound}}) {}

ParameterEaseEdit::ParameterEaseEdit(ParameterWithoutType& parameter, const KeyframeSpan& span, const Easing& easing)
    : ParameterReshapeEdit(parameter, span.view, {detail::SegmentEasing{{span.first, span.last}, easing.parts}}) {}

ParameterSimplifyEdit::ParameterSimplifyEdit(ParameterWithoutType& parameter, const KeyframeSpan& span, double error,
                                             Curves curves)
    : ParameterReshapeEdit(parameter, span.view,
                           {detail::Simplification{{span.first, span.last}, error, curves == Linear}}) {}

ParameterBakeEdit::ParameterBakeEdit(ParameterWithoutType& parameter, const KeyframeSpan& span, double step,
                                     Curves curves)
    : ParameterReshapeEdit(parameter, span.view, {detail::Baking{{span.first, span.last}, step, curves == Bezier}}) {}

bool ParameterBakeEdit::applies() {
    const bool isTied = parameter()->masterParameter() != nullptr;
    return isTied ? refusal().isEmpty() : ParameterReshapeEdit::applies();
}

/// A copy of what the master has shows the same, and can be baked.
void ParameterBakeEdit::apply() {
    if (parameter()->bUnconstrain() && (!parameter() || !ParameterReshapeEdit::applies()))
        return;
    ParameterReshapeEdit::apply();
}

detail::State ParameterBakeEdit::takeState() const {
    return parameter()->masterParameter() ? detail::State::withMaster(*parameter()) : ParameterReshapeEdit::takeState();
}

bool ParameterBakeEdit::mayUndo(const detail::State& former) const {
    return !former.link() || (former.link()->master() && former.link()->mayRestore(*parameter()));
}

ParameterSmoothEdit::ParameterSmoothEdit(ParameterWithoutType& parameter, const KeyframeSpan& span, double radius,
                                         double error, double step)
    : ParameterReshapeEdit(parameter, span.view, {detail::Smoothing{{{span.first, span.last}, step}, radius, error}}) {}

ParameterReverseEdit::ParameterReverseEdit(ParameterWithoutType& parameter, const KeyframeSpan& span, Time pivot)
    : ParameterReshapeEdit(parameter, span.view, {detail::Reversal{{span.first, span.last}, pivot}}) {}

ParameterScaleValuesEdit::ParameterScaleValuesEdit(ParameterWithoutType& parameter, const KeyframeSpan& span,
                                                   const ValueScaling& scaling)
    : ParameterReshapeEdit(
          parameter, span.view,
          {detail::ValueMapping{
              {span.first, span.last}, scaling.scale, scaling.pivot, scaling.offset, scaling.component}}) {}

} // namespace Prm
