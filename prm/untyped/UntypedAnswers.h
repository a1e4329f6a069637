#pragma once

#include "prm/Context.h"
#include "prm/Export.h"
#include "prm/KeyframeHandles.h"
#include "prm/TimeSpan.h"

#include <QString>
#include <QVariant>

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
    /// The name of the type of values.
    QString (*valueType)();
    /// The text of the static value of a view without keyframes, and the value that such a text gives.
    QString (*staticText)(const ParameterWithoutType& parameter, const View& view);
    QVariant (*readValue)(const QString& text);
    /// Of a keyframe that there is, for one component.
    KeyframeHandles (*handles)(const ParameterWithoutType& parameter, const KeyframeIndex& keyframe, int component);
};

} // namespace detail

} // namespace Prm
