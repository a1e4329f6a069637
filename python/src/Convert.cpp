#include "python/src/Convert.h"

#include "python/src/Lifetime.h"

#include <QVector>

namespace PrmPython {

namespace {

py::object fromUtf16(const QString& text) {
    int order = Q_BYTE_ORDER == Q_LITTLE_ENDIAN ? -1 : 1;
    const char* const bytes = reinterpret_cast<const char*>(text.utf16());
    PyObject* const made = PyUnicode_DecodeUTF16(bytes, Py_ssize_t{2} * text.size(), "surrogatepass", &order);
    if (!made)
        throw py::error_already_set();
    return py::reinterpret_steal<py::object>(made);
}

QString fromUcs4(const Py_UCS4* letters, Py_ssize_t count) {
    QString text;
    for (Py_ssize_t i = 0; i < count; ++i) {
        if (QChar::requiresSurrogates(letters[i])) {
            text += QChar(QChar::highSurrogate(letters[i]));
            text += QChar(QChar::lowSurrogate(letters[i]));
        } else {
            text += QChar(static_cast<ushort>(letters[i]));
        }
    }
    return text;
}

py::object listToPython(const QVariantList& values) {
    py::tuple result(static_cast<std::size_t>(values.size()));
    for (int i = 0; i < values.size(); ++i)
        result[static_cast<std::size_t>(i)] = toPython(values.at(i));
    return std::move(result);
}

[[noreturn]] void refuseKind(const QString& name) {
    throw py::value_error(("no kind is called '" + name + "'").toStdString());
}

QString capitalised(const QString& name) {
    return name.left(1).toUpper() + name.mid(1).toLower();
}

} // namespace

Prm::TimeSpan spanOf(double start, double end) {
    if (start != start || end != end)
        throw py::value_error("a span is from one time to another");
    return {start, end, true, end < infinity};
}

double numberFrom(py::handle number) {
    const double value = PyFloat_AsDouble(number.ptr());
    if (value == -1.0 && PyErr_Occurred())
        throw py::error_already_set();
    return value;
}

QString textOf(py::handle text) {
    PyObject* const given = text.ptr();
    if (!PyUnicode_Check(given))
        throw py::type_error("a text is needed");
    const Py_ssize_t count = PyUnicode_GET_LENGTH(given);
    if (count > std::numeric_limits<int>::max() / 4)
        throw py::value_error("the text is too long");
    const void* const letters = PyUnicode_DATA(given);
    switch (PyUnicode_KIND(given)) {
    case PyUnicode_1BYTE_KIND:
        return QString::fromLatin1(static_cast<const char*>(letters), static_cast<int>(count));
    case PyUnicode_2BYTE_KIND:
        return QString(static_cast<const QChar*>(letters), static_cast<int>(count));
    default:
        return fromUcs4(static_cast<const Py_UCS4*>(letters), count);
    }
}

py::object toPython(const QString& text) {
    return fromUtf16(text);
}

py::object toPython(const QVariant& value) {
    if (!value.isValid())
        return py::none();
    const int type = value.userType();
    if (type == qMetaTypeId<QVector<QVariant>>())
        return listToPython(value.value<QVector<QVariant>>().toList());
    switch (type) {
    case QMetaType::Bool:
        return py::bool_(value.toBool());
    case QMetaType::Int:
    case QMetaType::LongLong:
        return py::int_(value.toLongLong());
    case QMetaType::UInt:
    case QMetaType::ULongLong:
        return py::int_(value.toULongLong());
    case QMetaType::Float:
    case QMetaType::Double:
        return py::float_(value.toDouble());
    case QMetaType::QPointF:
        return py::cast(value.toPointF());
    case QMetaType::QPoint:
        return py::cast(value.toPoint());
    case QMetaType::QVariantList:
        return listToPython(value.toList());
    default:
        return fromUtf16(value.toString());
    }
}

py::str textFromUtf8(const QByteArray& bytes) {
    PyObject* const made = PyUnicode_DecodeUTF8(bytes.constData(), bytes.size(), "surrogateescape");
    if (!made)
        throw py::error_already_set();
    return py::reinterpret_steal<py::str>(made);
}

QByteArray utf8FromText(py::handle textOrBytes) {
    py::object bytes = py::reinterpret_borrow<py::object>(textOrBytes);
    if (PyUnicode_Check(bytes.ptr()))
        bytes = bytes.attr("encode")("utf-8", "surrogateescape");
    if (!PyBytes_Check(bytes.ptr()))
        throw py::type_error("project text is given as text or bytes");
    return {PyBytes_AS_STRING(bytes.ptr()), static_cast<int>(PyBytes_GET_SIZE(bytes.ptr()))};
}

QString fileNameOf(py::handle path) {
    const Staying staying;
    return textOf(py::module_::import("os").attr("fsdecode")(path));
}

QStringList listOf(const py::iterable& texts) {
    if (PyUnicode_Check(texts.ptr()))
        return {textOf(texts)};
    QStringList list;
    for (const py::handle text : texts)
        list.append(textOf(text));
    return list;
}

py::list toPython(const QStringList& texts) {
    py::list list;
    for (const QString& text : texts)
        list.append(text);
    return list;
}

Prm::Interpolation interpolationOf(const QString& name) {
    Prm::Interpolation kind{};
    if (!Prm::bStringToInterpolationType(capitalised(name), kind))
        refuseKind(name);
    return kind;
}

Prm::Extrapolation extrapolationOf(const QString& name) {
    Prm::Extrapolation kind{};
    if (!Prm::bStringToExtrapolationType(capitalised(name), kind))
        refuseKind(name);
    return kind;
}

QString nameOf(Prm::Interpolation kind) {
    const auto custom = static_cast<quint32>(Prm::Interpolation::Custom0);
    const auto number = static_cast<quint32>(kind);
    return number > custom ? "Custom" + QString::number(number - custom) : Prm::qstrInterpolationTypeString(kind);
}

QString nameOf(Prm::Extrapolation kind) {
    const auto custom = static_cast<quint32>(Prm::Extrapolation::Custom0);
    const auto number = static_cast<quint32>(kind);
    return number > custom ? "Custom" + QString::number(number - custom) : Prm::qstrExtrapolationTypeString(kind);
}

} // namespace PrmPython
