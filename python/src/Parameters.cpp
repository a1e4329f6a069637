#include "prm/ParameterEdits.h"
#include "python/src/Bindings.h"
#include "python/src/Home.h"
#include "python/src/Kind.h"

#include <boost/make_shared.hpp>

#include <functional>

namespace PrmPython {

namespace {

py::str represent(const Handle& self) {
    const Prm::BasicParameter* const parameter = self.object.data();
    return parameter ? py::str(toPython(titleOf(*parameter))) : py::str("deleted");
}

py::object valueOf(const Handle& self, double time, const ViewName& view) {
    Prm::BasicParameter& parameter = self.alive();
    const Prm::Context at(timeOf(time), viewOf(self, view));
    if (!dynamic_cast<const Prm::CompoundParameter*>(&parameter) &&
        dynamic_cast<const Prm::ParameterWithoutType*>(&parameter) == nullptr)
        return toPython(self.owned().variantValue(at));
    return toPython(parameter.variantValue(at));
}

void setStatic(const Handle& self, py::handle value) {
    const QVariant variant = variantFor(self.owned(), value);
    // Converting runs code of Python's, which may have deleted the parameter.
    Prm::BasicParameter& parameter = self.owned();
    perform<Prm::ParameterSetStaticValueEdit>(parameter, parameter, variant);
}

py::array timesIn(const Animated& self, const ViewName& name) {
    const Prm::ParameterWithoutType& parameter = self.owned();
    const Prm::View view = viewOf(self, name);
    const unsigned int count = parameter.keyframeCount(view);
    py::array_t<double> times(static_cast<py::ssize_t>(count));
    for (unsigned int i = 0; i < count; ++i)
        times.mutable_data()[i] = parameter.keyframeTime(i, view).time.toDouble();
    return std::move(times);
}

std::optional<double> neighbour(const Animated& self, double time, const ViewName& view,
                                bool (Prm::ParameterWithoutType::*find)(const Prm::Context&, Prm::Context&) const) {
    Prm::Context found;
    if (!(self.owned().*find)(Prm::Context(timeOf(time), viewOf(self, view)), found))
        return {};
    return found.time.toDouble();
}

std::vector<quint32> viewsOf(const Animated& self) {
    std::vector<quint32> ids;
    for (const Prm::View view : self.owned().viewList())
        ids.push_back(view.id());
    return ids;
}

py::object masterOf(const Animated& self) {
    Prm::ParameterWithoutType* const master = self.owned().masterParameter();
    return master ? wrap(self.keeper, *master) : py::none();
}

void setMaster(const Animated& self, const std::optional<Animated>& master) {
    Prm::ParameterWithoutType& parameter = self.owned();
    if (!master) {
        perform<Prm::ParameterWithoutTypeUnconstrainEdit>(parameter, parameter);
        return;
    }
    Prm::ParameterWithoutType& wanted = master->owned();
    if (homeOf(wanted) != homeOf(parameter))
        throw py::value_error("a master is of the same project");
    perform<Prm::ParameterAddConstrainedParameterEdit>(parameter, wanted, parameter);
    if (parameter.masterParameter() != &wanted)
        raise(PyExc_ValueError, titleOf(wanted) + " cannot be the master: that would close a circle");
}

void bindBasics(py::class_<Handle>& basic) {
    basic.def_property_readonly(
        "name", [](const Handle& self) { return self.owned().scriptName(); }, "The name in project text and in paths.");
    basic.def_property_readonly(
        "path", [](const Handle& self) { return self.owned().path(); },
        "The names of the groups that hold it, from the topmost on, and its own, with dots between.");
    basic.def("value", &valueOf, py::arg("time") = 0.0, py::arg("view") = ViewName(),
              "The value at a time, in frames, in a view; of a Compound, a tuple of the values of its parts.");
    basic.def("set_static", &setStatic, py::arg("value"), "Sets the value of view 0 that holds without keyframes.");
    basic.def_property_readonly(
        "alive", [](const Handle& self) { return !self.object.isNull(); },
        "Whether it is there. Whatever else is asked of a deleted parameter raises ReferenceError.");
    basic.def("__repr__", [](const py::object& self) {
        const auto& handle = self.cast<const Handle&>();
        return py::str("<prm.{} {!r}>").format(py::type::of(self).attr("__name__"), represent(handle));
    });
    basic.def(
        "__eq__", [](const Handle& self, const Handle& other) { return self.equals(other); }, py::is_operator());
    basic.def("__hash__", [](const Handle& self) { return std::hash<const void*>()(self.address); });
}

void bindFlags(py::class_<Animated, Handle>& animated) {
    animated.def_property(
        "display_name", [](const Animated& self) { return self.owned().displayName(); },
        [](const Animated& self, const QString& name) { self.owned().setDisplayName(name); },
        "The name shown to users. Not undone.");
    animated.def_property(
        "hidden", [](const Animated& self) { return self.owned().isHidden(); },
        [](const Animated& self, bool hidden) {
            perform<Prm::ParameterWithoutTypeHideEdit>(self.owned(), self.owned(), hidden);
        },
        "A flag for the application, written to project text.");
    animated.def_property(
        "locked", [](const Animated& self) { return self.owned().isLocked(); },
        [](const Animated& self, bool locked) {
            perform<Prm::ParameterWithoutTypeLockEdit>(self.owned(), self.owned(), locked);
        },
        "A flag for the application. Locked parameters can be edited all the same.");
    animated.def_property_readonly(
        "keyframed", [](const Animated& self) { return self.owned().isKeyframed(); },
        "Whether a value set at a time becomes a keyframe.");
    animated.def_property_readonly(
        "splittable", [](const Animated& self) { return self.owned().splittable(); },
        "Whether views may have data of their own.");
    animated.def_property("master", &masterOf, &setMaster,
                          "The parameter whose animation this one shows, or None. Set to None, it keeps a copy.");
    animated.def_property_readonly(
        "constrained",
        [](const Animated& self) {
            py::list tied;
            for (Prm::ParameterWithoutType* const parameter : self.owned().constrainedParameters())
                tied.append(wrap(self.keeper, *parameter));
            return tied;
        },
        "The parameters of which this one is the master.");
}

void bindQuestions(py::class_<Animated, Handle>& animated) {
    animated.def("times", &timesIn, py::arg("view") = ViewName(), "The times of the keyframes of a view, ascending.");
    animated.def(
        "next_key",
        [](const Animated& self, double time, const ViewName& view) {
            return neighbour(self, time, view, &Prm::ParameterWithoutType::bNextKeyframe);
        },
        py::arg("time"), py::arg("view") = ViewName(), "The time of the first keyframe after the time, or None.");
    animated.def(
        "previous_key",
        [](const Animated& self, double time, const ViewName& view) {
            return neighbour(self, time, view, &Prm::ParameterWithoutType::bPreviousKeyframe);
        },
        py::arg("time"), py::arg("view") = ViewName(), "The time of the last keyframe before the time, or None.");
    animated.def_property_readonly("views", &viewsOf, "The ids of the views that have data of their own.");
    animated.def_property(
        "extrapolation_before", [](const Animated& self) { return nameOf(self.owned().extrapolationBefore()); },
        [](const Animated& self, const QString& kind) {
            requireKeyframed(self.owned());
            perform<Prm::ParameterExtrapolationBeforeEdit>(self.owned(), self.owned(), extrapolationOf(kind));
        },
        "How values go on before the first keyframe: \"Constant\" or \"Linear\".");
    animated.def_property(
        "extrapolation_after", [](const Animated& self) { return nameOf(self.owned().extrapolationAfter()); },
        [](const Animated& self, const QString& kind) {
            requireKeyframed(self.owned());
            perform<Prm::ParameterExtrapolationAfterEdit>(self.owned(), self.owned(), extrapolationOf(kind));
        },
        "How values go on after the last keyframe: \"Constant\" or \"Linear\".");
}

CompoundHandle makeCompound(const QString& name, const py::iterable& parts, bool keyframeTogether) {
    buryLeftBehind();
    const auto made = boost::make_shared<Prm::CompoundParameter>(name, keyframeTogether);
    CompoundHandle compound(kept(static_cast<Keeper*>(new Made<Prm::BasicParameter>(made))), *made);
    for (const py::handle part : parts)
        addMember(compound.keeper, *made, part);
    return compound;
}

py::list partsOf(const CompoundHandle& self) {
    py::list parts;
    for (Prm::ParameterWithoutType* const part : self.owned().subparameters())
        parts.append(wrap(self.keeper, *part));
    return parts;
}

py::object partAt(const CompoundHandle& self, const QString& name) {
    return memberAt(self.keeper, self.owned(), name);
}

} // namespace

void bindParameters(py::module_& module) {
    py::class_<Handle> basic(module, "BasicParameter", "A named value of a project.");
    bindBasics(basic);
    py::class_<Animated, Handle> animated(module, "Parameter",
                                          "An animatable parameter of any kind. Times are in frames.\n\nEvery edit is "
                                          "one undo step of the project, or a part of the step of an edit block.");
    bindFlags(animated);
    bindQuestions(animated);
    bindEdits(animated);
    bindReshaping(animated);
    bindUnanimated(module);
    bindExtents(module);
    bindChanges(module, animated);
    bindAnswers(module, basic);
    bindKind<double>(module);
    bindKind<int>(module);
    bindKind<unsigned int>(module);
    bindKind<bool>(module);
    bindKind<QString>(module);
    bindKind<QPointF>(module);
    bindKind<QPoint>(module);
    py::class_<CompoundHandle, Animated> compound(
        module, "Compound",
        "Several parameters that are edited as one. Its value is a tuple of the values of its parts.");
    compound.def(
        py::init(&makeCompound), py::arg("name"), py::arg("parts") = py::tuple(), py::kw_only(),
        py::arg("keyframe_together") = false,
        "A compound in no group. keyframe_together: what adds or deletes a keyframe of a part, does it to all.");
    compound.def_property_readonly("parts", &partsOf, "The parts, in order.");
    compound.def_property_readonly(
        "keyframe_together", [](const CompoundHandle& self) { return self.owned().keyframeTogether(); },
        "Whether keyframes are added and deleted for all parts at once.");
    compound.def("__getitem__", &partAt, py::arg("name"), "The part of that name. Raises KeyError.");
    compound.def("__len__", [](const CompoundHandle& self) { return self.owned().subparameters().size(); });
    compound.def("__iter__", [](const CompoundHandle& self) { return py::iter(partsOf(self)); });
}

} // namespace PrmPython
