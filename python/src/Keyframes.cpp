#include "python/src/Keyframes.h"

#include "python/src/Lifetime.h"

namespace PrmPython {

namespace {

const char* const shapeNames[] = {"x1", "y1", "x2", "y2"};

double Prm::IType::*const shapeNumbers[] = {&Prm::IType::x1, &Prm::IType::y1, &Prm::IType::x2, &Prm::IType::y2};

py::dtype typeOfRows(const char* format) {
    py::list fields;
    fields.append(py::make_tuple("time", "f8"));
    fields.append(py::make_tuple("value", format));
    fields.append(py::make_tuple("kind", "U16"));
    for (const char* const name : shapeNames)
        fields.append(py::make_tuple(name, "f8"));
    return py::dtype::from_args(fields);
}

/// The fields of a structured array in the order of a row.
py::object inOrder(const py::object& array) {
    const py::object fields = array.attr("dtype").attr("names");
    if (fields.is_none())
        return array;
    py::list present;
    for (const char* const name : {"time", "value", "kind", "x1", "y1", "x2", "y2"})
        if (fields.contains(name))
            present.append(name);
    if (py::len(present) != py::len(fields))
        throw py::value_error("the fields of keyframes are time, value, kind, x1, y1, x2 and y2");
    return array[present];
}

KeyframeShape shapeOf(const py::sequence& row) {
    KeyframeShape shape{timeOf(numberFrom(row[0])), Prm::IType(Prm::Interpolation::Linear)};
    if (py::len(row) > 2)
        shape.interpolation.interpolation = interpolationOf(textOf(row[2]));
    else if (PyUnicode_Check(py::object(row[1]).ptr()) || PyBool_Check(py::object(row[1]).ptr()))
        shape.interpolation.interpolation = Prm::Interpolation::Constant;
    for (std::size_t i = 3; i < py::len(row); ++i)
        shape.interpolation.*shapeNumbers[i - 3] = numberFrom(row[i]);
    return shape;
}

} // namespace

py::array structured(const std::vector<KeyframeShape>& shapes, const char* format, const py::array& values) {
    const Staying staying;
    const std::vector<py::ssize_t> count{static_cast<py::ssize_t>(shapes.size())};
    py::array rows(typeOfRows(format), count);
    py::array_t<double> numbers(count);
    const auto fill = [&](const char* name, const auto& numberOf) {
        double* out = numbers.mutable_data();
        for (const KeyframeShape& shape : shapes)
            *out++ = numberOf(shape);
        rows[name] = numbers;
    };
    fill("time", [](const KeyframeShape& shape) { return shape.time.toDouble(); });
    rows["value"] = values;
    py::list kinds;
    for (const KeyframeShape& shape : shapes)
        kinds.append(nameOf(shape.interpolation.interpolation));
    rows["kind"] = kinds;
    for (int i = 0; i < 4; ++i)
        fill(shapeNames[i], [&](const KeyframeShape& shape) { return shape.interpolation.*shapeNumbers[i]; });
    return rows;
}

std::vector<std::pair<KeyframeShape, py::object>> rowsOf(py::handle keys) {
    const Staying staying;
    py::object given = py::reinterpret_borrow<py::object>(keys);
    if (py::isinstance<py::array>(given))
        given = inOrder(given).attr("tolist")();
    std::vector<std::pair<KeyframeShape, py::object>> rows;
    for (const py::handle item : given) {
        const auto row = py::reinterpret_borrow<py::object>(item).cast<py::sequence>();
        const std::size_t length = py::len(row);
        if (length != 2 && length != 3 && length != 7)
            throw py::value_error("a keyframe is (time, value), or with kind, or with kind, x1, y1, x2, y2");
        rows.emplace_back(shapeOf(row), row[1]);
    }
    return rows;
}

} // namespace PrmPython
