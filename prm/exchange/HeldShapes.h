#pragma once

#include "prm/Interpolation.h"

#include <QStringList>

namespace Prm::document {

/// What becomes of interpolation in a file that has straight and Bezier segments, and such as hold: finite handles,
/// within their segment's time. Counts what it changes.
class HeldShapes {
public:
    IType held(IType shape);
    /// In plain words.
    QStringList losses() const;

private:
    int m_custom = 0;
    int m_infinite = 0;
    int m_moved = 0;
};

} // namespace Prm::document
