#include "python/src/KindBinding.h"

namespace PrmPython {

template void bindKind<bool>(py::module_&);
template void bindKind<QString>(py::module_&);
template void bindKind<QPointF>(py::module_&);
template void bindKind<QPoint>(py::module_&);

} // namespace PrmPython
