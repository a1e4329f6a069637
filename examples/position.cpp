// A position made of two numbers: edited, undone and written as one.

#include "host/bsc/CompositeCommand.h"
#include "prm/CompoundParameter.h"
#include "prm/MoveKeyframeEdit.h"
#include "prm/NumericParameter.h"

#include <QTextStream>
#include <boost/make_shared.hpp>

using Prm::Context;
using Prm::Frame;
using Prm::Time;
using Prm::View;
using Number = Prm::NumericParameter<double>;

namespace {

// [class]
class Position : public Prm::CompoundParameter {
public:
    explicit Position(const QString& scriptName) : CompoundParameter(scriptName, true) {
        addParameter(x);
        addParameter(y);
    }

    const boost::shared_ptr<Number> x = boost::make_shared<Number>("x");
    const boost::shared_ptr<Number> y = boost::make_shared<Number>("y");
};
// [class]

Context atFrame(int frame) {
    return {Time::fromInt(frame)};
}

} // namespace

int main() {
    QTextStream out(stdout);
    Position position("position");
    const auto show = [&](const char* title) {
        out << title << '\n';
        for (const Context& keyframe : position.allKeyframesTime(View()))
            out << "    frame " << keyframe.time.toDouble() << ": " << position.x->value(keyframe) << ", "
                << position.y->value(keyframe) << '\n';
    };

    // [together]
    position.x->vSetValue(0.0, atFrame(0));
    position.x->vSetValue(100.0, atFrame(20)); // keys y at frame 20 as well
    position.setVariantValue(QVariantList{50.0, -30.0}, atFrame(10));
    // [together]
    show("keyed together:");
    const bool together = position.y->keyframeCount(View()) == 3;

    // [move]
    Bsc::CompositeCommand command;
    Prm::MoveKeyframeEdit::appendToCommand(position, Frame::fromInt(10), Frame::fromInt(14), command);
    command.doIt();
    // [move]
    show("moved as one:");
    const bool moved = position.x->value(atFrame(14)) == 50.0 && position.y->value(atFrame(14)) == -30.0;

    command.undoIt();
    show("undone as one:");
    out << "written as a group:\n";
    out.flush();
    position.bStreamOut(out, QString(), true);
    return together && moved && position.keyframeTime(1, View()) == atFrame(10) ? 0 : 1;
}
