#include "prm/ParameterEdits.h"

#include "host/bsc/CompositeCommand.h"
#include "prm/AnimationState.h"
#include "prm/SerialisedKeyframe.h"
#include "prm/untyped/PartialSnapshot.h"
#include "prm/untyped/Restoring.h"
#include "prm/untyped/StateAt.h"

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
    m_snapshot.reset();
    if (!edited() || !applies())
        return;
    const detail::Snapshot former = takeSnapshot();
    detail::changeOrPutBack(*edited(), former, [&] {
        if (apply())
            m_snapshot = former;
    });
}

void ParameterSnapshotEdit::undoIt() {
    if (!edited() || !m_snapshot)
        return;
    const detail::Snapshot done = detail::presentLike(*m_snapshot, *edited());
    detail::changeOrPutBack(*edited(), done, [&] { Bsc::importState(*edited(), m_snapshot, true); });
}

std::vector<Context> ParameterSnapshotEdit::places() const {
    return {};
}

detail::Snapshot ParameterSnapshotEdit::takeSnapshot() const {
    const std::vector<Context> where = parameter() ? places() : std::vector<Context>();
    return where.empty() ? edited()->exportState() : parameter()->exportStateAround(where);
}

ParameterAddKeyEdit::ParameterAddKeyEdit(ParameterWithoutType& parameter, const Context& context)
    : ParameterSnapshotEdit(&parameter), m_context(context) {}

bool ParameterAddKeyEdit::applies() const {
    return parameter()->isKeyframed() && m_context.time.isValid();
}

bool ParameterAddKeyEdit::apply() {
    const detail::StateAt watch(*parameter(), m_context);
    parameter()->iAddKeyframe(m_context);
    return parameter() && watch.hasChanged(*parameter());
}

std::vector<Context> ParameterAddKeyEdit::places() const {
    return {m_context};
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

bool ParameterDeleteKeyEdit::applies() const {
    return parameter()->bKeyframeAt(m_context);
}

bool ParameterDeleteKeyEdit::apply() {
    parameter()->vDeleteKeyframe(m_context);
    return true;
}

std::vector<Context> ParameterDeleteKeyEdit::places() const {
    return {Context(m_context)};
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

bool ParameterDeleteAllKeysEdit::applies() const {
    return parameter()->keyframeCount(m_view) > 0;
}

bool ParameterDeleteAllKeysEdit::apply() {
    parameter()->vDeleteAllKeyframes(m_view);
    return true;
}

ParameterInterpolationEdit::ParameterInterpolationEdit(ParameterWithoutType& parameter, Interpolation kind,
                                                       const Context& context)
    : ParameterSnapshotEdit(&parameter), m_kind(kind), m_context(context) {}

bool ParameterInterpolationEdit::applies() const {
    return parameter()->bKeyframeAt(Context::Explicit(m_context));
}

bool ParameterInterpolationEdit::apply() {
    const detail::StateAt watch(*parameter(), m_context);
    parameter()->vSetInterpolation(m_kind, m_context);
    return parameter() && watch.hasChanged(*parameter());
}

std::vector<Context> ParameterInterpolationEdit::places() const {
    return {m_context};
}

ParameterInterpolationDataEdit::ParameterInterpolationDataEdit(ParameterWithoutType& parameter, const IType& data,
                                                               unsigned int index, const View& view)
    : ParameterSnapshotEdit(&parameter), m_data(data), m_index(index), m_view(view) {}

View ParameterInterpolationDataEdit::writtenView() const {
    return detail::writtenAt(*parameter(), Context(Time(), m_view)).view;
}

bool ParameterInterpolationDataEdit::applies() const {
    return m_index < parameter()->keyframeCount(writtenView());
}

bool ParameterInterpolationDataEdit::apply() {
    const detail::StateAt watch(*parameter(), parameter()->keyframeTime(m_index, writtenView()));
    parameter()->vSetInterpolationData(m_data, m_index, m_view);
    return parameter() && watch.hasChanged(*parameter());
}

std::vector<Context> ParameterInterpolationDataEdit::places() const {
    return {parameter()->keyframeTime(m_index, writtenView())};
}

ParameterSetValueEdit::ParameterSetValueEdit(ParameterWithoutType& parameter, const QVariant& value,
                                             const Context& context)
    : ParameterSnapshotEdit(&parameter), m_value(value), m_context(context) {}

bool ParameterSetValueEdit::applies() const {
    return true;
}

bool ParameterSetValueEdit::apply() {
    Context context = m_context;
    if (!parameter()->isKeyframed() || !Frame(context).isValid())
        context.time = Time(Time::INVALID);
    if (!parameter()->splittable())
        context.view = View(View::defaultViewId());
    const detail::StateAt watch(*parameter(), context);
    parameter()->setVariantValue(m_value, context);
    return parameter() && watch.hasChanged(*parameter());
}

std::vector<Context> ParameterSetValueEdit::places() const {
    return {m_context};
}

ParameterSetStaticValueEdit::ParameterSetStaticValueEdit(BasicParameter& parameter, const QVariant& value,
                                                         const View& view)
    : ParameterSnapshotEdit(&parameter), m_value(value), m_view(view) {}

bool ParameterSetStaticValueEdit::applies() const {
    return true;
}

bool ParameterSetStaticValueEdit::apply() {
    Context context(Time(Time::INVALID), m_view);
    if (!parameter() || !parameter()->splittable())
        context.view = View(View::defaultViewId());
    const detail::StateAt watch(*edited(), context);
    edited()->setVariantValue(m_value, context);
    return edited() && watch.hasChanged(*edited());
}

std::vector<Context> ParameterSetStaticValueEdit::places() const {
    return {Context(Time(Time::INVALID), m_view)};
}

ParameterResetEdit::ParameterResetEdit(ParameterWithoutType& parameter, const Context& context)
    : ParameterSnapshotEdit(&parameter), m_context(context) {}

bool ParameterResetEdit::applies() const {
    return true;
}

bool ParameterResetEdit::apply() {
    const detail::StateAt watch(*parameter(), m_context);
    parameter()->vReset(m_context);
    return parameter() && watch.hasChanged(*parameter());
}

std::vector<Context> ParameterResetEdit::places() const {
    return {m_context};
}

ParameterSplitViewEdit::ParameterSplitViewEdit(ParameterWithoutType& parameter, const View& view)
    : ParameterSnapshotEdit(&parameter), m_view(view) {}

bool ParameterSplitViewEdit::applies() const {
    return parameter()->splittable();
}

bool ParameterSplitViewEdit::apply() {
    const std::vector<View> views = detail::viewsWithData(*parameter());
    parameter()->uniquifyView(m_view);
    return parameter() && detail::viewsWithData(*parameter()) != views;
}

ParameterDeleteViewEdit::ParameterDeleteViewEdit(ParameterWithoutType& parameter, const View& view)
    : ParameterSnapshotEdit(&parameter), m_view(view) {}

bool ParameterDeleteViewEdit::applies() const {
    const std::vector<View>& views = parameter()->viewList();
    return std::find(views.begin(), views.end(), m_view) != views.end();
}

bool ParameterDeleteViewEdit::apply() {
    return parameter()->deleteView(m_view);
}

} // namespace Prm
