#include "prm/ParameterWithoutTypeBase.h"

#include "host/bsc/MementoBase.h"
#include "prm/SerialisedKeyframe.h"

#include <boost/make_shared.hpp>

namespace Prm {

ParameterWithoutTypeBase::FastViewMapBase::~FastViewMapBase() = default;

ParameterWithoutTypeBase::ParameterWithoutTypeBase(bool locked, bool hidden, ParameterSet* parent)
    : ParameterWithoutType(locked, hidden, parent) {}

ParameterWithoutTypeBase::ParameterWithoutTypeBase(const ParameterWithoutTypeBase& other)
    : Bsc::MementoUndoable(other), ParameterWithoutType(other), m_animatable(other.m_animatable) {}

ParameterWithoutTypeBase::~ParameterWithoutTypeBase() {
    announceDeletion();
}

QVariant ParameterWithoutTypeBase::variantValue(const Context&) const {
    return {};
}

void ParameterWithoutTypeBase::setVariantValue(const QVariant&, const Context&) {}

void ParameterWithoutTypeBase::assignFrom(const ParameterWithoutType& other) {
    ParameterWithoutType::assignFrom(other);
    if (const auto* sameKind = dynamic_cast<const ParameterWithoutTypeBase*>(&other))
        m_animatable = sameKind->m_animatable;
}

void ParameterWithoutTypeBase::vSetExtrapolationBefore(Extrapolation) {}

void ParameterWithoutTypeBase::vSetExtrapolationAfter(Extrapolation) {}

void ParameterWithoutTypeBase::vSetDefaultInterpolation(Interpolation) {}

bool ParameterWithoutTypeBase::vSetInterpolation(Interpolation, const Context&) {
    return false;
}

void ParameterWithoutTypeBase::vSetInterpolationData(IType, unsigned int, const View&) {}

Extrapolation ParameterWithoutTypeBase::extrapolationBefore() const {
    return Extrapolation{};
}

Extrapolation ParameterWithoutTypeBase::extrapolationAfter() const {
    return Extrapolation{};
}

Interpolation ParameterWithoutTypeBase::interpolation(const Context&) const {
    return Interpolation{};
}

Interpolation ParameterWithoutTypeBase::interpolation(const KeyframeIndex&) const {
    return Interpolation{};
}

IType ParameterWithoutTypeBase::interpolationData(const KeyframeIndex&) const {
    return {};
}

Bsc::CompositeCommand& ParameterWithoutTypeBase::vSetInterpolationCommand(Interpolation, Context,
                                                                          Bsc::CompositeCommand& command) {
    return command;
}

Bsc::CompositeCommand& ParameterWithoutTypeBase::vSetInterpolationDataCommand(Bsc::CompositeCommand& command, IType,
                                                                              const KeyframeIndex&) {
    return command;
}

Bsc::CompositeCommand& ParameterWithoutTypeBase::vSetExtrapolationBeforeCommand(Extrapolation,
                                                                                Bsc::CompositeCommand& command) {
    return command;
}

Bsc::CompositeCommand& ParameterWithoutTypeBase::vSetExtrapolationAfterCommand(Extrapolation,
                                                                               Bsc::CompositeCommand& command) {
    return command;
}

bool ParameterWithoutTypeBase::isKeyframed() const {
    return false;
}

unsigned int ParameterWithoutTypeBase::keyframeCount(const View&) const {
    return 0;
}

Context ParameterWithoutTypeBase::keyframeTime(unsigned int, const View& view) const {
    return {Time(), view};
}

void ParameterWithoutTypeBase::adjustKeyframesTime(const boost::function<Time(Time)>&) {}

bool ParameterWithoutTypeBase::bKeyframeAt(const Context::Explicit&) const {
    return false;
}

bool ParameterWithoutTypeBase::bNearestKeyframeTime(const Context&, Time&) const {
    return false;
}

bool ParameterWithoutTypeBase::bNearestKeyframeIndex(const Context&, unsigned int&) const {
    return false;
}

bool ParameterWithoutTypeBase::bPreviousKeyframe(const Context&, Context&) const {
    return false;
}

bool ParameterWithoutTypeBase::bNextKeyframe(const Context&, Context&) const {
    return false;
}

int ParameterWithoutTypeBase::iAddKeyframe(const Context&) {
    return -1;
}

int ParameterWithoutTypeBase::iAddKeyframe(const Frame&, const AnimationState&) {
    return 0;
}

void ParameterWithoutTypeBase::vDeleteKeyframe(const Context::Explicit&) {}

void ParameterWithoutTypeBase::vDeleteAllKeyframes(const View&) {}

void ParameterWithoutTypeBase::vReset(const Context&) {}

boost::shared_ptr<SerialisedKeyframe> ParameterWithoutTypeBase::getSerialisedKeyframe(Context) const {
    return {};
}

void ParameterWithoutTypeBase::importKeyframe(const SerialisedKeyframe&) {}

bool ParameterWithoutTypeBase::isSplit() const {
    return false;
}

int ParameterWithoutTypeBase::numViews() const {
    return 0;
}

void ParameterWithoutTypeBase::setSplittable(bool) {}

bool ParameterWithoutTypeBase::splittable() const {
    return false;
}

const std::vector<View>& ParameterWithoutTypeBase::viewList() const {
    return m_viewMap.viewList();
}

void ParameterWithoutTypeBase::copyViewData(const View&, const View&, const ParameterWithoutType*) {}

void ParameterWithoutTypeBase::uniquifyView(const View&) {}

bool ParameterWithoutTypeBase::initialiseHeroView(const View&, const View&) {
    return false;
}

bool ParameterWithoutTypeBase::deleteView(const View&) {
    return false;
}

Bsc::CompositeCommand& ParameterWithoutTypeBase::vAddKeyframeCommand(const Context::Explicit&,
                                                                     Bsc::CompositeCommand& command) {
    return command;
}

Bsc::CompositeCommand& ParameterWithoutTypeBase::vAddKeyframeCommand(const Frame&, const AnimationState&,
                                                                     Bsc::CompositeCommand& command) {
    return command;
}

void ParameterWithoutTypeBase::createKeyframeDeletion(const Context::Explicit&, Bsc::CompositeCommand&) {}

void ParameterWithoutTypeBase::createKeyframeDeletion(const Frame&, const AnimationState&, Bsc::CompositeCommand&) {}

Bsc::CompositeCommand& ParameterWithoutTypeBase::vDeleteAllKeyframesCommand(const View&,
                                                                            Bsc::CompositeCommand& command) {
    return command;
}

Bsc::CompositeCommand& ParameterWithoutTypeBase::bAddConstrainedParameterCommand(ParameterWithoutType*,
                                                                                 Bsc::CompositeCommand& command) {
    return command;
}

void ParameterWithoutTypeBase::vCopyKeyframeDataFrom(const ParameterWithoutType*) {}

boost::shared_ptr<Bsc::MementoBase> ParameterWithoutTypeBase::exportState() const {
    return boost::make_shared<Bsc::MementoBase>();
}

void ParameterWithoutTypeBase::doImportState(boost::shared_ptr<Bsc::MementoBase>) {}

} // namespace Prm
