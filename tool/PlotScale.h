#pragma once

#include <QString>
#include <QVector>

namespace Tool {

/// What an axis shows. `first` is below `last`, and their distance is finite.
struct PlotRange {
    double first = 0;
    double last = 1;

    double length() const { return last - first; }
    bool holds(double number) const { return number >= first && number <= last; }
    /// 0 at `first`, 1 at `last`.
    double part(double number) const { return (number - first) / length(); }
};

/// A range to show two numbers in, with some room on both sides, also where they are the same.
PlotRange withMargin(double least, double greatest);

struct PlotTick {
    double number = 0;
    QString label;
};

/// At most so many round numbers at equal distances; two or more in any case.
QVector<PlotTick> ticks(const PlotRange& range, int most);

} // namespace Tool
