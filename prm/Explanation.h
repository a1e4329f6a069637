#pragma once

#include "prm/Context.h"
#include "prm/Export.h"
#include "prm/Interpolation.h"
#include "prm/KeyframeData.h"

#include <QPointer>
#include <QString>
#include <QVariant>

#include <functional>
#include <optional>
#include <vector>

namespace Prm {

class BasicParameter;

/// Why a parameter has its value: the steps from the question to the value. `explain` makes it.
///
/// \snippet explaining.cpp explain
/// \threads A plain value. It refers to parameters, whose names `toString` reads: on the owning thread.
struct PRM_EXPORT Explanation {
    /// What happened in a step. A step that only leads on to others has the value that they lead to.
    enum Kind {
        Master,              ///< tied to `parameter`, whose steps follow
        MasterOfAnotherType, ///< tied to `parameter`, without effect: its values are of another type
        OwnView,             ///< `view` is read, which is one of several views with data
        SharedView,          ///< not splittable: `view` is read instead
        SourceView,          ///< the view has no data: `view`, which has the source data, is read instead
        NearestView,         ///< the view has no data: `view`, the nearest one with data, is read instead
        Blend,               ///< the view has no data: the values of `sources` are added by weight
        Default,             ///< no view has data: the default value
        NotKeyframed,        ///< the static value of `view`; the parameter is not keyframed
        NoKeyframes,         ///< the static value of `view`, which has no keyframes
        AtKeyframe,          ///< the value of the keyframe `from`
        Between,             ///< a part of the way between `from` and `to`
        Before,              ///< before the first keyframe, `from`
        After,               ///< after the last keyframe, `to`
        Hook,                ///< computed by the parameter's class; `from` and `to` are the keyframes around the time
        Parts,               ///< a compound: the values of `parts`
        Unanimated           ///< a parameter that has one value for all times and views
    };

    /// The value converted as `ValueType<T>` does.
    using Keyframe = KeyframeData<QVariant>;
    struct Source;
    struct Step;
    /// How a parameter is called.
    using Naming = std::function<QString(const BasicParameter& parameter)>;

    /// A few lines of plain text for a user: what was asked and the value, then a line for each step. Parameters are
    /// called as `naming` says, otherwise by their paths: the name prefix, a dot, and the script name.
    QString toString(const Naming& naming = {}) const;
    /// The value, or another one of its type, as project text has it; the values of a compound in parentheses.
    QString valueText(const QVariant& of) const;

    /// Null after the parameter was deleted.
    QPointer<const BasicParameter> parameter;
    Context context;
    QVariant value;
    std::vector<Step> steps;
    /// Writes a value of the parameter's type as text; null for values that `QVariant` converts.
    QString (*writer)(const QVariant& value) = nullptr;
};

/// One step, with the data that its kind names; other members keep their initial values.
struct Explanation::Step {
    Kind kind = Hook;
    /// The value after this step.
    QVariant value;
    /// Null after the parameter was deleted.
    QPointer<const BasicParameter> parameter;
    View view = View::INVALID();
    /// The keyframes that the kind names. `Before` has the second one in `to`, and `After` the last but one in `from`,
    /// if there is one; `Hook` has none outside the keyframes, or if the whole value is the class's own.
    std::optional<Keyframe> from;
    std::optional<Keyframe> to;
    /// `Between`: the fraction of the segment's time that has passed, and of its change that is reached. From 1 of the
    /// time on, the value is that of `to`; at 0 that of `from`, as in a Constant segment and for types that do not
    /// blend.
    double timePart = 0.0;
    double changePart = 0.0;
    /// `Before` and `After`: how values continue. Linear: the slope at that end of the segment from `from` to `to`, in
    /// units of the straight line between them; 0 if the value is held. Custom: the time whose value is shown, with
    /// which the next step deals; invalid if the value is held.
    Extrapolation extrapolation = Extrapolation::Constant;
    double slope = 0.0;
    Time shown = Time(Time::INVALID);
    /// A custom kind without a registered function: a straight line in `Between`, held in `Before` and `After`.
    bool lacksFunction = false;
    std::vector<Source> sources;
    std::vector<Explanation> parts;
};

/// One of the views that are blended: its steps, the value that they lead to, and how much that counts.
struct Explanation::Source {
    View view;
    double weight = 0.0;
    QVariant value;
    std::vector<Step> steps;
};

/// Evaluates the parameter and notes each step. The value is what `value(context)` returns; of a compound, the list of
/// the values of its parts; of other parameters, what `variantValue` returns. Throws what hooks throw.
///
/// \threads Safe where `value` is: for a `Parameter` on any thread, during edits of the owning thread. The steps are
/// those of one evaluation, as `value` does it, on a copy of the data of each view that is read. For a compound the
/// same, while no subparameter is added or deleted. For other parameters on the owning thread.
PRM_EXPORT Explanation explain(const BasicParameter& parameter, const Context& context);

} // namespace Prm
