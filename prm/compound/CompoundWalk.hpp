#pragma once

// The walk over the subparameters, shared by the compound's source files.

#include "prm/CompoundParameter.h"

#include <QPointer>

#include <algorithm>
#include <limits>
#include <vector>

namespace Prm {

/// While it lives, the compound need not look at all its parts to know that only one has changed: what happens within
/// one call happens on one thread, whose steps tell.
class CompoundParameter::InWalk {
public:
    static constexpr quint64 unknown = std::numeric_limits<quint64>::max();

    explicit InWalk(const CompoundParameter& compound) : m_compound(compound), m_guard(compound.life()) {
        if (compound.m_walks++ == 0)
            compound.m_seenSteps = unknown;
    }
    ~InWalk() {
        if (m_guard.alive())
            --m_compound.m_walks;
    }
    Q_DISABLE_COPY(InWalk)

    bool isCompoundAlive() const { return m_guard.alive(); }

private:
    const CompoundParameter& m_compound;
    detail::LifeGuard m_guard;
};

/// Calls the function with every subparameter and its position. Observers may remove and destroy any of them, and the
/// compound: what is gone is passed over.
template <class Act> void CompoundParameter::forEachSubparameter(const Act& act) const {
    const InWalk walk(*this);
    const Parts listed = listedParts();
    for (std::size_t i = 0; i < listed.size() && walk.isCompoundAlive(); ++i) {
        if (listed[i] && lists(*listed[i]))
            act(*listed[i], i);
    }
}

/// For questions, which nobody is told of.
template <class Test> bool CompoundParameter::anySubparameter(const Test& test) const {
    return std::any_of(parameters().begin(), parameters().end(),
                       [&](const auto& parameter) { return test(*parameter); });
}

} // namespace Prm
