#pragma once

// The calls that are fuzzed, in tables. Rows are added at the end, so that the seeds keep their meaning.

#include "fuzz/CallArguments.h"
#include "fuzz/World.h"
#include "host/bsc/CompositeCommand.h"
#include "prm/AnimationState.h"
#include "prm/MoveKeyframeEdit.h"
#include "prm/ProjectFileVersion.h"
#include "prm/SerialisedKeyframe.h"
#include "prm/project/Invariants.h"

namespace Fuzz {

const char* const lines[] = {"views=[0, 1]",
                             "views=[5]",
                             "value=3",
                             "view[2].value=4",
                             "hidden=1",
                             "before=Linear",
                             "keyframes.append( Key( 1, 2, Linear ) )",
                             "view[1].keyframes.append( BezierKey( 2, 3, 0, 0, 1, 1 ) )",
                             "keyframes.append( Key(",
                             "name=\"set\"",
                             "former.value=1",
                             "count.value=1",
                             "count.value=2"};

const char* const names[] = {"", "set.", "set_2.", "set_3.", "p0.", "p1.", "p2.", "p3.", "p6.", "p7.", "p8."};

inline ProjectFileVersion latest() {
    ProjectFileVersion version;
    version.streamVersion = StreamVersion::latest;
    return version;
}

inline void readLine(ParameterWithoutType& parameter, int number) {
    parameter.streamInValue(QString::fromLatin1(lines[number]), latest(), {});
}

inline void importFrom(ParameterWithoutType& own, const ParameterWithoutType& other, const Context& at) {
    if (const auto keyframe = other.getSerialisedKeyframe(at))
        own.importKeyframe(*keyframe);
}

using P = ParameterWithoutType;
using A = Arguments;
using Edit = void (*)(P& own, P& other, const A& a);
const Edit edits[] = {
    [](P& own, P&, const A& a) { own.setVariantValue(a.value, a.at); },
    [](P& own, P&, const A& a) { own.setVariantValue(a.value, a.at, std::nothrow); },
    [](P& own, P&, const A& a) {
        own.setVariantValue(QVariantList{a.value, a.value}, a.at);
    },
    [](P& own, P&, const A& a) { own.iAddKeyframe(a.at); },
    [](P& own, P&, const A& a) { own.iAddKeyframe(Frame::fromInt(a.number), AnimationState(AnimationFlags(4))); },
    [](P& own, P&, const A& a) { own.vDeleteKeyframe(Context::Explicit(a.at)); },
    [](P& own, P&, const A& a) { own.vDeleteAllKeyframes(a.view); },
    [](P& own, P&, const A& a) { own.vReset(a.at); },
    [](P& own, P&, const A&) { own.resetAll(); },
    [](P& own, P&, const A& a) { own.vSetInterpolation(a.interpolation(), a.at); },
    [](P& own, P&, const A& a) { own.vSetInterpolationData(a.shape(), a.index(), a.view); },
    [](P& own, P&, const A& a) { own.vSetExtrapolationBefore(a.extrapolation()); },
    [](P& own, P&, const A& a) { own.vSetExtrapolationAfter(a.extrapolation()); },
    [](P& own, P&, const A& a) { own.setSplittable(a.yes); },
    [](P& own, P& other, const A& a) { own.copyViewData(a.view, a.to.view, a.yes ? nullptr : &other); },
    [](P& own, P&, const A& a) { own.uniquifyView(a.view); },
    [](P& own, P&, const A& a) { own.deleteView(a.view); },
    [](P& own, P& other, const A&) { own.vCopyKeyframeDataFrom(&other); },
    [](P& own, P& other, const A&) { own.assignFrom(other); },
    [](P& own, P&, const A& a) { own.hide(a.yes); },
    [](P& own, P&, const A& a) { own.adjustKeyframesTime([&](Time time) { return time + (a.number - 4); }); },
    [](P& own, P& other, const A& a) { importFrom(own, other, a.at); },
    [](P& own, P&, const A& a) { readLine(own, a.number); },
    [](P& own, P&, const A& a) { own.initialiseHeroView(a.view, a.to.view); },
    [](P& own, P&, const A& a) { own.vSetDefaultInterpolation(a.interpolation()); },
};

using Command = Bsc::CompositeCommand;
template <class Kind, class... More> void add(Command& command, P& own, const More&... more) {
    command.push_back(new Kind(own, more...));
}

inline void addPaste(Command& command, P& own, P& other, const A& a) {
    const QString text = ParameterPasteKeyframesEdit::textOf(other, a.view, Time::fromInt(-9), Time::fromInt(9));
    add<ParameterPasteKeyframesEdit>(command, own, a.yes ? text : text + "x", a.to.time, a.to.view);
}

inline Frame frameOf(const A& a) {
    return Frame::fromInt(a.number);
}

/// The value in the form that the parameter takes: a list for each part of a compound, a point.
inline QVariant fitting(const P& own, double value) {
    const auto* const compound = dynamic_cast<const CompoundParameter*>(&own);
    if (!compound)
        return dynamic_cast<const PointParameter*>(&own) ? QVariant(QPointF(value, -value)) : QVariant(value);
    QVariantList all;
    for (const P* part : compound->subparameters())
        all.append(fitting(*part, value++));
    return all;
}

inline AnimationState allViews() {
    return AnimationState(AnimationFlags(4));
}

struct Offer {
    const char* name;
    void (*add)(Command& c, P& own, P& other, const A& a);
};
#define OFFER(...)                                                                                                     \
    {                                                                                                                  \
#__VA_ARGS__,                                                                                                  \
            [](Command & c, P & own, [[maybe_unused]] P & other, [[maybe_unused]] const A& a) { __VA_ARGS__; }         \
    }
const Offer commands[] = {
    OFFER(own.vAddKeyframeCommand(Context::Explicit(a.at), c)),
    OFFER(own.createKeyframeDeletion(Context::Explicit(a.at), c)),
    OFFER(own.vDeleteAllKeyframesCommand(a.view, c)),
    OFFER(own.vSetInterpolationCommand(a.interpolation(), a.at, c)),
    OFFER(own.vSetInterpolationDataCommand(c, a.shape(), {&own, a.view, a.index()})),
    OFFER(add<ParameterSetValueEdit>(c, own, a.value, a.at)),
    OFFER(add<ParameterSetStaticValueEdit>(c, own, a.value, a.view)),
    OFFER(add<ParameterResetEdit>(c, own, a.at)),
    OFFER(add<ParameterSplitViewEdit>(c, own, a.view)),
    OFFER(add<ParameterDeleteViewEdit>(c, own, a.view)),
    OFFER(add<ParameterRetimeEdit>(c, own, a.retiming())),
    OFFER(addPaste(c, own, other, a)),
    OFFER(own.vSetExtrapolationBeforeCommand(a.extrapolation(), c)),
    OFFER(add<ParameterWithoutTypeHideEdit>(c, own, a.yes)),
    OFFER(add<ParameterWithoutTypeLockEdit>(c, own, a.yes)),
    OFFER(other.bAddConstrainedParameterCommand(&own, c)),
    OFFER(own.bUnconstrainCommand(c)),
    OFFER(add<MoveKeyframeEdit>(c, own, a.at, Context(a.to.time, a.view))),
    OFFER(own.vSetExtrapolationAfterCommand(a.extrapolation(), c)),
    OFFER(own.vAddKeyframeCommand(frameOf(a), allViews(), c)),
    OFFER(own.createKeyframeDeletion(frameOf(a), allViews(), c)),
    OFFER(other.bRemoveConstrainedParameterCommand(&own, c)),
};

inline void moveSet(ParameterSet* set, const A& a, Command& c) {
    if (set)
        MoveKeyframeEdit::appendToCommand(*set, Frame(a.at), Frame(a.to), c);
}

inline void retimeSet(ParameterSet* set, const A& a, Command& c) {
    if (set)
        ParameterRetimeEdit::appendToCommand(*set, a.retiming(), c);
}

/// The other forms, of sets and of compounds too.
const Offer moreCommands[] = {
    OFFER(add<ParameterSetValueEdit>(c, own, fitting(own, a.value), a.at)),
    OFFER(add<ParameterSetStaticValueEdit>(c, own, fitting(own, a.value), a.view)),
    OFFER(add<ParameterAddKeyEdit>(c, own, a.at)),
    OFFER(add<ParameterDeleteKeyEdit>(c, own, Context::Explicit(a.at))),
    OFFER(add<ParameterInterpolationEdit>(c, own, a.interpolation(), a.at)),
    OFFER(add<ParameterInterpolationDataEdit>(c, own, a.shape(), a.index(), a.view)),
    OFFER(add<ParameterExtrapolationBeforeEdit>(c, own, a.extrapolation())),
    OFFER(add<ParameterExtrapolationAfterEdit>(c, own, a.extrapolation())),
    OFFER(c.push_back(new ParameterAddConstrainedParameterEdit(other, own))),
    OFFER(add<ParameterWithoutTypeUnconstrainEdit>(c, own)),
    OFFER(own.hideCommand(a.yes, c)),
    OFFER(own.setLockedCommand(a.yes, c)),
    OFFER(MoveKeyframeEdit::appendToCommand(own, Frame(a.at), Frame(a.to), a.view, c)),
    OFFER(MoveKeyframeEdit::appendToCommand(own, Frame(a.at), Frame(a.to), c)),
    OFFER(moveSet(dynamic_cast<ParameterSet*>(&own), a, c)),
    OFFER(moveSet(own.parentSet(), a, c)),
    OFFER(retimeSet(dynamic_cast<ParameterSet*>(&own), a, c)),
    OFFER(retimeSet(own.parentSet(), a, c)),
};

inline void read(const P& parameter) {
    for (const Context& at : {Context(), Context(Time::fromDouble(1.25), View(2)), Context(Time::INVALID)}) {
        Context found;
        static_cast<void>(parameter.variantValue(at, std::nothrow));
        static_cast<void>(parameter.bNextKeyframe(at, found) || parameter.bPreviousKeyframe(at, found));
        unsigned int index = 0;
        static_cast<void>(parameter.bNearestKeyframeTime(at, found.time) || parameter.bNearestKeyframeIndex(at, index));
        static_cast<void>(parameter.interpolation(at));
        static_cast<void>(parameter.interpolation(KeyframeIndex(&parameter, at.view, 0)));
        static_cast<void>(parameter.interpolationData(KeyframeIndex(&parameter, at.view, 0)));
    }
    static_cast<void>(World::stateOf(parameter));
    static_cast<void>(parameter.allKeyframes());
    static_cast<void>(parameter.extrapolationBefore() == parameter.extrapolationAfter() && parameter.numViews() > 1);
}

/// A host's own kind, which animates nothing, takes every call as well.
inline bool callBare() {
    ParameterWithoutTypeBase bare(false, false, nullptr);
    Choices none(nullptr, 0);
    const A a(none);
    Command all;
    for (const Edit edit : edits)
        edit(bare, bare, a);
    for (const Offer& command : commands)
        command.add(all, bare, bare, a);
    for (const Offer& command : moreCommands)
        command.add(all, bare, bare, a);
    all.doIt();
    all.undoIt();
    read(bare);
    intact(detail::verify(bare));
    return true;
}

} // namespace Fuzz
