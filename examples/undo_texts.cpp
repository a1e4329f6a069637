// What an undo stack shows of its steps, and a drag that becomes one step.

#include "host/bsc/CompositeCommand.h"
#include "prm/NumericParameter.h"
#include "prm/ParameterEdits.h"
#include "prm/ParameterSet.h"
#include "prm/UndoableEdit.h"

#include <QTextStream>

using Prm::Time;

namespace {

// [own]
/// A command of the host, with words of its own.
class Rename : public Prm::UndoableEdit {
public:
    Rename(Prm::ParameterSet& set, const QString& name) : m_set(set), m_other(name) {}
    void doIt() override {
        exchange();
        noteDone();
    }
    void undoIt() override {
        noteUndone();
        exchange();
    }
    Prm::EditSummary summary() const override { return {"Rename %p", "Rename %p", 1, {{&m_set, m_set.path(), true}}}; }

private:
    void exchange() {
        const QString former = m_set.name();
        m_set.setDisplayName(m_other);
        m_other = former;
    }

    Prm::ParameterSet& m_set;
    QString m_other;
};
// [own]

} // namespace

int main() {
    QTextStream out(stdout);
    Prm::ParameterSet logo("logo");
    Prm::NumericParameter<double> opacity("opacity"), angle("angle");
    for (auto* parameter : {&opacity, &angle}) {
        logo.addParameter(*parameter);
        for (const int frame : {0, 10, 20})
            parameter->vSetValue(frame, Time::fromInt(frame));
    }
    Rename rename(logo, "Station logo");
    out << Prm::undoText(rename) << '\n';
    // [text]
    Bsc::CompositeCommand one, both;
    Prm::ParameterRetimeEdit::appendToCommand(opacity, Prm::Retiming::shifted(5), one);
    Prm::ParameterRetimeEdit::appendToCommand(logo, Prm::Retiming::shifted(5), both);
    const QString text = Prm::undoText(one);        // Move 3 keyframes of logo.opacity
    const QString textOfBoth = Prm::undoText(both); // Move 6 keyframes of 2 parameters
    // [text]
    out << text << '\n' << textOfBoth << '\n';
    // [merge]
    // A spin box that is dragged: each value is an edit, and all together are one step.
    Prm::ParameterSetValueEdit step(opacity, 1.0, Time::fromInt(10));
    step.doIt();
    for (const double value : {2.0, 3.0, 4.0}) {
        Prm::ParameterSetValueEdit next(opacity, value, Time::fromInt(10));
        next.doIt();
        if (!Prm::mergeEdits(step, next))
            return 1;
    }
    step.undoIt(); // 10, as before the first edit
    // [merge]
    return text == "Move 3 keyframes of logo.opacity" && textOfBoth == "Move 6 keyframes of 2 parameters" &&
                   opacity.value(Time::fromInt(10)) == 10.0
               ? 0
               : 1;
}
