#pragma once

#include "prm/Interpolation.h"
#include "prm/TimeSpan.h"

#include <QPoint>
#include <QPointF>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <limits>
#include <optional>
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

namespace py = pybind11;

namespace PrmPython {

/// A view as Python gives it: its id, or a name that the project knows. A default one is view 0.
struct ViewName {
    quint32 id = 0;
    QString name;
};
using MaybeView = std::optional<ViewName>;

constexpr double infinity = std::numeric_limits<double>::infinity();

/// Throws ValueError for a number that is no time.
inline Prm::Time timeOf(double frames) {
    const Prm::Time time = Prm::Time::fromDouble(frames);
    if (!time.isValid())
        throw py::value_error("a time is a number of frames up to 2147483646, not " + std::to_string(frames));
    return time;
}
/// From the one time to the other, both included; infinite ends are none.
Prm::TimeSpan spanOf(double start, double end);

/// Throws TypeError for what is no number.
double numberFrom(py::handle number);
QString textOf(py::handle text);
py::object toPython(const QString& text);
py::object toPython(const QVariant& value);
/// Bytes that are no UTF-8 become lone surrogates, as Python does it for file names, and come back as the same bytes.
py::str textFromUtf8(const QByteArray& bytes);
QByteArray utf8FromText(py::handle textOrBytes);
/// The name of a file, given as text or as a path.
QString fileNameOf(py::handle path);
QStringList listOf(const py::iterable& texts);
py::list toPython(const QStringList& texts);

/// Whether it is one is decided without regard to case.
Prm::Interpolation interpolationOf(const QString& name);
Prm::Extrapolation extrapolationOf(const QString& name);
QString nameOf(Prm::Interpolation kind);
QString nameOf(Prm::Extrapolation kind);

} // namespace PrmPython

namespace pybind11::detail {

template <> struct type_caster<QString> {
    PYBIND11_TYPE_CASTER(QString, const_name("str"));
    bool load(handle source, bool) {
        if (!PyUnicode_Check(source.ptr()))
            return false;
        value = PrmPython::textOf(source);
        return true;
    }
    static handle cast(const QString& text, return_value_policy, handle) { return PrmPython::toPython(text).release(); }
};

/// Points are two numbers: (x, y).
template <class Point, class Number> struct point_caster {
    PYBIND11_TYPE_CASTER(Point, const_name("tuple"));
    bool load(handle source, bool convert) {
        const bool isText = PyUnicode_Check(source.ptr()) || PyBytes_Check(source.ptr());
        if (!isinstance<sequence>(source) || isText || len(source) != 2)
            return false;
        const auto numbers = reinterpret_borrow<sequence>(source);
        make_caster<Number> x, y;
        if (!x.load(numbers[0], convert) || !y.load(numbers[1], convert))
            return false;
        value = Point(cast_op<Number>(x), cast_op<Number>(y));
        return true;
    }
    static handle cast(const Point& point, return_value_policy, handle) {
        return make_tuple(point.x(), point.y()).release();
    }
};
template <> struct type_caster<QPointF> : point_caster<QPointF, double> {};
template <> struct type_caster<QPoint> : point_caster<QPoint, int> {};

template <> struct type_caster<PrmPython::ViewName> {
    PYBIND11_TYPE_CASTER(PrmPython::ViewName, const_name("int | str"));
    bool load(handle source, bool) {
        if (PyUnicode_Check(source.ptr())) {
            value.name = PrmPython::textOf(source);
            return true;
        }
        if (!PyIndex_Check(source.ptr()))
            return false;
        const Py_ssize_t id = PyNumber_AsSsize_t(source.ptr(), nullptr);
        if (id < 0 || id > 2147483647)
            throw value_error("a view is a number from 0 on, or a name");
        value.id = static_cast<quint32>(id);
        return true;
    }
    static handle cast(const PrmPython::ViewName& view, return_value_policy, handle) {
        return PyLong_FromUnsignedLong(view.id);
    }
};

template <> struct type_caster<QVariant> {
    PYBIND11_TYPE_CASTER(QVariant, const_name("object"));
    static handle cast(const QVariant& variant, return_value_policy, handle) {
        return PrmPython::toPython(variant).release();
    }
};

} // namespace pybind11::detail
