#include "python/src/Bindings.h"
#include "python/src/Kind.h"

#include <boost/make_shared.hpp>

namespace PrmPython {

namespace {

template <class T> Unanimated<T> make(const QString& name, py::handle value) {
    buryLeftBehind();
    const auto made = boost::make_shared<Prm::OwnedStaticParameter<T>>(name, valueFrom<T>(value));
    return {kept(static_cast<Keeper*>(new Made<Prm::BasicParameter>(made))), *made};
}

template <class T> void bind(py::module_& module, const char* name, const char* doc, const T& initial) {
    py::class_<Unanimated<T>, Handle>(module, name, doc)
        .def(py::init(&make<T>), py::arg("name"), py::arg("value") = initial, "A parameter in no group.");
}

} // namespace

void bindUnanimated(py::module_& module) {
    bind<unsigned int>(module, "StaticUnsigned", "A whole number of 32 bits from 0 on, the same at all times.", 0);
    bind<QString>(module, "StaticText", "A text, the same at all times. Its project text is one line without escapes.",
                  {});
}

} // namespace PrmPython
