// The links of a parameter to others: its master, the parameters constrained to it, and those that it listens to.

#include "prm/ParameterWithoutType.h"

#include <QDebug>

#include <algorithm>
#include <atomic>
#include <new>
#include <utility>

namespace Prm {

namespace {

/// Of the connections made to upstream parameters, whose order counts; such a parameter is marked beside its number.
std::atomic<quint64> lastConnection{0};
constexpr quint64 upstreamMark = quint64{1} << 63;

} // namespace

QList<ParameterWithoutType*> ParameterWithoutType::constrainedParameters() const {
    QList<ParameterWithoutType*> living;
    for (const auto& entry : rarities().constrainedParameters) {
        if (entry)
            living.append(entry.data());
    }
    return living;
}

bool ParameterWithoutType::listsConstrained(const ParameterWithoutType& parameter) const {
    const auto& list = rarities().constrainedParameters;
    return std::any_of(list.cbegin(), list.cend(), [&](const auto& entry) { return entry.data() == &parameter; });
}

void ParameterWithoutType::forgetConstrained(const ParameterWithoutType& parameter) {
    if (rarities().constrainedParameters.isEmpty())
        return;
    auto& list = ownRarities().constrainedParameters;
    const auto gone = [&](const auto& entry) { return !entry || entry.data() == &parameter; };
    list.erase(std::remove_if(list.begin(), list.end(), gone), list.end());
}

bool ParameterWithoutType::wouldCloseCircle(const ParameterWithoutType& parameter) const {
    const ParameterWithoutType* above = this;
    while (above && above != &parameter)
        above = above->masterParameter();
    return above != nullptr;
}

int ParameterWithoutType::placeAt(const ParameterWithoutType& master) const {
    const auto& list = master.rarities().constrainedParameters;
    const auto living = [](const auto& entry) { return !entry.isNull(); };
    const auto found = std::find_if(list.begin(), list.end(), [this](const auto& entry) { return entry == this; });
    return static_cast<int>(std::count_if(list.begin(), found, living));
}

/// All that may fail comes before the first change. A master that was read from text is no longer waited for.
void ParameterWithoutType::tieTo(ParameterWithoutType* master, int position) {
    const QPointer<ParameterWithoutType> self(this);
    QPointer<ParameterWithoutType> tied(master);
    auto* const list = master ? &master->ownRarities().constrainedParameters : nullptr;
    if (list && list->size() == list->capacity())
        list->reserve(2 * list->size() + 1);
    QPointer<ParameterWithoutType>& tie = ownRarities().master;
    setPendingMasterParameterId({});
    if (ParameterWithoutType* former = masterParameter())
        former->forgetConstrained(*this);
    if (master) {
        master->forgetConstrained(*this);
        list->insert(std::min(std::max(position, 0), list->size()), self);
    }
    tie.swap(tied);
}

bool ParameterWithoutType::bAddConstrainedParameter(ParameterWithoutType* parameter) {
    if (!parameter || listsConstrained(*parameter))
        return false;
    if (wouldCloseCircle(*parameter)) {
        qWarning() << "ParameterWithoutType::bAddConstrainedParameter():" << parameter->scriptName() << "is a master of"
                   << m_scriptName << "and cannot be constrained to it.";
        return false;
    }
    parameter->tieTo(this, rarities().constrainedParameters.size());
    return true;
}

bool ParameterWithoutType::bRemoveConstrainedParameter(ParameterWithoutType* parameter) {
    if (!parameter || !listsConstrained(*parameter))
        return false;
    const detail::LifeGuard self(*this);
    const detail::LifeGuard other(*parameter);
    const auto letGo = [&] {
        // Observers of the copy may have deleted either side or tied the parameter elsewhere.
        if (!self.alive() || !other.alive())
            return;
        if (parameter->masterParameter() == this) {
            parameter->ownRarities().master.clear();
            parameter->setPendingMasterParameterId({});
        }
        forgetConstrained(*parameter);
    };
    try {
        parameter->vCopyKeyframeDataFrom(this);
    } catch (const std::bad_alloc&) {
        throw; // nothing was copied
    } catch (...) {
        letGo(); // copied, and told of
        throw;
    }
    letGo();
    return true;
}

bool ParameterWithoutType::bUnconstrain() {
    ParameterWithoutType* master = masterParameter();
    return master && master->bRemoveConstrainedParameter(this);
}

ParameterWithoutType::UpstreamParameters ParameterWithoutType::upstreamParameters() const {
    UpstreamParameters parameters;
    for (const auto& entry : rarities().upstreamParameters)
        parameters.insert(UpstreamParameters::value_type(entry.data()));
    return parameters;
}

void ParameterWithoutType::connectNotify(const QMetaMethod&) {
    const bool isUpstream = (m_lastConnected.load(std::memory_order_relaxed) & upstreamMark) != 0;
    m_lastConnected.store(isUpstream ? ++lastConnection | upstreamMark : 1, std::memory_order_relaxed);
}

void ParameterWithoutType::connectUpstream(bool connected) {
    for (const auto& entry : rarities().upstreamParameters) {
        if (entry.data())
            connectTo(*entry.data(), connected);
    }
}

/// Connects anew to those upstream parameters that others were connected to later, which puts those first.
void ParameterWithoutType::reconnectUpstream(quint64 connection) {
    if (lastConnection == connection)
        return;
    for (const auto& entry : rarities().upstreamParameters) {
        ParameterWithoutType* const upstream = entry.data();
        if (upstream && (upstream->m_lastConnected.load() & ~upstreamMark) > connection) {
            connectTo(*upstream, false);
            connectTo(*upstream, true);
        }
    }
}

/// By object, which needs no memory. What a host has connected between the two ends as well.
void ParameterWithoutType::disconnectUpstream() noexcept {
    for (const auto& entry : rarities().upstreamParameters) {
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
    Rarities& own = ownRarities();
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
    ownRarities().upstreamParameters.erase(&upstream);
}

void ParameterWithoutType::setUpstreamParameters(const UpstreamParameters& parameters) {
    UpstreamParameters replacement = parameters;
    connectUpstream(false);
    ownRarities().upstreamParameters = std::move(replacement);
    connectUpstream(true);
    ownRarities().upstreamConnected = lastConnection;
}

} // namespace Prm
