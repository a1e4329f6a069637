#include "prm/ReshapingEdits.h"

#include "prm/edits/ReshapingPlan.h"

namespace Prm {

ParameterReshapeEdit::ParameterReshapeEdit(ParameterWithoutType& parameter, const View& view,
                                           const detail::Reshaping& how)
    : ParameterSnapshotEdit(&parameter), m_view(view), m_how(std::make_unique<const detail::Reshaping>(how)) {}

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
    const auto plan = std::move(m_plan);
    plan->apply();
}

detail::Places ParameterReshapeEdit::places() const {
    return m_plan->places();
}

ParameterInsertKeyframeEdit::ParameterInsertKeyframeEdit(ParameterWithoutType& parameter, const Context& at,
                                                         Inexact inexact)
    : ParameterReshapeEdit(parameter, at.view, {detail::KeyInsertion{at.time, inexact == AddOrRound}}) {}

} // namespace Prm
