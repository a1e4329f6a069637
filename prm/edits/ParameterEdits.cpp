#include "prm/ParameterEdits.h"

#include "host/bsc/CompositeCommand.h"
#include "prm/AnimationState.h"
#include "prm/edits/KeyframeMoves.h"

#include <algorithm>

namespace Prm {

namespace {

/// Of a parameter, or of the parts of a compound.
template <class Test> bool anyOwner(ParameterWithoutType* parameter, const Test& test) {
    const detail::Owners owners = parameter ? detail::ownersOf(*parameter) : detail::Owners();
    return std::any_of(owners.begin(), owners.end(), [&](const auto& owner) { return test(*owner); });
}

bool lists(const ParameterWithoutType& parameter, const View& view) {
    const std::vector<View>& views = parameter.viewList();
    return std::find(views.begin(), views.end(), view) != views.end();
}

} // namespace

ParameterAddKeyEdit::ParameterAddKeyEdit(ParameterWithoutType& parameter, const Context& context)
    : ParameterSnapshotEdit(&parameter, {"Add %n keyframe of %p", "Add %n keyframes of %p"}), m_context(context) {}

bool ParameterAddKeyEdit::applies() {
    return parameter()->isKeyframed() && m_context.time.isValid();
}

void ParameterAddKeyEdit::apply() {
    parameter()->iAddKeyframe(m_context);
}

int ParameterAddKeyEdit::countNow() const {
    const Context::Explicit at(m_context);
    return anyOwner(parameter(), [&](const auto& owner) { return !owner.bKeyframeAt(at); }) ? 1 : 0;
}

detail::Places ParameterAddKeyEdit::places() const {
    return {detail::Place::at(m_context)};
}

Bsc::CompositeCommand& ParameterAddKeyEdit::appendToCommand(ParameterWithoutType& parameter,
                                                            const Context::Explicit& context,
                                                            Bsc::CompositeCommand& command) {
    command.push_back(new ParameterAddKeyEdit(parameter, context));
    return command;
}

Bsc::CompositeCommand& ParameterAddKeyEdit::appendToCommand(ParameterWithoutType& parameter, const Frame& frame,
                                                            const AnimationState& state,
                                                            Bsc::CompositeCommand& command) {
    for (const View view : state.views())
        appendToCommand(parameter, Context::Explicit(Time::fromUInt(frame.toUInt()), view), command);
    return command;
}

ParameterDeleteKeyEdit::ParameterDeleteKeyEdit(ParameterWithoutType& parameter, const Context::Explicit& context)
    : ParameterSnapshotEdit(&parameter, {"Delete %n keyframe of %p", "Delete %n keyframes of %p"}), m_context(context) {
}

bool ParameterDeleteKeyEdit::applies() {
    return parameter()->bKeyframeAt(m_context);
}

void ParameterDeleteKeyEdit::apply() {
    parameter()->vDeleteKeyframe(m_context);
}

int ParameterDeleteKeyEdit::countNow() const {
    return parameter() && parameter()->bKeyframeAt(m_context) ? 1 : 0;
}

detail::Places ParameterDeleteKeyEdit::places() const {
    return {detail::Place::at(m_context)};
}

Bsc::CompositeCommand& ParameterDeleteKeyEdit::appendToCommand(ParameterWithoutType& parameter,
                                                               const Context::Explicit& context,
                                                               Bsc::CompositeCommand& command) {
    command.push_back(new ParameterDeleteKeyEdit(parameter, context));
    return command;
}

Bsc::CompositeCommand& ParameterDeleteKeyEdit::appendToCommand(ParameterWithoutType& parameter, const Frame& frame,
                                                               const AnimationState& state,
                                                               Bsc::CompositeCommand& command) {
    for (const View view : state.views())
        appendToCommand(parameter, Context::Explicit(Time::fromUInt(frame.toUInt()), view), command);
    return command;
}

ParameterDeleteAllKeysEdit::ParameterDeleteAllKeysEdit(ParameterWithoutType& parameter, const View& view)
    : ParameterSnapshotEdit(&parameter, {"Delete all keyframes of %p", "Delete all keyframes of %p"}), m_view(view) {}

bool ParameterDeleteAllKeysEdit::applies() {
    return parameter()->keyframeCount(m_view) > 0;
}

void ParameterDeleteAllKeysEdit::apply() {
    parameter()->vDeleteAllKeyframes(m_view);
}

detail::Places ParameterDeleteAllKeysEdit::places() const {
    return {detail::Place::whole(m_view)};
}

ParameterInterpolationEdit::ParameterInterpolationEdit(ParameterWithoutType& parameter, Interpolation kind,
                                                       const Context& context)
    : ParameterSnapshotEdit(
          &parameter, {"Change interpolation of %n keyframe of %p", "Change interpolation of %n keyframes of %p"}),
      m_kind(kind), m_context(context) {}

bool ParameterInterpolationEdit::applies() {
    return parameter()->bKeyframeAt(Context::Explicit(m_context));
}

void ParameterInterpolationEdit::apply() {
    parameter()->vSetInterpolation(m_kind, m_context);
}

int ParameterInterpolationEdit::countNow() const {
    return parameter() && parameter()->bKeyframeAt(Context::Explicit(m_context)) ? 1 : 0;
}

detail::Places ParameterInterpolationEdit::places() const {
    return {detail::Place::at(m_context)};
}

ParameterInterpolationDataEdit::ParameterInterpolationDataEdit(ParameterWithoutType& parameter, const IType& data,
                                                               unsigned int index, const View& view)
    : ParameterSnapshotEdit(
          &parameter, {"Change interpolation of %n keyframe of %p", "Change interpolation of %n keyframes of %p"}),
      m_data(data), m_index(index), m_view(view) {}

Context ParameterInterpolationDataEdit::keyframe() const {
    return parameter()->keyframeTime(m_index, detail::writtenAt(*parameter(), Context(Time(), m_view)).view);
}

bool ParameterInterpolationDataEdit::applies() {
    return m_index < parameter()->keyframeCount(keyframe().view);
}

void ParameterInterpolationDataEdit::apply() {
    parameter()->vSetInterpolationData(m_data, m_index, m_view);
}

bool ParameterInterpolationDataEdit::isReplacedBy(const ParameterSnapshotEdit& next) const {
    const auto& later = static_cast<const ParameterInterpolationDataEdit&>(next);
    return m_index == later.m_index && m_view == later.m_view;
}

void ParameterInterpolationDataEdit::takeWanted(ParameterSnapshotEdit& next) {
    m_data = static_cast<ParameterInterpolationDataEdit&>(next).m_data;
}

detail::Places ParameterInterpolationDataEdit::places() const {
    return {detail::Place::at(keyframe())};
}

ParameterSetValueEdit::ParameterSetValueEdit(ParameterWithoutType& parameter, const QVariant& value,
                                             const Context& context)
    : ParameterSnapshotEdit(&parameter, {"Set value of %p", "Set %n values of %p"}), m_value(value),
      m_context(context) {}

bool ParameterSetValueEdit::applies() {
    return true;
}

Context ParameterSetValueEdit::written() const {
    Context context = m_context;
    if (!parameter()->isKeyframed() || !Frame(context).isValid())
        context.time = Time(Time::INVALID);
    if (!parameter()->splittable())
        context.view = View(View::defaultViewId());
    return context;
}

void ParameterSetValueEdit::apply() {
    parameter()->setVariantValue(m_value, written());
}

bool ParameterSetValueEdit::isReplacedBy(const ParameterSnapshotEdit& next) const {
    const auto& later = static_cast<const ParameterSetValueEdit&>(next);
    return m_context == later.m_context;
}

void ParameterSetValueEdit::takeWanted(ParameterSnapshotEdit& next) {
    m_value.swap(static_cast<ParameterSetValueEdit&>(next).m_value);
}

detail::Places ParameterSetValueEdit::places() const {
    return {detail::Place::at(written())};
}

ParameterSetStaticValueEdit::ParameterSetStaticValueEdit(BasicParameter& parameter, const QVariant& value,
                                                         const View& view)
    : ParameterSnapshotEdit(&parameter, {"Set static value of %p", "Set %n static values of %p"}), m_value(value),
      m_view(view) {}

bool ParameterSetStaticValueEdit::applies() {
    return true;
}

View ParameterSetStaticValueEdit::written() const {
    return parameter() && parameter()->splittable() ? m_view : View(View::defaultViewId());
}

void ParameterSetStaticValueEdit::apply() {
    edited()->setVariantValue(m_value, Context(Time(Time::INVALID), written()));
}

bool ParameterSetStaticValueEdit::isReplacedBy(const ParameterSnapshotEdit& next) const {
    const auto& later = static_cast<const ParameterSetStaticValueEdit&>(next);
    return m_view == later.m_view;
}

void ParameterSetStaticValueEdit::takeWanted(ParameterSnapshotEdit& next) {
    m_value.swap(static_cast<ParameterSetStaticValueEdit&>(next).m_value);
}

detail::Places ParameterSetStaticValueEdit::places() const {
    return {detail::Place::staticValue(written())};
}

ParameterResetEdit::ParameterResetEdit(ParameterWithoutType& parameter, const Context& context)
    : ParameterSnapshotEdit(&parameter, {"Reset %p", "Reset %p"}), m_context(context) {}

bool ParameterResetEdit::applies() {
    return true;
}

void ParameterResetEdit::apply() {
    parameter()->vReset(m_context);
}

detail::Places ParameterResetEdit::places() const {
    return {detail::Place::at(m_context)};
}

ParameterSplitViewEdit::ParameterSplitViewEdit(ParameterWithoutType& parameter, const View& view)
    : ParameterSnapshotEdit(&parameter, {"Split %n view of %p", "Split %n views of %p"}), m_view(view) {}

bool ParameterSplitViewEdit::applies() {
    return parameter()->splittable();
}

void ParameterSplitViewEdit::apply() {
    parameter()->uniquifyView(m_view);
}

int ParameterSplitViewEdit::countNow() const {
    const auto isSplit = [this](const auto& owner) { return owner.splittable() && !lists(owner, m_view); };
    return anyOwner(parameter(), isSplit) ? 1 : 0;
}

/// The data of the new view are a copy.
bool ParameterSplitViewEdit::dependsOnValues() const {
    return hasChanged();
}

bool ParameterSplitViewEdit::isReplacedBy(const ParameterSnapshotEdit& next) const {
    const auto& later = static_cast<const ParameterSplitViewEdit&>(next);
    return m_view == later.m_view && !later.hasChanged();
}

detail::Places ParameterSplitViewEdit::places() const {
    return {detail::Place::staticValue(m_view)};
}

ParameterDeleteViewEdit::ParameterDeleteViewEdit(ParameterWithoutType& parameter, const View& view)
    : ParameterSnapshotEdit(&parameter, {"Delete %n view of %p", "Delete %n views of %p"}), m_view(view) {}

bool ParameterDeleteViewEdit::applies() {
    return lists(*parameter(), m_view);
}

void ParameterDeleteViewEdit::apply() {
    parameter()->deleteView(m_view);
}

int ParameterDeleteViewEdit::countNow() const {
    return parameter() && parameter()->numViews() > 1 && lists(*parameter(), m_view) ? 1 : 0;
}

detail::Places ParameterDeleteViewEdit::places() const {
    return {detail::Place::whole(m_view)};
}

} // namespace Prm
