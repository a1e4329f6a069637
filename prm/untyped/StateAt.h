#pragma once

#include "prm/Context.h"
#include "prm/ParameterWithoutType.h"

#include <QVariant>
#include <boost/shared_ptr.hpp>

#include <vector>

namespace Prm {
class SerialisedKeyframe;
}

namespace Prm::detail {

/// What a parameter holds in one place, as far as an edit of that place can change it.
class StateAt {
public:
    StateAt(const BasicParameter& parameter, const Context& context);

    /// Whether the parameter holds something else there now. True as well where that cannot be known.
    bool hasChanged(const BasicParameter& parameter) const;

private:
    Context m_context;
    /// Of a compound instead of all that follows: each part writes where its own views say.
    std::vector<StateAt> m_parts;
    std::vector<View> m_views;
    boost::shared_ptr<SerialisedKeyframe> m_keyframe;
    QVariant m_value;
};

/// Where an edit in the context writes: a parameter that is not splittable has one place for all views.
Context writtenAt(const BasicParameter& parameter, const Context& context);

/// The views in which a parameter has data; of a compound those of each part, one list behind the other.
std::vector<View> viewsWithData(const ParameterWithoutType& parameter);

/// Exactly the same, also where the comparison of variants is fuzzy.
bool sameVariants(const QVariant& a, const QVariant& b);

/// Whether both are none, or one like the other.
bool sameKeyframes(const SerialisedKeyframe* a, const SerialisedKeyframe* b);

} // namespace Prm::detail
