#include "prm/Easing.h"
#include "prm/HandlesEdit.h"
#include "prm/ReshapingEdits.h"
#include "python/src/Bindings.h"
#include "python/src/Home.h"

#include <array>
#include <variant>

namespace PrmPython {

namespace {

using Shape = std::array<double, 4>;

Prm::KeyframeSpan keyframesIn(const Animated& self, double start, double end, const MaybeView& view) {
    Prm::KeyframeSpan span;
    span = span.between(start > -infinity ? timeOf(start) : span.first, end < infinity ? timeOf(end) : span.last);
    return view ? span.in(viewOf(self, *view)) : span;
}

template <class Edit, class... Arguments> void reshape(const Animated& self, Arguments&&... arguments) {
    Prm::ParameterWithoutType& parameter = self.owned();
    requireKeyframed(parameter);
    performUnlessRefused(parameter, std::make_unique<Edit>(parameter, std::forward<Arguments>(arguments)...));
}

template <class Curves> Curves curvesOf(const QString& name, Curves linear, Curves bezier) {
    const Prm::Interpolation kind = interpolationOf(name);
    if (kind != Prm::Interpolation::Linear && kind != Prm::Interpolation::Bezier)
        throw py::value_error("curves are \"Bezier\" or \"Linear\"");
    return kind == Prm::Interpolation::Linear ? linear : bezier;
}

void insert(const Animated& self, double at, const MaybeView& view) {
    const Prm::View where = view ? viewOf(self, *view) : Prm::View::INVALID();
    reshape<Prm::ParameterInsertKeyframeEdit>(self, Prm::Context(timeOf(at), where));
}

void simplify(const Animated& self, double error, double start, double end, const MaybeView& view,
              const QString& curves) {
    if (!(error >= 0.0))
        throw py::value_error("the error must be 0 or above");
    using Edit = Prm::ParameterSimplifyEdit;
    reshape<Edit>(self, keyframesIn(self, start, end, view), error, curvesOf(curves, Edit::Linear, Edit::Bezier));
}

void bake(const Animated& self, double step, double start, double end, const MaybeView& view, const QString& curves) {
    using Edit = Prm::ParameterBakeEdit;
    reshape<Edit>(self, keyframesIn(self, start, end, view), step, curvesOf(curves, Edit::Linear, Edit::Bezier));
}

void smooth(const Animated& self, double radius, double error, double step, double start, double end,
            const MaybeView& view) {
    reshape<Prm::ParameterSmoothEdit>(self, keyframesIn(self, start, end, view), radius, error, step);
}

void reverse(const Animated& self, std::optional<double> pivot, double start, double end, const MaybeView& view) {
    const Prm::Time around = pivot ? timeOf(*pivot) : Prm::Time(Prm::Time::INVALID);
    reshape<Prm::ParameterReverseEdit>(self, keyframesIn(self, start, end, view), around);
}

void adjust(const Animated& self, double scale, double offset, double pivot, int component, double start, double end,
            const MaybeView& view) {
    const Prm::ValueScaling scaling{scale, pivot, offset, component};
    reshape<Prm::ParameterScaleValuesEdit>(self, keyframesIn(self, start, end, view), scaling);
}

Prm::Easing easingOf(const std::variant<QString, Shape>& given) {
    if (const Shape* const shape = std::get_if<Shape>(&given))
        return Prm::Easing::ofShape({Prm::Interpolation::Bezier, (*shape)[0], (*shape)[1], (*shape)[2], (*shape)[3]});
    const QString& name = std::get<QString>(given);
    if (const Prm::Easing* const preset = Prm::Easing::find(name))
        return *preset;
    QStringList names;
    for (const Prm::Easing& preset : Prm::Easing::presets())
        names << preset.name;
    try {
        raiseMissing("easing", name, names);
    } catch (const py::error_already_set& missing) {
        raise(PyExc_ValueError, textOf(missing.value().attr("args")[py::int_(0)]));
    }
}

void ease(const Animated& self, const std::variant<QString, Shape>& easing, double start, double end,
          const MaybeView& view) {
    reshape<Prm::ParameterEaseEdit>(self, keyframesIn(self, start, end, view), easingOf(easing));
}

using MaybePoint = std::optional<std::pair<double, double>>;

MaybePoint pointOf(const std::optional<Prm::HandlePoint>& handle) {
    return handle ? MaybePoint({handle->time, handle->value}) : MaybePoint();
}

std::pair<MaybePoint, MaybePoint> handlesAt(const Animated& self, double at, const ViewName& view, int component) {
    const Prm::Context keyframe = keyframeAt(self, at, view);
    const Prm::ParameterWithoutType& parameter = self.owned();
    unsigned int index = 0;
    parameter.bNearestKeyframeIndex(keyframe, index);
    const auto handles = Prm::handles(Prm::KeyframeIndex(&parameter, keyframe.view, index), component);
    return {pointOf(handles.in), pointOf(handles.out)};
}

void setHandles(const Animated& self, double at, const MaybePoint& before, const MaybePoint& after,
                const ViewName& view, int component, bool addExtremum) {
    const Prm::Context::Explicit keyframe(keyframeAt(self, at, view));
    Prm::HandleChange change;
    if (before)
        change.in = Prm::HandlePoint{before->first, before->second};
    if (after)
        change.out = Prm::HandlePoint{after->first, after->second};
    change.component = component;
    change.addsExtremum = addExtremum;
    reshape<Prm::ParameterHandlesEdit>(self, keyframe, change);
}

void flatten(const Animated& self, double at, const ViewName& view, bool automatic) {
    const auto change = automatic ? Prm::HandleChange::automatic() : Prm::HandleChange::flat();
    reshape<Prm::ParameterHandlesEdit>(self, Prm::Context::Explicit(keyframeAt(self, at, view)), change);
}

} // namespace

void bindReshaping(py::class_<Animated, Handle>& animated) {
    const auto start = py::arg("start") = -infinity;
    const auto end = py::arg("end") = infinity;
    const auto view = py::arg("view") = py::none();
    animated.def("insert", &insert, py::arg("at"), view,
                 "Inserts a keyframe and keeps the curve, in one view or in all that have data.\n\nRaises ValueError "
                 "where that cannot be, as every edit of curves does.");
    animated.def("simplify", &simplify, py::arg("error"), start, end, view, py::arg("curves") = "Bezier",
                 "Removes keyframes as long as no value moves by more than the error.");
    animated.def("bake", &bake, py::arg("step") = 1.0, start, end, view, py::arg("curves") = "Bezier",
                 "Replaces the keyframes by one at every step, in frames, with the values that are shown.");
    animated.def("smooth", &smooth, py::arg("radius"), py::arg("error"), py::arg("step") = 1.0, start, end, view,
                 "Replaces values by means of those around them; the radius, in frames, is the standard deviation.");
    animated.def("reverse", &reverse, py::arg("pivot") = py::none(), start, end, view,
                 "Reverses time around the pivot, otherwise around the middle of the keyframes.");
    animated.def("adjust", &adjust, py::arg("scale") = 1.0, py::arg("offset") = 0.0, py::arg("pivot") = 0.0,
                 py::arg("component") = -1, start, end, view,
                 "Maps values from v to pivot + scale * (v - pivot) + offset; of a point, component 0 is x, 1 is y.");
    animated.def("ease", &ease, py::arg("easing"), start, end, view,
                 "Gives segments an easing: a name of prm.easings(), or four numbers x1, y1, x2, y2.");
    animated.def("handles", &handlesAt, py::arg("at"), py::arg("view") = ViewName(), py::arg("component") = 0,
                 "The handles before and after a keyframe as (time, value), None where there is none.\n\nRaises "
                 "ValueError if there is no keyframe, as setting them does.");
    animated.def("set_handles", &setHandles, py::arg("at"), py::arg("before") = py::none(),
                 py::arg("after") = py::none(), py::arg("view") = ViewName(), py::arg("component") = 0,
                 py::arg("add_extremum") = false,
                 "Moves the handles of a keyframe to points (time, value). add_extremum: between equal values, where a "
                 "handle that is not flat cannot be, a keyframe at the extremum is added.");
    animated.def("flatten", &flatten, py::arg("at"), py::arg("view") = ViewName(), py::arg("automatic") = false,
                 "Makes the curve flat at a keyframe; automatic: smooth, without overshoot.");
}

} // namespace PrmPython
