#pragma once

#include "prm/Context.h"
#include "prm/Export.h"
#include "prm/TimeSpan.h"

namespace Bsc {
class Hash;
}

namespace Prm {

class ParameterWithoutType;

namespace detail {

/// The questions of `prm/Answers.h` and `prm/RangeHash.h` to a `Parameter`, for a caller that does not know its type.
struct UntypedAnswers {
    /// Those of the parameter's class; null for a class without values of one type.
    PRM_EXPORT static const UntypedAnswers* of(const ParameterWithoutType& parameter);
    /// Those of `Parameter<T>`.
    template <class T> static const UntypedAnswers& ofType();

    TimeSpan (*constantAround)(const ParameterWithoutType& parameter, const Context& context);
    bool (*isConstant)(const ParameterWithoutType& parameter, View view, const TimeSpan& span);
    void (*hashRange)(Bsc::Hash& hash, const ParameterWithoutType& parameter, View view, const TimeSpan& span);
    void (*hashAt)(Bsc::Hash& hash, const ParameterWithoutType& parameter, const Context& context);
};

} // namespace detail

} // namespace Prm
