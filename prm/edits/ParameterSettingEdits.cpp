// The edits of a parameter's settings, and of its tie to a master.

#include "prm/ParameterEdits.h"
#include "prm/ParameterSet.h"
#include "prm/untyped/Restoring.h"

namespace Prm {

namespace {

bool hasExtrapolationOfItsOwn(const ParameterWithoutType& parameter) {
    return !parameter.masterParameter() && !dynamic_cast<const ParameterSet*>(&parameter);
}

} // namespace

ParameterSettingEdit::ParameterSettingEdit(ParameterWithoutType& parameter, quint32 wanted)
    : ParameterEdit(&parameter), m_wanted(wanted) {}

ParameterSettingEdit::~ParameterSettingEdit() = default;

bool ParameterSettingEdit::applies(const ParameterWithoutType&) const {
    return true;
}

bool ParameterSettingEdit::answersItself(const ParameterWithoutType&) const {
    return true;
}

void ParameterSettingEdit::doIt() {
    m_former.reset();
    m_snapshot.reset();
    ParameterWithoutType* const changing = parameter();
    if (!changing || !applies(*changing))
        return;
    if (answersItself(*changing)) {
        const quint32 former = present(*changing);
        change(*changing, former, m_wanted);
        m_former = former;
    } else {
        const detail::Snapshot former = changing->exportState();
        detail::changeOrPutBack(*changing, former, [&] { set(*changing, m_wanted); });
        m_snapshot = former;
    }
}

void ParameterSettingEdit::undoIt() {
    ParameterWithoutType* const changing = parameter();
    if (changing && m_former)
        change(*changing, m_wanted, *m_former);
    else if (changing && m_snapshot)
        detail::changeOrPutBack(*changing, changing->exportState(),
                                [&] { Bsc::importState(*changing, m_snapshot, true); });
}

void ParameterSettingEdit::change(ParameterWithoutType& parameter, quint32 from, quint32 to) const {
    detail::changeOrGoBack(
        parameter, [&] { set(parameter, to); }, [&] { set(parameter, from); });
}

ParameterExtrapolationBeforeEdit::ParameterExtrapolationBeforeEdit(ParameterWithoutType& parameter, Extrapolation kind)
    : ParameterSettingEdit(parameter, static_cast<quint32>(kind)) {}

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
    : ParameterSettingEdit(parameter, static_cast<quint32>(kind)) {}

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
    : ParameterSettingEdit(parameter, hidden ? 1 : 0) {}

quint32 ParameterWithoutTypeHideEdit::present(const ParameterWithoutType& parameter) const {
    return parameter.isHidden() ? 1 : 0;
}

void ParameterWithoutTypeHideEdit::set(ParameterWithoutType& parameter, quint32 setting) const {
    parameter.hide(setting != 0);
}

ParameterWithoutTypeLockEdit::ParameterWithoutTypeLockEdit(ParameterWithoutType& parameter, bool locked)
    : ParameterSettingEdit(parameter, locked ? 1 : 0) {}

quint32 ParameterWithoutTypeLockEdit::present(const ParameterWithoutType& parameter) const {
    return parameter.isLocked() ? 1 : 0;
}

void ParameterWithoutTypeLockEdit::set(ParameterWithoutType& parameter, quint32 setting) const {
    parameter.setLocked(setting != 0);
}

detail::MasterLink::MasterLink(const ParameterWithoutType& constrained)
    : m_master(constrained.masterParameter()), m_next(constrained.nextConstrained()),
      m_pending(constrained.pendingMasterParameterId()) {}

void detail::MasterLink::restore(ParameterWithoutType& constrained) const {
    constrained.tieTo(m_master.data(), m_next.data());
    constrained.setPendingMasterParameterId(m_pending);
}

ParameterAddConstrainedParameterEdit::ParameterAddConstrainedParameterEdit(ParameterWithoutType& master,
                                                                           ParameterWithoutType& constrained)
    : ParameterEdit(&constrained), m_master(&master) {}

void ParameterAddConstrainedParameterEdit::doIt() {
    m_snapshot.reset();
    if (!parameter() || !m_master)
        return;
    m_former = detail::MasterLink(*parameter());
    detail::Snapshot own = parameter()->exportState();
    if (m_master->bAddConstrainedParameter(parameter()))
        m_snapshot = std::move(own);
}

void ParameterAddConstrainedParameterEdit::undoIt() {
    ParameterWithoutType* const constrained = parameter();
    if (!constrained || !m_snapshot)
        return;
    const detail::MasterLink present(*constrained);
    const detail::Snapshot done = constrained->exportState();
    detail::changeOrGoBack(
        *constrained,
        [&] {
            m_former.restore(*constrained);
            Bsc::importState(*constrained, m_snapshot, true);
        },
        [&] {
            present.restore(*constrained);
            Bsc::importState(*constrained, done, true);
        });
}

ParameterWithoutTypeUnconstrainEdit::ParameterWithoutTypeUnconstrainEdit(ParameterWithoutType& constrained)
    : ParameterEdit(&constrained) {}

void ParameterWithoutTypeUnconstrainEdit::doIt() {
    m_snapshot.reset();
    ParameterWithoutType* const constrained = parameter();
    if (!constrained || !constrained->masterParameter())
        return;
    m_former = detail::MasterLink(*constrained);
    m_snapshot = constrained->exportState();
    detail::changeOrGoBack(
        *constrained, [&] { constrained->bUnconstrain(); }, [&] { putBack(*constrained); });
}

void ParameterWithoutTypeUnconstrainEdit::undoIt() {
    ParameterWithoutType* const constrained = parameter();
    if (!constrained || !m_snapshot || !m_former.master())
        return;
    const detail::MasterLink present(*constrained);
    const detail::Snapshot done = constrained->exportState();
    detail::changeOrGoBack(
        *constrained, [&] { putBack(*constrained); },
        [&] {
            present.restore(*constrained);
            Bsc::importState(*constrained, done, true);
        });
}

void ParameterWithoutTypeUnconstrainEdit::putBack(ParameterWithoutType& constrained) const {
    m_former.restore(constrained);
    Bsc::importState(constrained, m_snapshot, true);
}

} // namespace Prm
