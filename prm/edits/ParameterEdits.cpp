#include "prm/ParameterEdits.h"

#include "host/bsc/CompositeCommand.h"
#include "prm/AnimationState.h"
#include "prm/edits/KeyframeMoves.h"
#include "prm/untyped/State.h"

#include <algorithm>

namespace Prm {

ParameterEdit::ParameterEdit(BasicParameter* edited)
    : m_edited(edited), m_hadParameter(edited != nullptr), m_scriptName(edited ? edited->scriptName() : QString()) {}

ParameterEdit::~ParameterEdit() = default;

QString ParameterEdit::usageLogInfo() const {
    if (m_edited)
        return m_edited->scriptName();
    return m_hadParameter ? m_scriptName + QLatin1String(" (deleted)") : QString();
}

ParameterSnapshotEdit::ParameterSnapshotEdit(BasicParameter* edited) : ParameterEdit(edited) {}

ParameterSnapshotEdit::~ParameterSnapshotEdit() = default;

void ParameterSnapshotEdit::doIt() {
    m_former.reset();
    if (!edited() || !applies())
        return;
    m_former = takeState().changed([this] { apply(); });
}

void ParameterSnapshotEdit::undoIt() {
    if (!edited() || !m_former || !mayUndo(*m_former))
        return;
    m_former->present().changeOrPutBack([this] { m_former->putBack(); });
}

detail::Places ParameterSnapshotEdit::places() const {
    return {};
}

detail::State ParameterSnapshotEdit::takeState() const {
    return {*edited(), places()};
}

bool ParameterSnapshotEdit::mayUndo(const detail::State&) const {
    return true;
}

ParameterAddKeyEdit::ParameterAddKeyEdit(ParameterWithoutType& parameter, const Context& context)
    : ParameterSnapshotEdit(&parameter), m_context(context) {}

bool ParameterAddKeyEdit::applies() {
    return parameter()->isKeyframed() && m_context.time.isValid();
}

void ParameterAddKeyEdit::apply() {
    parameter()->iAddKeyframe(m_context);
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
    : ParameterSnapshotEdit(&parameter), m_context(context) {}

bool ParameterDeleteKeyEdit::applies() {
    return parameter()->bKeyframeAt(m_context);
}

void ParameterDeleteKeyEdit::apply() {
    parameter()->vDeleteKeyframe(m_context);
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
    : ParameterSnapshotEdit(&parameter), m_view(view) {}

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
    : ParameterSnapshotEdit(&parameter), m_kind(kind), m_context(context) {}

bool ParameterInterpolationEdit::applies() {
    return parameter()->bKeyframeAt(Context::Explicit(m_context));
}

void ParameterInterpolationEdit::apply() {
    parameter()->vSetInterpolation(m_kind, m_context);
}

detail::Places ParameterInterpolationEdit::places() const {
    return {detail::Place::at(m_context)};
}

ParameterInterpolationDataEdit::ParameterInterpolationDataEdit(ParameterWithoutType& parameter, const IType& data,
                                                               unsigned int index, const View& view)
    : ParameterSnapshotEdit(&parameter), m_data(data), m_index(index), m_view(view) {}

Context ParameterInterpolationDataEdit::keyframe() const {
    return parameter()->keyframeTime(m_index, detail::writtenAt(*parameter(), Context(Time(), m_view)).view);
}

bool ParameterInterpolationDataEdit::applies() {
    return m_index < parameter()->keyframeCount(keyframe().view);
}

void ParameterInterpolationDataEdit::apply() {
    parameter()->vSetInterpolationData(m_data, m_index, m_view);
}

detail::Places ParameterInterpolationDataEdit::places() const {
    return {detail::Place::at(keyframe())};
}

ParameterSetValueEdit::ParameterSetValueEdit(ParameterWithoutType& parameter, const QVariant& value,
                                             const Context& context)
    : ParameterSnapshotEdit(&parameter), m_value(value), m_context(context) {}

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

detail::Places ParameterSetValueEdit::places() const {
    return {detail::Place::at(written())};
}

ParameterSetStaticValueEdit::ParameterSetStaticValueEdit(BasicParameter& parameter, const QVariant& value,
                                                         const View& view)
    : ParameterSnapshotEdit(&parameter), m_value(value), m_view(view) {}

bool ParameterSetStaticValueEdit::applies() {
    return true;
}

View ParameterSetStaticValueEdit::written() const {
    return parameter() && parameter()->splittable() ? m_view : View(View::defaultViewId());
}

void ParameterSetStaticValueEdit::apply() {
    edited()->setVariantValue(m_value, Context(Time(Time::INVALID), written()));
}

detail::Places ParameterSetStaticValueEdit::places() const {
    return {detail::Place::staticValue(written())};
}

ParameterResetEdit::ParameterResetEdit(ParameterWithoutType& parameter, const Context& context)
    : ParameterSnapshotEdit(&parameter), m_context(context) {}

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
    : ParameterSnapshotEdit(&parameter), m_view(view) {}

bool ParameterSplitViewEdit::applies() {
    return parameter()->splittable();
}

void ParameterSplitViewEdit::apply() {
    parameter()->uniquifyView(m_view);
}

detail::Places ParameterSplitViewEdit::places() const {
    return {detail::Place::staticValue(m_view)};
}

ParameterDeleteViewEdit::ParameterDeleteViewEdit(ParameterWithoutType& parameter, const View& view)
    : ParameterSnapshotEdit(&parameter), m_view(view) {}

bool ParameterDeleteViewEdit::applies() {
    const std::vector<View>& views = parameter()->viewList();
    return std::find(views.begin(), views.end(), m_view) != views.end();
}

void ParameterDeleteViewEdit::apply() {
    parameter()->deleteView(m_view);
}

detail::Places ParameterDeleteViewEdit::places() const {
    return {detail::Place::whole(m_view)};
}

} // namespace Prm
