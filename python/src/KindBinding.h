#pragma once

#include "prm/Answers.h"
#include "python/src/Home.h"
#include "python/src/Keyframes.h"
#include "python/src/Kind.h"

#include <boost/make_shared.hpp>

#include <type_traits>
#include <utility>
#include <vector>

namespace PrmPython {

template <class T> Prm::ParameterOptions optionsOf(bool keyframed, bool splittable, bool locked, bool hidden) {
    Prm::ParameterOptions options;
    options.setFlag(Prm::Keyframed, keyframed);
    options.setFlag(Prm::Splittable, splittable);
    options.setFlag(Prm::Locked, locked);
    options.setFlag(Prm::Hidden, hidden);
    return options;
}

template <class T>
Typed<T> makeKind(const QString& name, py::handle initial, bool keyframed, bool splittable, bool locked, bool hidden) {
    buryLeftBehind();
    const T value = initial.is_none() ? T{} : valueFrom<T>(initial);
    const auto options = optionsOf<T>(keyframed, splittable, locked, hidden);
    const auto made = boost::make_shared<typename Kind<T>::Class>(name, value, options);
    return {kept(static_cast<Keeper*>(new Made<Prm::BasicParameter>(made))), *made};
}

template <class T> T valueAt(const Typed<T>& self, double time, const ViewName& view) {
    return self.alive().value(Prm::Context(timeOf(time), viewOf(self, view)));
}

using TimeArray = py::array_t<double, py::array::c_style | py::array::forcecast>;

inline std::vector<Prm::Time> timesOf(const TimeArray& given) {
    const py::ssize_t count = given.size();
    if (count > std::numeric_limits<int>::max())
        throw py::value_error("at most 2^31 - 1 times can be sampled at once");
    std::vector<Prm::Time> times(static_cast<std::size_t>(count));
    const double* frames = given.data();
    bool areValid = true;
    for (Prm::Time& time : times) {
        time = Prm::Time::fromDouble(*frames++);
        areValid = areValid && time.isValid();
    }
    if (!areValid)
        throw py::value_error("times are numbers of frames up to 2147483646");
    return times;
}

template <class T> py::array sampledValues(const Typed<T>& self, const TimeArray& frames, const ViewName& name) {
    const std::vector<Prm::Time> times = timesOf(frames);
    const int count = static_cast<int>(times.size());
    const std::vector<py::ssize_t> shape(frames.shape(), frames.shape() + frames.ndim());
    const Prm::View view = viewOf(self, name);
    // Within the scope nothing of Python's may be freed, since that may wait for the end of sampling.
    const auto sampleInto = [&](T* out) {
        const Sampling sampling;
        const Prm::Parameter<T>& parameter = self.alive();
        const Unlocked unlocked;
        parameter.sampleValues(times.data(), count, view, out);
    };
    if constexpr (std::is_arithmetic_v<T>) {
        py::array_t<T> values(shape);
        sampleInto(values.mutable_data());
        return std::move(values);
    } else {
        QVector<T> values(count);
        sampleInto(values.data());
        return arrayOf(values.constData(), shape);
    }
}

template <class T> py::array keyframesIn(const Typed<T>& self, const ViewName& view, double start, double end) {
    return arrayOfKeyframes<T>(Prm::keyframes(self.alive(), viewOf(self, view), spanOf(start, end)));
}

template <class T> void replaceKeyframes(const Typed<T>& self, py::handle given, const ViewName& view) {
    self.owned();
    const auto keyframes = keyframesOf<T>(given);
    // Converting runs code of Python's, which may have deleted the parameter.
    Prm::Parameter<T>& parameter = self.owned();
    requireKeyframed(parameter);
    perform<ReplaceKeyframesEdit<T>>(parameter, parameter, keyframes, viewOf(self, view));
}

template <class T> void bindEvaluation(py::class_<Typed<T>, Animated>& kind) {
    kind.def(
        "value", &valueAt<T>, py::arg("time") = 0.0, py::arg("view") = ViewName(),
        "The value at a time, in frames, in a view. Any thread.\n\nRaises ValueError for a number that is no time, "
        "KeyError for a view that is not known.");
    kind.def("sample", &sampledValues<T>, py::arg("times"), py::arg("view") = ViewName(),
             "The values at many times, in frames, as an array of the same shape; a point adds an axis of 2. Fastest "
             "with ascending times.\nAny thread; other threads run meanwhile. All values are those of one state.");
    kind.def_property_readonly(
        "default", [](const Typed<T>& self) { return self.owned().defaultValue(); },
        "The value of a view that has none of its own.");
    kind.def(
        "static_value",
        [](const Typed<T>& self, const ViewName& view) { return self.alive().staticValue(viewOf(self, view)); },
        py::arg("view") = ViewName(), "The value of a view without keyframes.");
}

template <class T> void bindKeyframes(py::class_<Typed<T>, Animated>& kind) {
    kind.def_property(
        "keys", [](const Typed<T>& self) { return keyframesIn(self, {}, -infinity, infinity); },
        [](const Typed<T>& self, const py::object& keys) { replaceKeyframes(self, keys, {}); },
        "The keyframes of view 0 as a structured array: time, value, kind, x1, y1, x2, y2. A copy.\n\nSetting replaces "
        "them all, in one undo step: by such an array, or by rows of time, value, kind and the four numbers of the "
        "shape, of which all after the value may be left out.\nRaises ValueError for times that are not in ascending "
        "order.");
    kind.def("keyframes", &keyframesIn<T>, py::arg("view") = ViewName(), py::arg("start") = -infinity,
             py::arg("end") = infinity, "The keyframes of a view from one time to another, both included. Any thread.");
    kind.def("set_keyframes", &replaceKeyframes<T>, py::arg("keys"), py::arg("view") = ViewName(),
             "Replaces all keyframes of a view, as setting keys does.");
}

template <class T> void bindAnswers(py::class_<Typed<T>, Animated>& kind) {
    if constexpr (!std::is_same_v<T, QString>)
        kind.def(
            "bounds",
            [](const Typed<T>& self, double start, double end, const ViewName& view) {
                return Prm::bounds(self.alive(), viewOf(self, view), spanOf(start, end));
            },
            py::arg("start") = -infinity, py::arg("end") = infinity, py::arg("view") = ViewName(),
            "The least and the greatest value from one time to another, both included. Any thread.");
    if constexpr (Prm::blends<T>)
        kind.def(
            "slope",
            [](const Typed<T>& self, double time, const ViewName& view) {
                return Prm::slope(self.alive(), Prm::Context(timeOf(time), viewOf(self, view)));
            },
            py::arg("time"), py::arg("view") = ViewName(),
            "The change for each frame; at corners and steps, after the time. Any thread.");
    if constexpr (!std::is_same_v<T, QString>)
        kind.def(
            "polyline",
            [](const Typed<T>& self, double start, double end, double tolerance, const ViewName& view) {
                const auto points = Prm::polyline(self.alive(), viewOf(self, view), spanOf(start, end), tolerance);
                QVector<double> times;
                QVector<T> values;
                for (const auto& [time, value] : points) {
                    times.append(time.toDouble());
                    values.append(value);
                }
                const std::vector<py::ssize_t> shape{points.size()};
                return py::make_tuple(arrayOf(times.constData(), shape), arrayOf(values.constData(), shape));
            },
            py::arg("start"), py::arg("end"), py::arg("tolerance"), py::arg("view") = ViewName(),
            "Times and values between which straight lines show the curve within the tolerance. Any thread.");
}

template <class T> void bindKind(py::module_& module) {
    py::class_<Typed<T>, Animated> kind(module, Kind<T>::name, Kind<T>::doc);
    kind.def(py::init(&makeKind<T>), py::arg("name"), py::arg("default") = py::none(), py::kw_only(),
             py::arg("keyframed") = true, py::arg("splittable") = true, py::arg("locked") = false,
             py::arg("hidden") = false,
             "A parameter in no group. keyframed: a value set at a time becomes a keyframe. splittable: views may "
             "differ. locked and hidden are flags for the application.");
    bindEvaluation(kind);
    bindKeyframes(kind);
    bindAnswers(kind);
}

} // namespace PrmPython
