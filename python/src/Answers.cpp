#include "prm/Answers.h"

#include "host/bsc/Hash.h"
#include "prm/Easing.h"
#include "prm/Explanation.h"
#include "prm/RangeHash.h"
#include "python/src/Bindings.h"
#include "python/src/Home.h"

namespace PrmPython {

namespace {

const char* const stepKinds[] = {
    "Master",       "MasterOfAnotherType", "OwnView",    "SharedView", "SourceView", "NearestView", "Blend", "Default",
    "NotKeyframed", "NoKeyframes",         "AtKeyframe", "Between",    "Before",     "After",       "Hook",  "Parts",
    "Unanimated"};

/// The text is made at once: later, parameters may be gone.
struct Explained {
    Prm::Explanation explanation;
    QString text;
};

Explained explained(const Handle& self, double time, const ViewName& view) {
    const Prm::BasicParameter& parameter = self.owned();
    Prm::Explanation explanation = Prm::explain(parameter, Prm::Context(timeOf(time), viewOf(self, view)));
    const QString text = explanation.toString([](const Prm::BasicParameter& named) { return titleOf(named); });
    return {std::move(explanation), text};
}

py::list stepsOf(const Explained& self) {
    py::list steps;
    for (const auto& step : self.explanation.steps)
        steps.append(py::make_tuple(stepKinds[step.kind], toPython(step.value)));
    return steps;
}

QString hashOf(const Handle& self, double start, double end, const ViewName& view) {
    Bsc::Hash hash;
    Prm::hashRange(hash, self.owned(), viewOf(self, view), spanOf(start, end));
    return hash.result().toString();
}

QString hashOfGroup(const GroupHandle& self, double start, double end, const ViewName& view) {
    Bsc::Hash hash;
    Prm::hashRange(hash, self.owned(), findView(homeOf(self.owned()), view), spanOf(start, end));
    return hash.result().toString();
}

/// Of a Parameter any thread may ask.
const Prm::BasicParameter& asked(const Handle& self) {
    return dynamic_cast<const Prm::ParameterWithoutType*>(&self.alive()) ? self.alive() : self.owned();
}

} // namespace

void bindAnswers(py::module_& module, py::class_<Handle>& basic) {
    py::class_<Explained>(module, "Explanation", "Why a parameter has its value. As text: lines for a user.")
        .def("__str__", [](const Explained& self) { return self.text; })
        .def_property_readonly("value", [](const Explained& self) { return toPython(self.explanation.value); })
        .def_property_readonly("steps", &stepsOf, "The steps to the value: what happened, and the value after it.")
        .def("__repr__", [](const Explained& self) {
            return py::str("<prm.Explanation of {!r}>").format(toPython(self.explanation.value));
        });
    basic.def("explain", &explained, py::arg("time") = 0.0, py::arg("view") = ViewName(),
              "The steps from the time and view to the value.");
    basic.def(
        "constant_around",
        [](const Handle& self, double time, const ViewName& view) {
            return Prm::constantAround(asked(self), Prm::Context(timeOf(time), viewOf(self, view)));
        },
        py::arg("time"), py::arg("view") = ViewName(),
        "The longest span around a time in which the value stays the same.");
    basic.def(
        "is_constant",
        [](const Handle& self, double start, double end, const ViewName& view) {
            return Prm::isConstant(asked(self), viewOf(self, view), spanOf(start, end));
        },
        py::arg("start") = -infinity, py::arg("end") = infinity, py::arg("view") = ViewName(),
        "Whether there is one value at all times of the span.");
    basic.def("hash_range", &hashOf, py::arg("start") = -infinity, py::arg("end") = infinity,
              py::arg("view") = ViewName(),
              "32 digits that are equal only where all values of the span are, for names of files in a cache.");
    py::reinterpret_borrow<py::class_<GroupHandle>>(module.attr("Group"))
        .def("hash_range", &hashOfGroup, py::arg("start") = -infinity, py::arg("end") = infinity,
             py::arg("view") = ViewName(),
             "32 digits that are equal only where all values below the group are, at all times of the span.");
    module.def(
        "easings",
        [] {
            QStringList names;
            for (const Prm::Easing& preset : Prm::Easing::presets())
                names << preset.name;
            return toPython(names);
        },
        "The names of the easings that Parameter.ease takes.");
}

} // namespace PrmPython
