#pragma once

// The walk over the subparameters, shared by the compound's source files.

#include "prm/CompoundParameter.h"

#include <QPointer>

#include <algorithm>
#include <vector>

namespace Prm {

/// Calls the function with every subparameter and its position. Observers may remove and destroy any of them, and the
/// compound: what is gone is passed over.
template <class Act> void CompoundParameter::forEachSubparameter(const Act& act) const {
    const detail::LifeGuard guard(life());
    std::vector<QPointer<ParameterWithoutType>> listed;
    listed.reserve(parameters().size());
    for (const auto& parameter : parameters())
        listed.emplace_back(parameter.get());
    for (std::size_t i = 0; i < listed.size() && guard.alive(); ++i) {
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
