#pragma once

#include "prm/CurveParameter.h"
#include "prm/NumericParameter.h"
#include "prm/StaticParameter.h"
#include "python/src/Handles.h"

#include <QVector>

#include <cstring>

namespace PrmPython {

/// What Python must know of a type of values: the class that has it, and how an array holds it.
template <class T> struct Kind;

template <> struct Kind<double> {
    using Class = Prm::NumericParameter<double>;
    static constexpr const char* name = "Number";
    static constexpr const char* format = "f8";
    static constexpr const char* doc = "An animatable number, a float. Times are in frames.";
};
template <> struct Kind<int> {
    using Class = Prm::NumericParameter<int>;
    static constexpr const char* name = "Integer";
    static constexpr const char* format = "i4";
    static constexpr const char* doc = "An animatable whole number of 32 bits; curves are rounded half away from zero.";
};
template <> struct Kind<unsigned int> {
    using Class = Prm::NumericParameter<unsigned int>;
    static constexpr const char* name = "Unsigned";
    static constexpr const char* format = "u4";
    static constexpr const char* doc = "An animatable whole number of 32 bits from 0 on; curves are rounded.";
};
template <> struct Kind<bool> {
    using Class = Prm::Parameter<bool>;
    static constexpr const char* name = "Switch";
    static constexpr const char* format = "?";
    static constexpr const char* doc = "An animatable bool. It keeps the value of a keyframe until the next one.";
};
template <> struct Kind<QString> {
    using Class = Prm::Parameter<QString>;
    static constexpr const char* name = "Text";
    static constexpr const char* format = "O";
    static constexpr const char* doc = "An animatable text. It keeps the value of a keyframe until the next one.";
};
template <> struct Kind<QPointF> {
    using Class = Prm::PointParameter;
    static constexpr const char* name = "Point";
    static constexpr const char* format = "(2,)f8";
    static constexpr const char* doc = "An animatable point, (x, y) of floats. Both coordinates share the curves.";
};
template <> struct Kind<QPoint> {
    using Class = Prm::Parameter<QPoint>;
    static constexpr const char* name = "IntegerPoint";
    static constexpr const char* format = "(2,)i4";
    static constexpr const char* doc =
        "An animatable point of whole numbers. It keeps a value until the next keyframe.";
};

template <class T> inline constexpr bool isPoint = std::is_same_v<T, QPointF> || std::is_same_v<T, QPoint>;

/// Calls the function with the kinds one after another, until it returns true.
template <class Try> bool eachKind(const Try& tryKind) {
    return tryKind(static_cast<double*>(nullptr)) || tryKind(static_cast<QPointF*>(nullptr)) ||
           tryKind(static_cast<QString*>(nullptr)) || tryKind(static_cast<bool*>(nullptr)) ||
           tryKind(static_cast<int*>(nullptr)) || tryKind(static_cast<unsigned int*>(nullptr)) ||
           tryKind(static_cast<QPoint*>(nullptr));
}

/// Of Python's type, or of numpy's.
inline bool isTruth(py::handle given) {
    return PyBool_Check(given.ptr()) || std::strcmp(Py_TYPE(given.ptr())->tp_name, "numpy.bool_") == 0;
}

/// The value that Python gives. Throws TypeError, and ValueError for a whole number that is too great or too small.
template <class T> T valueFrom(py::handle given) {
    py::detail::make_caster<T> caster;
    // What has a truth is not therefore a bool, and a bool is no number.
    constexpr bool isBool = std::is_same_v<T, bool>;
    const bool isNumber = PyLong_Check(given.ptr()) && !PyBool_Check(given.ptr());
    const bool isWhole = !std::is_integral_v<T> || isBool || PyIndex_Check(given.ptr());
    if (isWhole && (isBool || !isTruth(given)) && caster.load(given, !isBool))
        return py::detail::cast_op<T>(caster);
    if constexpr (std::is_integral_v<T> && !isBool) {
        using Limits = std::numeric_limits<T>;
        if (isNumber)
            throw py::value_error("the value is not within " + std::to_string(Limits::min()) + " and " +
                                  std::to_string(Limits::max()));
    }
    const std::string type = Py_TYPE(given.ptr())->tp_name;
    throw py::type_error(std::string("a value of type ") + type + " is none of " + Kind<T>::name);
}

/// Values as an array of the given shape; points have one more axis, of 2.
template <class T> py::array arrayOf(const T* values, std::vector<py::ssize_t> shape) {
    if constexpr (std::is_arithmetic_v<T>) {
        return py::array_t<T>(shape, values);
    } else if constexpr (isPoint<T>) {
        using Number = decltype(values->x());
        shape.push_back(2);
        py::array_t<Number> points(shape);
        Number* out = points.mutable_data();
        for (const T* value = values; out != points.data() + points.size(); ++value) {
            *out++ = value->x();
            *out++ = value->y();
        }
        return std::move(points);
    } else {
        py::array texts(py::dtype("O"), shape);
        auto* const out = static_cast<PyObject**>(texts.mutable_data());
        for (py::ssize_t i = 0; i < texts.size(); ++i)
            Py_XSETREF(out[i], toPython(values[i]).release().ptr());
        return texts;
    }
}

template <class T> void bindKind(py::module_& module);

} // namespace PrmPython
