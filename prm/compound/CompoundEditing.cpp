// What is done to a compound, it does to its subparameters; what happens to them, it tells.

#include "host/bsc/CompositeCommand.h"
#include "prm/AnimationState.h"
#include "prm/ParameterEdits.h"
#include "prm/compound/CompoundWalk.hpp"
#include "prm/edits/KeyframeMoves.h"

#include <algorithm>
#include <utility>

namespace Prm {

namespace {

bool mayTakeKeyframes(ParameterChange::ChangeType type) {
    switch (type) {
    case ParameterChange::KEYFRAME_ADDED:
    case ParameterChange::KEYFRAME_CHANGED_VALUE:
    case ParameterChange::KEYFRAME_CHANGED_INTERPOLATION:
    case ParameterChange::VIEW_ADDED:
        return false;
    default:
        return true;
    }
}

} // namespace

/// Keeps the subparameters from telling of their changes. Afterwards all their notifications are on.
class CompoundParameter::SwitchedOff {
public:
    explicit SwitchedOff(CompoundParameter& compound) : m_compound(compound), m_guard(compound.life()) {
        compound.subparametersNotification(false);
    }
    ~SwitchedOff() {
        if (m_guard.alive())
            m_compound.subparametersNotification(true);
    }
    Q_DISABLE_COPY(SwitchedOff)

private:
    CompoundParameter& m_compound;
    detail::LifeGuard m_guard;
};

/// Where all subparameters are being keyed. A keyframe that one gains leads back to the compound, which keys all; so
/// that each is asked only once, the inner one goes on where the outer one stands, unless keyframes may have gone
/// since.
struct CompoundParameter::Keying {
    Keying(CompoundParameter& keyed, const Context& context)
        : at(context), parts(keyed.listedParts()), outer(std::exchange(keyed.m_keying, this)), compound(keyed),
          walk(keyed) {}
    ~Keying() {
        if (walk.isCompoundAlive())
            compound.m_keying = outer;
    }
    Q_DISABLE_COPY(Keying)

    const Context at;
    const Parts parts;
    std::size_t next = 0;
    bool isDisturbed = false;
    Keying* const outer;
    CompoundParameter& compound;
    const InWalk walk;
};

CompoundParameter::Parts CompoundParameter::listedParts() const {
    Parts listed;
    listed.reserve(parameters().size());
    for (const auto& parameter : parameters())
        listed.emplace_back(parameter.get());
    return listed;
}

void CompoundParameter::membersHaveChanged() {
    m_seenSteps = InWalk::unknown;
    if (m_keying)
        m_keying->isDisturbed = true;
}

bool CompoundParameter::keyAll(const Context& context) {
    if (m_keying && !m_keying->isDisturbed && m_keying->at == context)
        return keyOn(*m_keying);
    const InWalk walk(*this);
    const quint64 revision = keyframeRevision();
    if (revision != 0 && revision == m_keyedRevision && m_keyedAt == context)
        return false;
    Keying keying(*this, context);
    const bool anyAdded = keyOn(keying);
    if (keying.walk.isCompoundAlive() && !keying.isDisturbed) {
        m_keyedAt = keying.at;
        m_keyedRevision = keyframeRevision();
    }
    return anyAdded;
}

/// What goes on from within begins with the part that is being asked: a compound may not have asked all of its own.
bool CompoundParameter::keyOn(Keying& keying) {
    bool anyAdded = false;
    std::size_t own = keying.next;
    while (own < keying.parts.size() && keying.walk.isCompoundAlive()) {
        keying.next = own;
        const auto& part = keying.parts[own];
        if (part && lists(*part))
            anyAdded = part->iAddKeyframe(keying.at) >= 0 || anyAdded;
        // What nobody told of may have taken keyframes away.
        keying.isDisturbed = keying.isDisturbed || (keying.walk.isCompoundAlive() && !isUnchangedSoFar());
        own = keying.isDisturbed ? own + 1 : std::max(own + 1, keying.next);
    }
    keying.next = own;
    return anyAdded;
}

int CompoundParameter::iAddKeyframe(const Context& context) {
    const detail::LifeGuard guard(life());
    const Context at = context;
    unsigned int position = 0;
    return keyAll(at) && guard.alive() && bNearestKeyframeIndex(at, position) ? static_cast<int>(position) : -1;
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
    forEachSubparameter([&](ParameterWithoutType& parameter, std::size_t) { parameter.vDeleteKeyframe(at); });
}

void CompoundParameter::vDeleteAllKeyframes(const View& view) {
    const View cleared = view;
    forEachSubparameter([&](ParameterWithoutType& parameter, std::size_t) { parameter.vDeleteAllKeyframes(cleared); });
}

void CompoundParameter::vReset(const Context& context) {
    const Context at = context;
    forEachSubparameter([&](ParameterWithoutType& parameter, std::size_t) { parameter.vReset(at); });
}

void CompoundParameter::adjustKeyframesTime(const boost::function<Time(Time)>& mapping) {
    const boost::function<Time(Time)> map = mapping;
    forEachSubparameter([&](ParameterWithoutType& parameter, std::size_t) { parameter.adjustKeyframesTime(map); });
}

void CompoundParameter::retimeKeyframes(const boost::function<Time(Time)>& mapping) {
    const boost::function<Time(Time)> map = mapping;
    forEachSubparameter([&](ParameterWithoutType& parameter, std::size_t) { parameter.retimeKeyframes(map); });
}

void CompoundParameter::vSetExtrapolationBefore(Extrapolation kind) {
    forEachSubparameter([=](ParameterWithoutType& parameter, std::size_t) { parameter.vSetExtrapolationBefore(kind); });
}

void CompoundParameter::vSetExtrapolationAfter(Extrapolation kind) {
    forEachSubparameter([=](ParameterWithoutType& parameter, std::size_t) { parameter.vSetExtrapolationAfter(kind); });
}

void CompoundParameter::vSetDefaultInterpolation(Interpolation kind) {
    forEachSubparameter(
        [=](ParameterWithoutType& parameter, std::size_t) { parameter.vSetDefaultInterpolation(kind); });
}

bool CompoundParameter::vSetInterpolation(Interpolation kind, const Context& context) {
    const Context at = context;
    bool anySet = false;
    forEachSubparameter([&](ParameterWithoutType& parameter, std::size_t) {
        anySet = parameter.vSetInterpolation(kind, at) || anySet;
    });
    return anySet;
}

void CompoundParameter::vSetInterpolationData(IType data, unsigned int index, const View& view) {
    if (index >= keyframeCount(view))
        return;
    const Context at = keyframeTime(index, view);
    forEachSubparameter([&](ParameterWithoutType& parameter, std::size_t) {
        unsigned int position = 0;
        const Context written = detail::writtenAt(parameter, at);
        if (parameter.bKeyframeAt(Context::Explicit(written)) && parameter.bNearestKeyframeIndex(written, position))
            parameter.vSetInterpolationData(data, position, at.view);
    });
}

void CompoundParameter::setSplittable(bool splittable) {
    forEachSubparameter([=](ParameterWithoutType& parameter, std::size_t) { parameter.setSplittable(splittable); });
}

void CompoundParameter::copyViewData(const View& from, const View& to, const ParameterWithoutType* source) {
    const auto* const other = source ? dynamic_cast<const CompoundParameter*>(source) : this;
    if (!other || other->parameters().size() != parameters().size())
        return;
    const View shown = from;
    const View taking = to;
    const QList<ParameterWithoutType*> sources = other->subparameters();
    forEachSubparameter([&](ParameterWithoutType& parameter, std::size_t i) {
        parameter.copyViewData(shown, taking, source ? sources.at(static_cast<int>(i)) : nullptr);
    });
}

void CompoundParameter::uniquifyView(const View& view) {
    const View split = view;
    forEachSubparameter([&](ParameterWithoutType& parameter, std::size_t) { parameter.uniquifyView(split); });
}

bool CompoundParameter::initialiseHeroView(const View& hero, const View& from) {
    const View taking = hero;
    const View shown = from;
    bool any = false;
    forEachSubparameter([&](ParameterWithoutType& parameter, std::size_t) {
        any = parameter.initialiseHeroView(taking, shown) || any;
    });
    return any;
}

bool CompoundParameter::deleteView(const View& view) {
    const View removed = view;
    bool any = false;
    forEachSubparameter(
        [&](ParameterWithoutType& parameter, std::size_t) { any = parameter.deleteView(removed) || any; });
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
    const InWalk answering(*this);
    if (m_keying && mayTakeKeyframes(change.type))
        m_keying->isDisturbed = true;
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
    const bool added = change.type == ParameterChange::KEYFRAME_ADDED;
    const View view = change.context.view;
    int position = -1;
    // A static value has no keyframe.
    if (change.affectedIndex != KeyframeIndex::INVALID_INDEX) {
        const detail::LifeGuard guard(life());
        const Context keyframe = change.parameter->keyframeTime(change.affectedIndex, view);
        if (added) {
            if (m_keying && !hasOnlyItChanged(placeOf(*change.parameter)))
                m_keying->isDisturbed = true;
            follow(change, keyframe);
        }
        position = positionOf(keyframe);
        if (m_keyframeTogether)
            keyAll(keyframe);
        if (!guard.alive())
            return;
    }
    if (added)
        ParameterChange::keyframeAdded(*this, position, view);
    else
        ParameterChange::keyframeChangedValue(*this, position, view);
}

void CompoundParameter::forwardRemoval(const ParameterChange& change) {
    const Context keyframe = change.context;
    follow(change, keyframe);
    const int position = positionOf(keyframe);
    if (m_keyframeTogether) {
        const SwitchedOff quiet(*this);
        vDeleteKeyframe(Context::Explicit(keyframe));
    }
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
