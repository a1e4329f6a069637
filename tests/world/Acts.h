#pragma once

// Every mutator and every undoable edit, a row each, for tests and fuzz targets alike. Rows are added at the end of a
// table, so that seeds keep their meaning.

#include "tests/world/Model.h"
#include "tests/world/World.h"

namespace Worlds {

using A = Arguments;

/// Mutators act at once; edits are added to the command.
struct Act {
    const char* name;
    int (*run)(Command& c, P& own, P& other, const A& a);
    /// The same on the model; null where that has no such operation.
    int (*model)(Model& own, Model& other, const A& a) = nullptr;
};

template <class Do> int outcomeOf(const Do& act) {
    if constexpr (std::is_integral_v<decltype(act())>)
        return static_cast<int>(act());
    else
        return static_cast<void>(act()), 0;
}

#define RUN(Kind, ...)                                                                                                 \
    Kind& own, [[maybe_unused]] Kind& other, [[maybe_unused]] const A& a) {                                            \
        return outcomeOf([&]() -> decltype(auto) { return __VA_ARGS__; });                                             \
    }
// clang-format off
#define ACT(...) { #__VA_ARGS__, []([[maybe_unused]] Command& c, RUN(P, __VA_ARGS__) }
#define MODELLED(...) { #__VA_ARGS__, [](Command&, RUN(P, __VA_ARGS__), [](RUN(Model, __VA_ARGS__) }
// clang-format on

inline const char* const textLines[] = {"views=[0, 1]",
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

inline void readLine(P& parameter, int number) {
    parameter.streamInValue(QString::fromLatin1(textLines[static_cast<std::size_t>(number) % std::size(textLines)]),
                            version(), {});
}

inline void importFrom(P& own, const P& other, const Context& at) {
    if (const auto keyframe = other.getSerialisedKeyframe(at))
        own.importKeyframe(*keyframe);
}

/// The value in the form that the parameter takes: a list for each part of a compound, a point, a text that has to be
/// escaped.
inline QVariant fitting(const P& own, double value) {
    const auto* const compound = dynamic_cast<const CompoundParameter*>(&own);
    if (dynamic_cast<const PointParameter*>(&own))
        return QPointF(value, -value);
    if (dynamic_cast<const Parameter<QString>*>(&own))
        return QString("a, \"\\b\" )\n\u20ac=x").repeated(static_cast<int>(value)) + QString::number(value);
    if (!compound)
        return value;
    QVariantList all;
    for (const P* part : compound->subparameters())
        all.append(fitting(*part, value++));
    return all;
}

// What only numbers have.
template <class Do> int onNumber(P& own, const Do& act) {
    auto* const number = dynamic_cast<Number*>(&own);
    return number ? outcomeOf([&] { return act(*number); }) : 0;
}
template <class Do> int onNumber(Model& own, const Do& act) {
    return outcomeOf([&] { return act(own); });
}

inline void resetAround(View hero, Model& model) {
    model.resetAll(hero);
}
inline void resetAround(View hero, P& parameter) {
    Parameter<bool> selector(QStringLiteral("selector"), false, Splittable);
    selector.vSetValue(true, still());
    if (hero.isValid())
        selector.vSetValue(false, still(hero.id()));
    parameter.setViewSelector(&selector);
    parameter.resetAll();
}

inline const std::vector<Act> edits = {
    ACT(own.setVariantValue(fitting(own, a.value), a.at)),
    MODELLED(own.setVariantValue(a.value, a.at, std::nothrow)),
    ACT(own.setVariantValue(QVariantList{a.value, a.value}, a.at)),
    MODELLED(own.iAddKeyframe(a.at)),
    MODELLED(own.iAddKeyframe(a.frame(), AnimationState(AnimationFlags(4)))),
    MODELLED(own.vDeleteKeyframe(Context::Explicit(a.at))),
    MODELLED(own.vDeleteAllKeyframes(a.view)),
    MODELLED(own.vReset(a.at)),
    MODELLED(own.resetAll()),
    MODELLED(own.vSetInterpolation(a.interpolation(), a.at)),
    MODELLED(own.vSetInterpolationData(a.shape(), a.index(), a.view)),
    MODELLED(own.vSetExtrapolationBefore(a.extrapolation())),
    MODELLED(own.vSetExtrapolationAfter(a.extrapolation())),
    MODELLED(own.setSplittable(a.yes)),
    MODELLED(own.copyViewData(a.view, a.to.view, a.yes ? nullptr : &other)),
    MODELLED(own.uniquifyView(a.view)),
    MODELLED(own.deleteView(a.view)),
    MODELLED(own.vCopyKeyframeDataFrom(&other)),
    MODELLED(own.assignFrom(other)),
    ACT(own.hide(a.yes)),
    MODELLED(own.adjustKeyframesTime([&](Time time) { return time + (a.number - 4); })),
    ACT(importFrom(own, other, a.at)),
    ACT(readLine(own, a.number)),
    MODELLED(own.initialiseHeroView(a.view, a.to.view)),
    MODELLED(own.vSetDefaultInterpolation(a.interpolation())),
    MODELLED(own.iAddKeyframe(a.frame(), a.views())),
    MODELLED(own.adjustKeyframesTime([&](Time time) { return a.moved(time); })),
    MODELLED(own.doImportState(other.exportState())),
    MODELLED(onNumber(own, [&](auto& number) { return number.vSetValue(a.value, a.at); })),
    MODELLED(onNumber(own, [&](auto& number) { number.vSetDefault(a.value); })),
    MODELLED(onNumber(own, [&](auto& number) { number.setViewInterpolation({static_cast<Mode>(a.kind - 1)}); })),
    MODELLED(onNumber(own, [&](auto& number) { number.clearViewData(); })),
    MODELLED(resetAround(a.view, own)),
    ACT(other.bAddConstrainedParameter(&own)),
    ACT(own.bUnconstrain()),
};

template <class Kind, class... More> void add(Command& command, P& own, const More&... more) {
    command.push_back(new Kind(own, more...));
}

inline void addPaste(Command& command, P& own, P& other, const A& a) {
    const QString text = ParameterPasteKeyframesEdit::textOf(other, a.view, Time::fromInt(-9), Time::fromInt(9));
    add<ParameterPasteKeyframesEdit>(command, own, a.yes ? text : text + "x", a.to.time, a.to.view);
}

inline void pasteSet(Command& command, P& own, P& other, const A& a) {
    KeyframeSelection selection;
    selection.add(other);
    if (own.parentSet())
        selection.addSet(*own.parentSet(), TimeSpan::at(a.at.time));
    const KeyframeClipboard copied(KeyframeClipboard::textOf(selection, ParameterSet()));
    ParameterSet* const set = dynamic_cast<ParameterSet*>(&own);
    if (set || own.parentSet())
        copied.appendToCommand(set ? *set : *own.parentSet(), command, a.to.time, {a.view, a.to.view});
}

inline void changeSelected(Command& command, P& own, P& other, const A& a) {
    KeyframeSelection selection;
    selection.add(own, {a.at.time.toDouble(), a.to.time.toDouble(), true, true});
    selection.add(other, a.view);
    KeyframeChange change = KeyframeChange::moved(a.number - 4., {a.value});
    if (a.kind == 4)
        change = KeyframeChange::withHandles(HandleChange::automatic());
    change.deletes = a.kind == 3;
    command.push_back(new KeyframeSelectionEdit(selection, change));
}

/// Adds and removes parameters and subsets.
inline void changeMembers(ParameterSet* set, ParameterSet* other, Command& command, P& added, const A& a) {
    if (!set)
        return;
    if (a.yes)
        command.push_back(new ParameterSetAddEdit(*set, static_cast<BasicParameter&>(added), a.number - 1));
    const std::vector<ParameterSet::Member> members = set->members();
    if (a.kind == 1 || members.empty())
        return;
    const ParameterSet::Member& member =
        members[members.size() - 1 - static_cast<std::size_t>(a.number) % members.size()];
    if (!member.set)
        return command.push_back(new ParameterSetRemoveEdit(*set, *member.parameter));
    command.push_back(new ParameterSetRemoveEdit(*set, *member.set));
    if (other && a.kind == 2)
        command.push_back(new ParameterSetAddEdit(*other, *member.set, a.number));
}

inline AnimationState allViews() {
    return AnimationState(AnimationFlags(4));
}

inline void moveSet(ParameterSet* set, const A& a, Command& c) {
    if (set)
        MoveKeyframeEdit::appendToCommand(*set, Frame(a.at), Frame(a.to), c);
}

inline void retimeSet(ParameterSet* set, const A& a, Command& c) {
    if (set)
        ParameterRetimeEdit::appendToCommand(*set, a.retiming(), c);
}

/// With the other forms, and those of sets and compounds, at the end.
inline const std::vector<Act> commands = {
    ACT(own.vAddKeyframeCommand(Context::Explicit(a.at), c)),
    ACT(own.createKeyframeDeletion(Context::Explicit(a.at), c)),
    ACT(own.vDeleteAllKeyframesCommand(a.view, c)),
    ACT(own.vSetInterpolationCommand(a.interpolation(), a.at, c)),
    ACT(own.vSetInterpolationDataCommand(c, a.shape(), {&own, a.view, a.index()})),
    ACT(add<ParameterSetValueEdit>(c, own, a.value, a.at)),
    ACT(add<ParameterSetStaticValueEdit>(c, own, a.value, a.view)),
    ACT(add<ParameterResetEdit>(c, own, a.at)),
    ACT(add<ParameterSplitViewEdit>(c, own, a.view)),
    ACT(add<ParameterDeleteViewEdit>(c, own, a.view)),
    ACT(add<ParameterRetimeEdit>(c, own, a.retiming())),
    ACT(addPaste(c, own, other, a)),
    ACT(own.vSetExtrapolationBeforeCommand(a.extrapolation(), c)),
    ACT(add<ParameterWithoutTypeHideEdit>(c, own, a.yes)),
    ACT(add<ParameterWithoutTypeLockEdit>(c, own, a.yes)),
    ACT(other.bAddConstrainedParameterCommand(&own, c)),
    ACT(own.bUnconstrainCommand(c)),
    ACT(add<MoveKeyframeEdit>(c, own, a.at, Context(a.to.time, a.view))),
    ACT(own.vSetExtrapolationAfterCommand(a.extrapolation(), c)),
    ACT(own.vAddKeyframeCommand(a.frame(), allViews(), c)),
    ACT(own.createKeyframeDeletion(a.frame(), allViews(), c)),
    ACT(other.bRemoveConstrainedParameterCommand(&own, c)),
    ACT(add<ParameterSetValueEdit>(c, own, fitting(own, a.value), a.at)),
    ACT(add<ParameterSetStaticValueEdit>(c, own, fitting(own, a.value), a.view)),
    ACT(add<ParameterAddKeyEdit>(c, own, a.at)),
    ACT(add<ParameterDeleteKeyEdit>(c, own, Context::Explicit(a.at))),
    ACT(add<ParameterInterpolationEdit>(c, own, a.interpolation(), a.at)),
    ACT(add<ParameterInterpolationDataEdit>(c, own, a.shape(), a.index(), a.view)),
    ACT(add<ParameterExtrapolationBeforeEdit>(c, own, a.extrapolation())),
    ACT(add<ParameterExtrapolationAfterEdit>(c, own, a.extrapolation())),
    ACT(c.push_back(new ParameterAddConstrainedParameterEdit(other, own))),
    ACT(add<ParameterWithoutTypeUnconstrainEdit>(c, own)),
    ACT(own.hideCommand(a.yes, c)),
    ACT(own.setLockedCommand(a.yes, c)),
    ACT(MoveKeyframeEdit::appendToCommand(own, Frame(a.at), Frame(a.to), a.view, c)),
    ACT(MoveKeyframeEdit::appendToCommand(own, Frame(a.at), Frame(a.to), c)),
    ACT(moveSet(dynamic_cast<ParameterSet*>(&own), a, c)),
    ACT(moveSet(own.parentSet(), a, c)),
    ACT(retimeSet(dynamic_cast<ParameterSet*>(&own), a, c)),
    ACT(retimeSet(own.parentSet(), a, c)),
    ACT(add<ParameterInsertKeyframeEdit>(c, own, a.at)),
    ACT(add<ParameterInsertKeyframeEdit>(c, own, Context(a.to.time, View::INVALID()))),
    ACT(add<ParameterEaseEdit>(c, own, a.span(), a.easing())),
    ACT(add<ParameterSimplifyEdit>(c, own, a.span(), a.number / 4.)),
    ACT(add<ParameterBakeEdit>(c, own, a.span(), 2 + a.number)),
    ACT(add<ParameterSmoothEdit>(c, own, a.span(), a.number, a.value / 4, 2)),
    ACT(add<ParameterReverseEdit>(c, own, a.span(), a.yes ? a.to.time : Time(Time::INVALID))),
    ACT(add<ParameterScaleValuesEdit>(c, own, a.span(), ValueScaling{a.number - 3., a.value, 1, a.kind - 3})),
    ACT(pasteSet(c, own, other, a)),
    ACT(changeSelected(c, own, other, a)),
    ACT(changeMembers(dynamic_cast<ParameterSet*>(&own), own.parentSet(), c, other, a)),
    ACT(changeMembers(own.parentSet(), other.parentSet(), c, other, a)),
    ACT(add<ParameterHandlesEdit>(c, own, Context::Explicit(a.at), HandleChange::movedOut({a.value, a.value}))),
};

inline const Act& chosen(const std::vector<Act>& rows, Choices& choose) {
    return rows[static_cast<std::size_t>(choose.below(static_cast<int>(rows.size())))];
}

/// Where acts find something to do, or views to make.
inline const A places[] = {{at(10), at(12), 5, 6, true, 2},      {at(5, 1), at(6), 2, 1, false, 3},
                           {at(4, 3), at(-2, 2), 3, 4, true, 1}, {at(6), at(7), 2, 9, false, 4},
                           {at(0), at(10), 8, 16, true, 1},      {at(10), Context(Time::LAST), 2, 9, true, 3}};

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
    static_cast<void>(stateOf(parameter));
    static_cast<void>(parameter.allKeyframes());
    static_cast<void>(parameter.extrapolationBefore() == parameter.extrapolationAfter() && parameter.numViews() > 1);
}

} // namespace Worlds
