#pragma once

#include "tool/PlotCurves.h"

#include <QByteArray>

namespace Tool {

/// The plot as SVG, so many pixels wide and high; the legend comes below that.
QByteArray plotPicture(const Plot& plot, int width, int height);

} // namespace Tool
