#pragma once

// The walk over the subparameters, shared by the compound's source files.

#include "prm/CompoundParameter.h"

#include <QPointer>

#include <algorithm>

namespace Prm {

/// Calls the function with every subparameter and its position. Observers may remove and destroy any of them, and the
/// compound: those that are gone are passed over.
template <class Act> void CompoundParameter::forEachSubparameter(const Act& act) const {
    const detail::LifeGuard guard(life());
    const Parts listed = listedParts();
    for (std::size_t i = 0; i < listed.size() && guard.alive(); ++i) {
        if (listed[i] && lists(*listed[i]))
            act(*listed[i], i);
    }
}

/// For questions, which notify no observer.
template <class Test> bool CompoundParameter::anySubparameter(const Test& test) const {
    return std::any_of(parameters().begin(), parameters().end(),
                       [&](const auto& parameter) { return test(*parameter); });
}

} // namespace Prm
