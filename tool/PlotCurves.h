#pragma once

#include "tool/PlotScale.h"
#include "tool/Project.h"

#include <QPointF>
#include <QString>
#include <QVector>

#include <optional>
#include <vector>

namespace Tool {

/// One line of a plot: x are frames, y are values.
struct PlotCurve {
    struct Handle {
        QPointF keyframe;
        QPointF end;
        /// Whether the end has a place in the plot, or the line only leads there.
        bool endIsShown = true;
    };

    QString name;
    /// In ascending order. A value that is no number, or too large to draw, breaks the line.
    QVector<QPointF> points;
    QVector<QPointF> keyframes;
    QVector<Handle> handles;
    /// The frames from the first keyframe to the last of what is shown; outside of them, the line continues it. All
    /// frames for a value without keyframes.
    PlotRange keyed;
    /// Counts parameters and their components: the views of one have the same.
    int subject = 0;
    /// Another view than the first one of the parameter.
    bool isGhost = false;
};

struct Plot {
    PlotRange frames;
    PlotRange values;
    std::vector<PlotCurve> curves;
};

/// What is to be drawn.
struct PlotRequest {
    std::vector<int> parameters;
    /// Empty for all views that a parameter has data for.
    std::vector<Prm::View> views;
    /// None for the range of the keyframes.
    std::optional<PlotRange> frames;
    /// How many samples there are besides the keyframes.
    int samples = 1000;
};

/// Samples the curves. Parameters without numbers are left out, with a message; throws `Problem` when no curve is left,
/// or too many.
Plot plotOf(Project& project, const PlotRequest& request);

/// Whether a value can be drawn.
bool isDrawable(double value);

} // namespace Tool
