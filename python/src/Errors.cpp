#include "python/src/Errors.h"

#include "python/src/Lifetime.h"

#include <typeinfo>
#include <utility>

namespace PrmPython {

void raise(PyObject* kind, const QString& message) {
    PyErr_SetObject(kind, toPython(message).ptr());
    throw py::error_already_set();
}

void raiseMissing(const char* what, const QString& name, const QStringList& present) {
    const Staying staying;
    QString message = QStringLiteral("no %1 '%2'").arg(QLatin1String(what), name);
    const auto near = py::module_::import("difflib").attr("get_close_matches")(name, toPython(present));
    const QStringList names = listOf(near);
    if (!names.isEmpty())
        message += "; did you mean '" + names.join("', '") + "'?";
    raise(PyExc_KeyError, message);
}

void registerErrors() {
    py::register_exception_translator([](std::exception_ptr error) {
        try {
            if (error)
                std::rethrow_exception(std::move(error));
        } catch (const DeadReference& dead) {
            PyErr_SetString(PyExc_ReferenceError, dead.what());
        } catch (const NotNow& notNow) {
            PyErr_SetString(PyExc_RuntimeError, notNow.what());
        } catch (const std::bad_cast& wrong) {
            PyErr_SetString(PyExc_TypeError, wrong.what());
        } catch (const py::builtin_exception&) {
            throw;
        } catch (const std::runtime_error& wrong) {
            PyErr_SetString(PyExc_ValueError, wrong.what());
        }
    });
}

} // namespace PrmPython
