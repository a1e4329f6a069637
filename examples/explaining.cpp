// Why a parameter has its value: in words for a user, as data for a program.

#include "prm/Explanation.h"
#include "prm/NumericParameter.h"

#include <QTextStream>

using Prm::Context;
using Prm::Explanation;
using Prm::Time;
using Prm::View;

int main() {
    QTextStream out(stdout);
    Prm::NumericParameter<double> size("size");
    Prm::NumericParameter<double> shadow("shadow");
    size.vSetValue(5.0, Time::fromInt(10));
    size.vSetValue(10.0, Time::fromInt(20));
    size.bAddConstrainedParameter(&shadow);

    // [explain]
    const Explanation explanation = Prm::explain(shadow, Context(Time::fromInt(12), View(1)));
    out << explanation.toString() << '\n';
    // [explain]

    // [data]
    // The keyframes that make the value, to be shown in an editor.
    QVector<double> frames;
    for (const Explanation::Step& step : explanation.steps) {
        for (const auto& keyframe : {step.from, step.to}) {
            if (keyframe)
                frames.append(keyframe->time.toDouble());
        }
    }
    // [data]

    const QString expected = QStringLiteral("shadow at frame 12 in view 1 is 6\n"
                                            "  tied to \"size\": its value is shown\n"
                                            "  view 1 has no data: view 0 is read\n"
                                            "  between frame 10 (5) and frame 20 (10), Linear, "
                                            "after 20 percent of the time: 6");
    return explanation.toString() == expected && frames == QVector<double>{10, 20} ? 0 : 1;
}
