#pragma once

#include "tool/Project.h"

#include <QByteArray>
#include <QStringList>

#include <cmath>

namespace Tool {

/// The values of parameters as a table: a row for each frame, a column for each parameter, and one "path@view" for each
/// further view that has data. Throws `Problem` for more than `Most::values`.
///
/// It does not hold curves between the frames, kinds of extrapolation, masters, names of groups and hidden.
class SampleExport {
public:
    SampleExport(Project& project, const std::vector<int>& nodes);

    /// The whole frames from the first keyframe to the last, 0 without keyframes.
    QVector<Prm::Time> wholeFrames() const;
    QByteArray table(const QVector<Prm::Time>& times) const;
    /// Whether the values of all of them are of a known type.
    bool isComplete() const { return m_isComplete; }

private:
    struct Column {
        QString heading;
        Sampler sample;
        Prm::View view;
    };

    std::vector<Column> m_columns;
    double m_first = HUGE_VAL;
    double m_last = -HUGE_VAL;
    bool m_isComplete = true;
};

/// What a table of samples came to.
struct SampleImport {
    QByteArray text;
    int parameters = 0;
    int keyframes = 0;
    /// What is not as the table has it, in plain words.
    QStringList changes;
};

/// Project text of a table: the first column gives the time, in frames or, with frames per second, in seconds, as its
/// heading says; each other one the values of a parameter at these times, "path" or "path@view". Numbers and points
/// become linear keyframes, texts and switches constant ones; an empty cell is no keyframe; a column of one value is a
/// parameter without keyframes. Throws `Problem`, beginning with the line.
SampleImport importSamples(const QByteArray& table, double framesPerSecond);

} // namespace Tool
