#pragma once

#include "prm/View.h"

#include <QByteArray>
#include <QString>

namespace Prm::document {

/// What a heading of a table names: a parameter, and a view of it. It is written "path" for view 0, otherwise "path@2";
/// an @ of the path is doubled.
struct SampleHeading {
    QByteArray path;
    View view;
};

QString sampleHeading(const QString& path, View view);
/// Characters that lines of project text cannot begin with become "_". Throws `Problem` with what it is or needs.
SampleHeading readSampleHeading(const QByteArray& heading);

/// How many frames the unit has that the first heading names: 1 for frames. Throws `Problem`, also where frames per
/// second are needed, and are not above 0.
double framesPerUnit(const QString& heading, double framesPerSecond);

} // namespace Prm::document
