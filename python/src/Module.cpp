#include "python/src/Bindings.h"
#include "python/src/Errors.h"
#include "python/src/Lifetime.h"

#include <pybind11/numpy.h>

namespace {

PyObject* refuseToMake(PyTypeObject* type, PyObject* /*arguments*/, PyObject* /*named*/) {
    PyErr_Format(PyExc_TypeError, "cannot create '%s' instances", type->tp_name);
    return nullptr;
}

py::object refuseToReduce(py::handle self) {
    throw py::type_error("cannot pickle or copy " + py::repr(self).cast<std::string>());
}

// By themselves, both would make objects without a value, which end the process when they are used.
void refuseEmptyObjects(const py::module_& module) {
    const auto* const base = reinterpret_cast<const PyTypeObject*>(py::detail::get_internals().instance_base);
    const py::cpp_function reduce(&refuseToReduce, py::is_method(module), py::name("__reduce__"));
    for (const auto& [name, member] : module.attr("__dict__").cast<py::dict>()) {
        if (!PyType_Check(member.ptr()))
            continue;
        member.attr("__reduce__") = reduce;
        auto* const type = reinterpret_cast<PyTypeObject*>(member.ptr());
        if (type->tp_init == base->tp_init)
            type->tp_new = &refuseToMake;
    }
}

} // namespace

PYBIND11_MODULE(_prm, module) {
    using namespace PrmPython;
    module.doc() = "Animatable parameters: what is compiled of the package prm.";
    registerErrors();
    // Made when first needed, by two threads at once, it would wait for itself: importing releases the lock.
    py::detail::npy_api::get();
    py::module_::import("atexit").attr("register")(py::cpp_function(&stopWork));
    bindGroups(module);
    bindParameters(module);
    bindProjects(module);
    bindExchange(module);
    refuseEmptyObjects(module);
}
