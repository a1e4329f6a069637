#pragma once

#include "tool/PlotCurves.h"

#include <QByteArray>

namespace Tool {

/// How a plot is drawn in the terminal.
struct TextSize {
    /// Of the whole, with the labels.
    int columns = 80;
    /// Of the curves alone.
    int rows = 20;
    bool hasColours = false;
};

/// The plot in braille characters, with axes and a legend. Handles are dotted lines.
QByteArray plotText(const Plot& plot, const TextSize& size);

} // namespace Tool
