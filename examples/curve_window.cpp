// What an editor shows of a curve in a window, and what a renderer can keep of it.

#include "prm/Answers.h"
#include "prm/NumericParameter.h"
#include "prm/RangeHash.h"

#include <QHash>
#include <QString>
#include <QTextStream>

using Prm::Context;
using Prm::Time;
using Prm::TimeSpan;
using Prm::View;

namespace {

// [picture]
/// A curve in a window, drawn as straight lines. A pixel is `frames` wide and `values` high.
QString picture(const Prm::Parameter<double>& curve, const TimeSpan& window, double frames, double values) {
    QString path;
    for (const auto& [time, value] : Prm::polyline(curve, View(), window, values / 2, frames))
        path += QStringLiteral("%1,%2 ").arg(time.toDouble()).arg(value);
    return path;
}
// [picture]

// [cache]
/// Pictures by what they show: of times at which all values are the same, one is kept.
QHash<QString, int> pictures;

int pictureOf(const Prm::BasicParameter& shown, const Context& at) {
    Bsc::Hash hash;
    Prm::hashAt(hash, shown, at);
    const QString key = hash.result().toString();
    if (!pictures.contains(key))
        pictures[key] = pictures.size();
    return pictures[key];
}
// [cache]

} // namespace

int main() {
    QTextStream out(stdout);
    Prm::NumericParameter<double> opacity("opacity");
    for (const auto& [frame, value] : {std::pair(0, 0.0), std::pair(10, 1.0), std::pair(30, 1.0), std::pair(40, 0.0)})
        opacity.vSetValue(value, Time::fromInt(frame));

    // [answers]
    const TimeSpan window{0, 40, true, true};
    const auto [least, greatest] = Prm::bounds(opacity, View(), window);    // 0 and 1: the height of the window
    const TimeSpan still = Prm::constantAround(opacity, Time::fromInt(12)); // from frame 10 to frame 30
    const double rise = Prm::slope(opacity, Time::fromInt(5));              // 0.1 per frame
    const int inWindow = Prm::keyframes(opacity, View(), {5, 35, true, true}).size();
    // [answers]

    out << picture(opacity, window, 0.05, 0.01) << '\n';
    const bool isKept = pictureOf(opacity, Time::fromInt(12)) == pictureOf(opacity, Time::fromInt(25));
    const bool isNew = pictureOf(opacity, Time::fromInt(35)) != pictureOf(opacity, Time::fromInt(36));
    const bool isRight = least == 0.0 && greatest == 1.0 && rise == 0.1 && inWindow == 2;
    return isRight && still == TimeSpan{10, 30, true, true} && isKept && isNew ? 0 : 1;
}
