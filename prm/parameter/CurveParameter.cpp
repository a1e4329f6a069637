#include "prm/CurveParameter.hpp"

namespace Prm {

template class CurveParameter<double>;
template class CurveParameter<int>;
template class CurveParameter<unsigned int>;
template class CurveParameter<QPointF>;

} // namespace Prm
