// Forwards edits to the subparameters and re-emits their changes.

#include "host/bsc/CompositeCommand.h"
#include "prm/AnimationState.h"
#include "prm/CompoundParameter.h"
#include "prm/ParameterEdits.h"
#include "prm/edits/KeyframeMoves.h"
#include "prm/set/SetWalk.h"

#include <QSet>

#include <algorithm>
#include <typeinfo>
#include <utility>

namespace Prm {

namespace {

using Parts = std::vector<QPointer<ParameterWithoutType>>;

/// A compound of a host's own maps the times of its parts itself.
void addMapped(const CompoundParameter& compound, Parts& mapped, QSet<const ParameterWithoutType*>& reached) {
    for (const auto& part : compound.parameters()) {
        if (reached.contains(part.get()))
            continue;
        reached.insert(part.get());
        const ParameterWithoutType& reachedNow = *part;
        if (typeid(reachedNow) == typeid(CompoundParameter))
            addMapped(dynamic_cast<const CompoundParameter&>(reachedNow), mapped, reached);
        else
            mapped.emplace_back(part.get());
    }
}

/// Whose times are mapped: each part once, however many ways lead to it.
Parts mappedParts(const CompoundParameter& compound) {
    Parts mapped;
    QSet<const ParameterWithoutType*> reached;
    addMapped(compound, mapped, reached);
    return mapped;
}

} // namespace

/// Switches the notifications of the subparameters off, and all of them on afterwards; also of those that have left.
class CompoundParameter::SwitchedOff {
public:
    explicit SwitchedOff(Parts parts) : m_parts(std::move(parts)) { switchAll(false); }
    ~SwitchedOff() { switchAll(true); }
    Q_DISABLE_COPY(SwitchedOff)

private:
    void switchAll(bool on) const {
        for (const auto& part : m_parts) {
            if (part)
                part->enableNotifications(on);
        }
    }

    const Parts m_parts;
};

CompoundParameter::Parts CompoundParameter::listedParts() const {
    Parts listed;
    listed.reserve(parameters().size());
    for (const auto& parameter : parameters())
        listed.emplace_back(parameter.get());
    return listed;
}

/// A part that gains a keyframe leads back here, by `forwardKeyframe`. So all have been asked by a pass in which none
/// gains one, and a list that changes meanwhile, which is why the parts are reached by index, leaves none out.
bool CompoundParameter::keyAll(const Context& context) {
    const detail::LifeGuard guard(life());
    bool anyAdded = false;
    for (std::size_t i = 0; guard.alive() && i < parameters().size(); ++i)
        anyAdded = parameters()[i]->iAddKeyframe(context) >= 0 || anyAdded;
    return anyAdded;
}

int CompoundParameter::iAddKeyframe(const Context& context) {
    const detail::LifeGuard guard(life());
    const Context at = context;
    return keyAll(at) && guard.alive() ? positionOf(Context(at.time, at.view)) : -1;
}

int CompoundParameter::iAddKeyframe(const Frame& frame, const AnimationState& state) {
    if (!isKeyframed())
        return 0;
    const detail::LifeGuard guard(life());
    const Time time = Time::fromUInt(frame.toUInt());
    int last = -1;
    for (const View view : state.views()) {
        const int added = guard.alive() ? iAddKeyframe(Context(time, view)) : -1;
        last = added >= 0 ? added : last;
    }
    return last;
}

void CompoundParameter::vDeleteKeyframe(const Context::Explicit& context) {
    const Context::Explicit at = context;
    PartWalk(*this).forEach([&](ParameterWithoutType& parameter) { parameter.vDeleteKeyframe(at); });
}

void CompoundParameter::vDeleteAllKeyframes(const View& view) {
    const View cleared = view;
    PartWalk(*this).forEach([&](ParameterWithoutType& parameter) { parameter.vDeleteAllKeyframes(cleared); });
}

void CompoundParameter::vReset(const Context& context) {
    const Context at = context;
    PartWalk(*this).forEach([&](ParameterWithoutType& parameter) { parameter.vReset(at); });
}

void CompoundParameter::adjustKeyframesTime(const boost::function<Time(Time)>& mapping) {
    // The mapping may destroy itself. NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
    const boost::function<Time(Time)> map = mapping;
    for (const auto& part : mappedParts(*this)) {
        if (part)
            part->adjustKeyframesTime(map);
    }
}

void CompoundParameter::retimeKeyframes(const boost::function<Time(Time)>& mapping) {
    // The mapping may destroy itself. NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
    const boost::function<Time(Time)> map = mapping;
    for (const auto& part : mappedParts(*this)) {
        if (part)
            part->retimeKeyframes(map);
    }
}

void CompoundParameter::vSetExtrapolationBefore(Extrapolation kind) {
    PartWalk(*this).forEach([=](ParameterWithoutType& parameter) { parameter.vSetExtrapolationBefore(kind); });
}

void CompoundParameter::vSetExtrapolationAfter(Extrapolation kind) {
    PartWalk(*this).forEach([=](ParameterWithoutType& parameter) { parameter.vSetExtrapolationAfter(kind); });
}

void CompoundParameter::vSetDefaultInterpolation(Interpolation kind) {
    PartWalk(*this).forEach([=](ParameterWithoutType& parameter) { parameter.vSetDefaultInterpolation(kind); });
}

bool CompoundParameter::vSetInterpolation(Interpolation kind, const Context& context) {
    const Context at = context;
    bool anySet = false;
    PartWalk(*this).forEach(
        [&](ParameterWithoutType& parameter) { anySet = parameter.vSetInterpolation(kind, at) || anySet; });
    return anySet;
}

void CompoundParameter::vSetInterpolationData(IType data, unsigned int index, const View& view) {
    if (index >= keyframeCount(view))
        return;
    const Context at = keyframeTime(index, view);
    PartWalk(*this).forEach([&](ParameterWithoutType& parameter) {
        unsigned int position = 0;
        const Context written = detail::writtenAt(parameter, at);
        if (parameter.bKeyframeAt(Context::Explicit(written)) && parameter.bNearestKeyframeIndex(written, position))
            parameter.vSetInterpolationData(data, position, at.view);
    });
}

void CompoundParameter::setSplittable(bool splittable) {
    PartWalk(*this).forEach([=](ParameterWithoutType& parameter) { parameter.setSplittable(splittable); });
}

void CompoundParameter::copyViewData(const View& from, const View& to, const ParameterWithoutType* source) {
    const auto* const other = source ? dynamic_cast<const CompoundParameter*>(source) : this;
    if (!other || other->parameters().size() != parameters().size())
        return;
    const View shown = from;
    const View taking = to;
    const Parts sources = other->listedParts();
    PartWalk(*this).forEach([&](ParameterWithoutType& parameter, std::size_t i) {
        if (sources[i])
            parameter.copyViewData(shown, taking, source ? sources[i].data() : nullptr);
    });
}

void CompoundParameter::uniquifyView(const View& view) {
    const View split = view;
    PartWalk(*this).forEach([&](ParameterWithoutType& parameter) { parameter.uniquifyView(split); });
}

bool CompoundParameter::initialiseHeroView(const View& hero, const View& from) {
    const View taking = hero;
    const View shown = from;
    bool any = false;
    PartWalk(*this).forEach(
        [&](ParameterWithoutType& parameter) { any = parameter.initialiseHeroView(taking, shown) || any; });
    return any;
}

bool CompoundParameter::deleteView(const View& view) {
    const View removed = view;
    bool any = false;
    PartWalk(*this).forEach([&](ParameterWithoutType& parameter) { any = parameter.deleteView(removed) || any; });
    return any;
}

Bsc::CompositeCommand& CompoundParameter::vSetInterpolationCommand(Interpolation kind, Context context,
                                                                   Bsc::CompositeCommand& command) {
    command.push_back(new ParameterInterpolationEdit(*this, kind, context));
    return command;
}

Bsc::CompositeCommand& CompoundParameter::vSetInterpolationDataCommand(Bsc::CompositeCommand& command, IType data,
                                                                       const KeyframeIndex& keyframe) {
    command.push_back(new ParameterInterpolationDataEdit(*this, data, keyframe.index, keyframe.view));
    return command;
}

Bsc::CompositeCommand& CompoundParameter::vSetExtrapolationBeforeCommand(Extrapolation kind,
                                                                         Bsc::CompositeCommand& command) {
    command.push_back(new ParameterExtrapolationBeforeEdit(*this, kind));
    return command;
}

Bsc::CompositeCommand& CompoundParameter::vSetExtrapolationAfterCommand(Extrapolation kind,
                                                                        Bsc::CompositeCommand& command) {
    command.push_back(new ParameterExtrapolationAfterEdit(*this, kind));
    return command;
}

Bsc::CompositeCommand& CompoundParameter::vAddKeyframeCommand(const Context::Explicit& context,
                                                              Bsc::CompositeCommand& command) {
    return ParameterAddKeyEdit::appendToCommand(*this, context, command);
}

Bsc::CompositeCommand& CompoundParameter::vAddKeyframeCommand(const Frame& frame, const AnimationState& state,
                                                              Bsc::CompositeCommand& command) {
    return ParameterAddKeyEdit::appendToCommand(*this, frame, state, command);
}

void CompoundParameter::createKeyframeDeletion(const Context::Explicit& context, Bsc::CompositeCommand& command) {
    ParameterDeleteKeyEdit::appendToCommand(*this, context, command);
}

void CompoundParameter::createKeyframeDeletion(const Frame& frame, const AnimationState& state,
                                               Bsc::CompositeCommand& command) {
    ParameterDeleteKeyEdit::appendToCommand(*this, frame, state, command);
}

Bsc::CompositeCommand& CompoundParameter::vDeleteAllKeyframesCommand(const View& view, Bsc::CompositeCommand& command) {
    command.push_back(new ParameterDeleteAllKeysEdit(*this, view));
    return command;
}

void CompoundParameter::onUpstreamParameterChanged(Prm::ParameterChange& change) {
    if (!change.parameter || !lists(*change.parameter))
        return;
    switch (change.type) {
    case ParameterChange::KEYFRAME_ADDED:
    case ParameterChange::KEYFRAME_CHANGED_VALUE:
        forwardKeyframe(change);
        break;
    case ParameterChange::KEYFRAME_REMOVED:
        forwardRemoval(change);
        break;
    case ParameterChange::VALUE_CHANGED:
        ParameterChange::valueChanged(*this, change.context.view);
        break;
    case ParameterChange::KEYFRAME_MOVED:
        forwardMove(change);
        break;
    default:
        break;
    }
}

void CompoundParameter::forwardKeyframe(const ParameterChange& change) {
    const detail::LifeGuard guard(life());
    const bool added = change.type == ParameterChange::KEYFRAME_ADDED;
    const View view = change.context.view;
    int position = -1;
    // A static value has no keyframe; another observer may have taken away the one that was announced.
    if (change.affectedIndex < change.parameter->keyframeCount(view)) {
        const Context keyframe = change.parameter->keyframeTime(change.affectedIndex, view);
        follow(keyframe);
        position = positionOf(keyframe);
        if (m_keyframeTogether)
            keyAll(keyframe);
    }
    if (!guard.alive())
        return;
    if (added)
        ParameterChange::keyframeAdded(*this, position, view);
    else
        ParameterChange::keyframeChangedValue(*this, position, view);
}

void CompoundParameter::forwardRemoval(const ParameterChange& change) {
    const detail::LifeGuard guard(life());
    const Context keyframe = change.context;
    follow(keyframe);
    const int position = positionOf(keyframe);
    if (m_keyframeTogether) {
        const SwitchedOff quiet(listedParts());
        vDeleteKeyframe(Context::Explicit(keyframe));
    }
    if (!guard.alive())
        return;
    follow(keyframe);
    ParameterChange::keyframeRemoved(*this, position, keyframe);
}

void CompoundParameter::forwardMove(const ParameterChange& change) {
    if (!change.affectedIndices || change.affectedIndices->isEmpty())
        return;
    const View view = change.context.view;
    const Context keyframe = change.parameter->keyframeTime(change.affectedIndices->first(), view);
    const auto position = static_cast<unsigned int>(positionOf(keyframe));
    QList<unsigned int> positions{position, position};
    ParameterChange::keyframeMoved(*this, positions, view);
}

} // namespace Prm
