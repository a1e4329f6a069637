#pragma once

#include "prm/ParameterWithoutType.h"
#include "prm/untyped/Differences.h"

#include <memory>
#include <vector>

namespace Prm::detail {

/// What a parameter shows, its own animation or a master's, at one moment.
class ShownState {
public:
    explicit ShownState(const ParameterWithoutType& parameter);

    /// Whether the parameter certainly still shows the same.
    bool isOf(const ParameterWithoutType& parameter) const;
    /// Of two that are not the same.
    Reach differenceTo(const ShownState& now) const;
    bool hasCustomKinds() const;

    static const Differences* typeOf(const ParameterWithoutType& parameter) {
        return static_cast<const Differences*>(parameter.asTyped(typeid(Differences)));
    }
    /// The parameter that is shown instead of this one; null if that is shown itself.
    static const ParameterWithoutType* shownInstead(const ParameterWithoutType& parameter, const Differences& type);

private:
    struct Link {
        explicit Link(const ParameterWithoutType& of);
        bool isOf(const ParameterWithoutType& now) const;

        const ParameterWithoutType* parameter;
        LifeGuard guard;
        quint32 changes;
        std::unique_ptr<TracksSnapshot> snapshot;
    };

    /// Whether code of a host computes the values, from whatever it likes.
    bool m_isOpaque = false;
    /// From the parameter to the last master; only that one if it determines the values.
    std::vector<Link> m_links;
};

} // namespace Prm::detail
