// The edits of a parameter's settings, and of its tie to a master.

#include "prm/ParameterEdits.h"
#include "prm/ParameterSet.h"
#include "prm/untyped/Restoring.h"
#include "prm/untyped/State.h"

#include <algorithm>

namespace Prm {

namespace {

const detail::Places settingsAlone{detail::Place::staticValue(View::INVALID())};

bool hasExtrapolationOfItsOwn(const ParameterWithoutType& parameter) {
    return !parameter.masterParameter() && !dynamic_cast<const ParameterSet*>(&parameter);
}

} // namespace

ParameterSettingEdit::ParameterSettingEdit(ParameterWithoutType& parameter, quint32 wanted, const EditWords& words)
    : ParameterEdit(&parameter, words), m_wanted(wanted) {}

ParameterSettingEdit::~ParameterSettingEdit() = default;

bool ParameterSettingEdit::applies(const ParameterWithoutType&) const {
    return true;
}

bool ParameterSettingEdit::answersItself(const ParameterWithoutType&) const {
    return true;
}

void ParameterSettingEdit::doIt() {
    m_former.reset();
    m_state.reset();
    ParameterWithoutType* const changing = parameter();
    const bool isChanged = changing && applies(*changing);
    takeCount(0);
    if (isChanged && answersItself(*changing)) {
        const quint32 former = present(*changing);
        change(*changing, former, m_wanted);
        m_former = former;
        takeCount(former != m_wanted ? 1 : 0);
    } else if (isChanged) {
        auto state = std::make_shared<detail::State>(*changing, settingsAlone);
        state->changeOrPutBack([&] { set(*changing, m_wanted); });
        m_state = std::move(state);
        takeCount(m_state->equals() ? 0 : 1);
    }
    noteDone();
}

void ParameterSettingEdit::undoIt() {
    noteUndone();
    ParameterWithoutType* const changing = parameter();
    if (changing && m_former)
        change(*changing, m_wanted, *m_former);
    else if (changing && m_state)
        m_state->present().changeOrPutBack([this] { m_state->putBack(); });
}

void ParameterSettingEdit::change(ParameterWithoutType& parameter, quint32 from, quint32 to) const {
    detail::changeOrGoBack(
        parameter, [&] { set(parameter, to); }, [&] { set(parameter, from); });
}

std::vector<const void*> ParameterSettingEdit::restored() const {
    const auto all = m_state ? m_state->parameters() : std::vector<const BasicParameter*>();
    return m_former && edited() ? std::vector<const void*>{edited()} : std::vector<const void*>(all.begin(), all.end());
}

std::function<void()> ParameterSettingEdit::mergerWith(UndoableEdit& next, const Others&) {
    auto& later = static_cast<ParameterSettingEdit&>(next);
    const bool isAlike = m_former.has_value() == later.m_former.has_value() && !m_state == !later.m_state;
    if (!edited() || later.edited() != edited() || !isAlike)
        return {};
    return [this, &later] {
        m_wanted = later.m_wanted;
        takeCount(std::max(takenCount(), later.takenCount()));
    };
}

ParameterExtrapolationBeforeEdit::ParameterExtrapolationBeforeEdit(ParameterWithoutType& parameter, Extrapolation kind)
    : ParameterSettingEdit(parameter, static_cast<quint32>(kind),
                           {"Change extrapolation before the first keyframe of %p",
                            "Change extrapolation before the first keyframe of %p"}) {}

bool ParameterExtrapolationBeforeEdit::applies(const ParameterWithoutType& parameter) const {
    return parameter.isKeyframed();
}

bool ParameterExtrapolationBeforeEdit::answersItself(const ParameterWithoutType& parameter) const {
    return hasExtrapolationOfItsOwn(parameter);
}

quint32 ParameterExtrapolationBeforeEdit::present(const ParameterWithoutType& parameter) const {
    return static_cast<quint32>(parameter.extrapolationBefore());
}

void ParameterExtrapolationBeforeEdit::set(ParameterWithoutType& parameter, quint32 setting) const {
    parameter.vSetExtrapolationBefore(static_cast<Extrapolation>(setting));
}

ParameterExtrapolationAfterEdit::ParameterExtrapolationAfterEdit(ParameterWithoutType& parameter, Extrapolation kind)
    : ParameterSettingEdit(parameter, static_cast<quint32>(kind),
                           {"Change extrapolation after the last keyframe of %p",
                            "Change extrapolation after the last keyframe of %p"}) {}

bool ParameterExtrapolationAfterEdit::applies(const ParameterWithoutType& parameter) const {
    return parameter.isKeyframed();
}

bool ParameterExtrapolationAfterEdit::answersItself(const ParameterWithoutType& parameter) const {
    return hasExtrapolationOfItsOwn(parameter);
}

quint32 ParameterExtrapolationAfterEdit::present(const ParameterWithoutType& parameter) const {
    return static_cast<quint32>(parameter.extrapolationAfter());
}

void ParameterExtrapolationAfterEdit::set(ParameterWithoutType& parameter, quint32 setting) const {
    parameter.vSetExtrapolationAfter(static_cast<Extrapolation>(setting));
}

ParameterWithoutTypeHideEdit::ParameterWithoutTypeHideEdit(ParameterWithoutType& parameter, bool hidden)
    : ParameterSettingEdit(parameter, hidden ? 1 : 0,
                           hidden ? EditWords{"Hide %p", "Hide %p"} : EditWords{"Show %p", "Show %p"}) {}

quint32 ParameterWithoutTypeHideEdit::present(const ParameterWithoutType& parameter) const {
    return parameter.isHidden() ? 1 : 0;
}

void ParameterWithoutTypeHideEdit::set(ParameterWithoutType& parameter, quint32 setting) const {
    parameter.hide(setting != 0);
}

ParameterWithoutTypeLockEdit::ParameterWithoutTypeLockEdit(ParameterWithoutType& parameter, bool locked)
    : ParameterSettingEdit(parameter, locked ? 1 : 0,
                           locked ? EditWords{"Lock %p", "Lock %p"} : EditWords{"Unlock %p", "Unlock %p"}) {}

quint32 ParameterWithoutTypeLockEdit::present(const ParameterWithoutType& parameter) const {
    return parameter.isLocked() ? 1 : 0;
}

void ParameterWithoutTypeLockEdit::set(ParameterWithoutType& parameter, quint32 setting) const {
    parameter.setLocked(setting != 0);
}

ParameterAddConstrainedParameterEdit::ParameterAddConstrainedParameterEdit(ParameterWithoutType& master,
                                                                           ParameterWithoutType& constrained)
    : ParameterSnapshotEdit(&constrained, {"Set master of %p", "Set masters of %p"}), m_master(&master) {}

bool ParameterAddConstrainedParameterEdit::applies() {
    return parameter() && m_master;
}

void ParameterAddConstrainedParameterEdit::apply() {
    m_master->bAddConstrainedParameter(parameter());
}

detail::State ParameterAddConstrainedParameterEdit::takeState() const {
    return detail::State::withMaster(*parameter());
}

ParameterWithoutTypeUnconstrainEdit::ParameterWithoutTypeUnconstrainEdit(ParameterWithoutType& constrained)
    : ParameterSnapshotEdit(&constrained, {"Remove master of %p", "Remove masters of %p"}) {}

bool ParameterWithoutTypeUnconstrainEdit::applies() {
    return parameter() && parameter()->masterParameter();
}

void ParameterWithoutTypeUnconstrainEdit::apply() {
    parameter()->bUnconstrain();
}

detail::State ParameterWithoutTypeUnconstrainEdit::takeState() const {
    return detail::State::withMaster(*parameter());
}

bool ParameterWithoutTypeUnconstrainEdit::mayUndo(const detail::State& former) const {
    return former.link()->master() && former.link()->mayRestore(*parameter());
}

} // namespace Prm
