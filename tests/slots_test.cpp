// The order of the virtual operations, which hosts that were built before rely on.

#include "prm/MovedParameter.h"
#include "prm/Parameter.h"
#include "prm/ParameterSet.h"
#include "prm/SerialisedKeyframe.h"
#include "prm/StaticParameter.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

using namespace Prm;

namespace {

/// Where the Itanium ABI has a virtual operation: one more than its offset in the table.
template <class Function, class Class> int slotOf(Function Class::*operation) {
    std::ptrdiff_t place = 0;
    std::memcpy(&place, &operation, sizeof place);
    return static_cast<int>((place - 1) / static_cast<std::ptrdiff_t>(sizeof(void*)));
}

struct Slot {
    const char* name;
    int place;
};

/// That they follow each other without a gap.
void expectInOrder(const std::vector<Slot>& operations) {
#if !defined(__GXX_ABI_VERSION) || !(defined(__x86_64__) || defined(__i386__))
    GTEST_SKIP() << "the places of virtual operations are not known here";
#endif
    for (std::size_t i = 1; i < operations.size(); ++i)
        EXPECT_EQ(operations[i].place, operations[i - 1].place + 1) << operations[i].name;
}

#define AT(operation)                                                                                                  \
    { #operation, slotOf(&C::operation) }
#define AS(operation, signature)                                                                                       \
    { #operation, slotOf < signature>(&C::operation) }

using Command = Bsc::CompositeCommand;

TEST(Slots, OfUntypedParameters) {
    using C = ParameterWithoutType;
    using Exact = Context::Explicit;
    expectInOrder({
        AT(bStreamOut),
        AT(setFromScriptString),
        AT(scriptName),
        AS(variantValue, QVariant(const Context&) const),
        AS(setVariantValue, void(const QVariant&, const Context&)),
        AS(variantValue, QVariant(const Context&, const std::nothrow_t&) const),
        AS(setVariantValue, void(const QVariant&, const Context&, const std::nothrow_t&)),
        AT(qMetaType),
        AT(allKeyframes),
        AT(calculateHash),
        AT(streamInValue),
        AT(onUpstreamParameterChanged),
        AT(assignFrom),
        AT(attachObserver),
        AT(detachObserver),
        AT(detachAllObservers),
        AT(setDisplayName),
        AT(setScriptName),
        AT(bUnconstrainCommand),
        AT(bRemoveConstrainedParameterCommand),
        AT(vSetExtrapolationBefore),
        AT(vSetExtrapolationAfter),
        AT(vSetDefaultInterpolation),
        AT(vSetInterpolation),
        AT(vSetInterpolationData),
        AT(extrapolationBefore),
        AT(extrapolationAfter),
        AS(interpolation, Interpolation(const Context&) const),
        AS(interpolation, Interpolation(const KeyframeIndex&) const),
        AT(interpolationData),
        AT(vSetInterpolationCommand),
        AT(vSetInterpolationDataCommand),
        AT(vSetExtrapolationBeforeCommand),
        AT(vSetExtrapolationAfterCommand),
        AT(isKeyframed),
        AT(keyframeCount),
        AT(keyframeTime),
        AT(adjustKeyframesTime),
        AT(bKeyframeAt),
        AT(bNearestKeyframeTime),
        AT(bNearestKeyframeIndex),
        AT(bPreviousKeyframe),
        AT(bNextKeyframe),
        AS(iAddKeyframe, int(const Context&)),
        AS(iAddKeyframe, int(const Frame&, const AnimationState&)),
        AT(vDeleteKeyframe),
        AT(vDeleteAllKeyframes),
        AT(vReset),
        AT(getSerialisedKeyframe),
        AT(importKeyframe),
        AT(isSplit),
        AT(numViews),
        AT(setSplittable),
        AT(splittable),
        AT(viewList),
        AT(copyViewData),
        AT(uniquifyView),
        AT(initialiseHeroView),
        AT(deleteView),
        AS(vAddKeyframeCommand, Command & (const Exact&, Command&)),
        AS(vAddKeyframeCommand, Command & (const Frame&, const AnimationState&, Command&)),
        AS(createKeyframeDeletion, void(const Exact&, Command&)),
        AS(createKeyframeDeletion, void(const Frame&, const AnimationState&, Command&)),
        AT(vDeleteAllKeyframesCommand),
        AT(bAddConstrainedParameterCommand),
        AT(vCopyKeyframeDataFrom),
        AT(exportState),
        AT(doImportState),
    });
}

TEST(Slots, OfTypedParameters) {
    using C = Parameter<bool>;
    using Exact = Context::Explicit;
    expectInOrder({
        AT(assignFrom),
        AT(value),
        AT(vSetValue),
        AT(defaultValue),
        AT(vSetDefault),
        AS(setVariantValue, void(const QVariant&, const Context&)),
        AS(setVariantValue, void(const QVariant&, const Context&, const std::nothrow_t&)),
        AT(keyframeValue),
        AT(keyframe),
        AS(variantValue, QVariant(const Context&) const),
        AS(variantValue, QVariant(const Context&, const std::nothrow_t&) const),
        AT(allKeyframes),
        AT(bStreamOut),
        AT(vSetExtrapolationBefore),
        AT(vSetExtrapolationAfter),
        AT(vSetInterpolation),
        AT(vSetDefaultInterpolation),
        AT(vSetInterpolationData),
        AT(extrapolationBefore),
        AT(extrapolationAfter),
        AS(interpolation, Interpolation(const Context&) const),
        AS(interpolation, Interpolation(const KeyframeIndex&) const),
        AT(defaultInterpolation),
        AT(interpolationData),
        AT(vSetInterpolationCommand),
        AT(vSetInterpolationDataCommand),
        AT(vSetExtrapolationBeforeCommand),
        AT(vSetExtrapolationAfterCommand),
        AT(qMetaType),
        AT(isKeyframed),
        AT(keyframeCount),
        AT(keyframeTime),
        AT(adjustKeyframesTime),
        AT(bKeyframeAt),
        AT(bNearestKeyframeTime),
        AT(bNearestKeyframeIndex),
        AT(bPreviousKeyframe),
        AT(bNextKeyframe),
        AS(iAddKeyframe, int(const Context&)),
        AS(iAddKeyframe, int(const Frame&, const AnimationState&)),
        AT(vDeleteKeyframe),
        AT(vDeleteAllKeyframes),
        AT(vReset),
        AT(getSerialisedKeyframe),
        AT(importKeyframe),
        AT(exportState),
        AT(doImportState),
        AT(isSplit),
        AT(setSplittable),
        AT(splittable),
        AT(numViews),
        AT(viewList),
        AT(copyViewData),
        AT(uniquifyView),
        AT(initialiseHeroView),
        AT(deleteView),
        AS(vAddKeyframeCommand, Command & (const Exact&, Command&)),
        AS(vAddKeyframeCommand, Command & (const Frame&, const AnimationState&, Command&)),
        AS(createKeyframeDeletion, void(const Exact&, Command&)),
        AS(createKeyframeDeletion, void(const Frame&, const AnimationState&, Command&)),
        AT(vDeleteAllKeyframesCommand),
        AT(tRawValueType),
        AT(bAddConstrainedParameterCommand),
        AT(vCopyKeyframeDataFrom),
        AT(calculateHash),
        AT(interpolateValue),
        AT(extrapolateValue),
        AT(supportsExtrapolationFromNoKeys),
        AT(hasViewData),
        AT(initialiseInterpolation),
        AT(streamInValue),
    });
}

TEST(Slots, OfOthers) {
    {
        using C = SerialisedKeyframe;
        expectInOrder({AT(context), AT(adjustTime), AT(toString), AT(setFromString)});
    }
    {
        using C = StaticParameter<unsigned int>;
        expectInOrder({AT(calculateHash), AT(doSetValue), AT(setValue), AT(value), AT(exportState), AT(doImportState)});
    }
    {
        using C = Bsc::MementoUndoable;
        expectInOrder({AT(doImportState), AT(postImportState)});
    }
    using C = ParameterSet;
    using Added = const boost::shared_ptr<ParameterWithoutType>&;
    expectInOrder({AS(setDisplayName, void(const QString&)), AS(setDisplayName, void(const QString&, const QString&)),
                   AT(setScriptName), AT(bStreamOut), AT(bStreamIn), AS(addParameter, void(Added)),
                   AS(addParameter, void(ParameterWithoutType&)), AT(exportState), AT(doImportState), AT(assignName)});
}

} // namespace
