#include "prm/ParameterTree.h"

namespace Prm {

ParameterTree::~ParameterTree() = default;

} // namespace Prm
