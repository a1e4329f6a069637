#include "python/src/KindBinding.h"

namespace PrmPython {

template void bindKind<double>(py::module_&);
template void bindKind<int>(py::module_&);
template void bindKind<unsigned int>(py::module_&);

} // namespace PrmPython
