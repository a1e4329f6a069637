#pragma once

#include "prm/document/Document.h"

#include <QByteArray>
#include <QStringList>

#include <cmath>

namespace Prm::document {

/// The values of parameters as a table: a row for each frame, a column for each parameter, and one "path@view" for each
/// further view that has data. Throws `Problem` for more than `Most::values`.
///
/// It does not hold curves between the frames, kinds of extrapolation, masters, names of groups and hidden.
class PRM_EXPORT SampleExport {
public:
    SampleExport(Document& document, const std::vector<int>& nodes);

    /// The whole frames from the first keyframe to the last, 0 without keyframes.
    QVector<Time> wholeFrames() const;
    QByteArray table(const QVector<Time>& times) const;
    /// Whether the values of all of them are of a known type.
    bool isComplete() const { return m_isComplete; }
    /// What to know of them.
    const std::vector<Evaluability>& notes() const { return m_notes; }

private:
    struct Column {
        QString heading;
        Sampler sample;
        View view;
    };

    std::vector<Column> m_columns;
    double m_first = HUGE_VAL;
    double m_last = -HUGE_VAL;
    bool m_isComplete = true;
    std::vector<Evaluability> m_notes;
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
PRM_EXPORT SampleImport importSamples(const QByteArray& table, double framesPerSecond);

} // namespace Prm::document
