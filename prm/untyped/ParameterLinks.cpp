// The links of a parameter to others: its master, the parameters constrained to it, and its upstream parameters.

#include "prm/ParameterWithoutType.h"
#include "prm/untyped/Masters.h"

#include <QDebug>

#include <algorithm>
#include <atomic>
#include <new>
#include <utility>

namespace Prm {

namespace {

/// Of the connections made to upstream parameters, whose order counts; such a parameter is marked beside its number.
std::atomic<quint64> lastConnection{0};
thread_local int masterScopes = 0;
constexpr quint64 upstreamMark = quint64{1} << 63;

} // namespace

std::atomic<quint64> detail::masterChanges{0};

detail::MasterScope::MasterScope() {
    ++masterScopes;
}

detail::MasterScope::~MasterScope() {
    --masterScopes;
}

bool detail::MasterScope::isDeep() {
    constexpr int deep = 100;
    return masterScopes > deep;
}

QList<ParameterWithoutType*> ParameterWithoutType::constrainedParameters() const {
    QList<ParameterWithoutType*> list;
    for (ParameterWithoutType* one = extraData().firstConstrained; one; one = one->nextConstrained())
        list.append(one);
    return list;
}

/// Goes up from here and down from the parameter, in step, so that it costs the shorter of the two ways: tying n
/// parameters in any order takes n log n steps.
bool ParameterWithoutType::wouldCloseCircle(const ParameterWithoutType& parameter) const {
    const ParameterWithoutType* above = this;
    const ParameterWithoutType* below = &parameter;
    while (above && below) {
        if (above == &parameter || below == this)
            return true;
        above = above->masterParameter();
        below = below->nextBelow(parameter);
    }
    return false;
}

/// The next one of all that show this parameter, directly or not; null after the last one that shows `top`.
const ParameterWithoutType* ParameterWithoutType::nextBelow(const ParameterWithoutType& top) const {
    if (const ParameterWithoutType* const first = extraData().firstConstrained)
        return first;
    const ParameterWithoutType* below = this;
    while (below != &top && !below->nextConstrained())
        below = below->masterParameter();
    return below == &top ? nullptr : below->nextConstrained();
}

void ParameterWithoutType::enlist(ParameterWithoutType& master, ParameterWithoutType* before) {
    detail::ExtraData& own = ownExtraData();
    detail::ExtraData& list = master.ownExtraData();
    own.nextConstrained = before;
    own.previousConstrained = before ? before->extraData().previousConstrained : list.lastConstrained;
    (own.previousConstrained ? own.previousConstrained->ownExtraData().nextConstrained : list.firstConstrained) = this;
    (before ? before->ownExtraData().previousConstrained : list.lastConstrained) = this;
}

void ParameterWithoutType::delist() {
    ParameterWithoutType* const master = masterParameter();
    if (!master)
        return;
    detail::ExtraData& own = ownExtraData();
    detail::ExtraData& list = master->ownExtraData();
    ParameterWithoutType* const previous = std::exchange(own.previousConstrained, nullptr);
    ParameterWithoutType* const next = std::exchange(own.nextConstrained, nullptr);
    (previous ? previous->ownExtraData().nextConstrained : list.firstConstrained) = next;
    (next ? next->ownExtraData().previousConstrained : list.lastConstrained) = previous;
}

/// A master that was read from text is no longer waited for.
void ParameterWithoutType::tieTo(ParameterWithoutType* master, ParameterWithoutType* before) {
    linkTo(master, before);
    setPendingMasterParameterId({});
}

/// All that may fail comes before the first change. Threads that evaluate see the former master or this one.
void ParameterWithoutType::linkTo(ParameterWithoutType* master, ParameterWithoutType* before) {
    detail::ExtraData& own = ownExtraData();
    if (master)
        master->ownExtraData();
    delist();
    if (master)
        enlist(*master, before && before != this && before->masterParameter() == master ? before : nullptr);
    own.master.store(master);
    own.tied = ++m_changes;
    ++detail::masterChanges;
}

/// For a parameter that is being deleted.
void ParameterWithoutType::dropLinks() {
    while (ParameterWithoutType* const constrained = extraData().firstConstrained)
        constrained->linkTo(nullptr, nullptr);
    if (masterParameter())
        linkTo(nullptr, nullptr);
}

bool ParameterWithoutType::bAddConstrainedParameter(ParameterWithoutType* parameter) {
    if (!parameter || parameter->masterParameter() == this)
        return false;
    if (wouldCloseCircle(*parameter)) {
        qWarning() << "ParameterWithoutType::bAddConstrainedParameter():" << parameter->scriptName() << "is a master of"
                   << m_scriptName << "and cannot be constrained to it.";
        return false;
    }
    parameter->tieTo(this, nullptr);
    return true;
}

bool ParameterWithoutType::bRemoveConstrainedParameter(ParameterWithoutType* parameter) {
    if (!parameter || parameter->masterParameter() != this)
        return false;
    const detail::LifeGuard self(*this);
    const detail::LifeGuard other(*parameter);
    const auto release = [&] {
        // Observers of the copy may have deleted either side or tied the parameter elsewhere.
        if (self.alive() && other.alive() && parameter->masterParameter() == this)
            parameter->tieTo(nullptr, nullptr);
    };
    try {
        parameter->vCopyKeyframeDataFrom(this);
    } catch (const std::bad_alloc&) {
        throw; // nothing was copied
    } catch (...) {
        release(); // copied and announced
        throw;
    }
    release();
    return true;
}

bool ParameterWithoutType::bUnconstrain() {
    ParameterWithoutType* master = masterParameter();
    return master && master->bRemoveConstrainedParameter(this);
}

ParameterWithoutType::UpstreamParameters ParameterWithoutType::upstreamParameters() const {
    UpstreamParameters parameters;
    for (const auto& entry : extraData().upstreamParameters)
        parameters.insert(UpstreamParameters::value_type(entry.data()));
    return parameters;
}

void ParameterWithoutType::connectNotify(const QMetaMethod&) {
    const bool isUpstream = (m_lastConnected.load(std::memory_order_relaxed) & upstreamMark) != 0;
    m_lastConnected.store(isUpstream ? ++lastConnection | upstreamMark : 1, std::memory_order_relaxed);
}

void ParameterWithoutType::connectUpstream(bool connected) {
    for (const auto& entry : extraData().upstreamParameters) {
        if (entry.data())
            connectTo(*entry.data(), connected);
    }
}

/// Connects anew to those upstream parameters that others were connected to later, which puts those first.
void ParameterWithoutType::reconnectUpstream(quint64 connection) {
    if (lastConnection == connection)
        return;
    for (const auto& entry : extraData().upstreamParameters) {
        ParameterWithoutType* const upstream = entry.data();
        if (upstream && (upstream->m_lastConnected.load() & ~upstreamMark) > connection) {
            connectTo(*upstream, false);
            connectTo(*upstream, true);
        }
    }
}

/// By object, which needs no memory. What a host has connected between the two ends as well.
void ParameterWithoutType::disconnectUpstream() noexcept {
    for (const auto& entry : extraData().upstreamParameters) {
        if (entry.data())
            disconnect(entry.data(), nullptr, this, nullptr);
    }
}

void ParameterWithoutType::connectTo(ParameterWithoutType& upstream, bool connected) {
    if (connected) {
        upstream.m_lastConnected.store(upstream.m_lastConnected.load() | upstreamMark);
        connect(&upstream, SIGNAL(changed(Prm::ParameterChange&)), this,
                SLOT(onUpstreamParameterChanged(Prm::ParameterChange&)));
    } else {
        disconnect(&upstream, SIGNAL(changed(Prm::ParameterChange&)), this,
                   SLOT(onUpstreamParameterChanged(Prm::ParameterChange&)));
    }
}

bool ParameterWithoutType::addUpstreamParameter(ParameterWithoutType& upstream) {
    detail::ExtraData& own = ownExtraData();
    if (own.upstreamParameters.contains(&upstream))
        return false;
    // As `setUpstreamParameters` would: observers of one parameter are notified in the order of connection.
    reconnectUpstream(own.upstreamConnected);
    own.upstreamParameters.insert(&upstream);
    connectTo(upstream, true);
    own.upstreamConnected = lastConnection;
    return true;
}

void ParameterWithoutType::removeUpstreamParameter(ParameterWithoutType& upstream) {
    connectTo(upstream, false);
    ownExtraData().upstreamParameters.erase(&upstream);
}

void ParameterWithoutType::setUpstreamParameters(const UpstreamParameters& parameters) {
    UpstreamParameters replacement = parameters;
    connectUpstream(false);
    ownExtraData().upstreamParameters = std::move(replacement);
    connectUpstream(true);
    ownExtraData().upstreamConnected = lastConnection;
}

} // namespace Prm
