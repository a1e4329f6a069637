#include "python/src/Bindings.h"
#include "python/src/Errors.h"
#include "python/src/Lifetime.h"

PYBIND11_MODULE(_prm, module) {
    using namespace PrmPython;
    module.doc() = "Animatable parameters: what is compiled of the package prm.";
    registerErrors();
    py::module_::import("atexit").attr("register")(py::cpp_function(&stopWork));
    bindGroups(module);
    bindParameters(module);
    bindProjects(module);
    bindExchange(module);
}
