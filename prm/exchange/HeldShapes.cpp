#include "prm/exchange/HeldShapes.h"

#include "prm/document/Problem.h"

#include <algorithm>
#include <cmath>

namespace Prm::document {

IType HeldShapes::held(IType shape) {
    if (shape.interpolation >= Interpolation::Custom0) {
        ++m_custom;
        return {Interpolation::Linear};
    }
    if (shape.interpolation != Interpolation::Bezier)
        return shape;
    if (!std::isfinite(shape.y1) || !std::isfinite(shape.y2)) {
        ++m_infinite;
        return {Interpolation::Linear};
    }
    for (double* const x : {&shape.x1, &shape.x2}) {
        // What is no number counts as 0.
        const double former = *x;
        *x = former >= 0 ? std::min(former, 1.0) : 0;
        m_moved += *x == former ? 0 : 1;
    }
    return shape;
}

QStringList HeldShapes::losses() const {
    QStringList lost;
    if (m_custom > 0)
        lost += message("custom segments become straight: %1", m_custom);
    if (m_infinite > 0)
        lost += message("segments with infinite handles become straight: %1", m_infinite);
    if (m_moved > 0)
        lost += message("handles outside their segment's time are held to it: %1", m_moved);
    return lost;
}

} // namespace Prm::document
