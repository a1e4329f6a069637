// A host's undo stack: it receives every command that a parameter registers, and undoes and redoes it.

#include "host/bsc/CompositeCommand.h"
#include "prm/NumericParameter.h"
#include "prm/ParameterEdits.h"
#include "prm/ParameterSet.h"

#include <QObject>
#include <QTextStream>

#include <memory>
#include <vector>

using Prm::Time;

namespace {
// [stack]
/// Owns the commands. Each is one step, however many parameters it concerns; a new one deletes those undone.
class UndoStack : public QObject {
    Q_OBJECT

public:
    void undo() {
        if (m_done > 0)
            m_commands[--m_done]->undoIt();
    }
    void redo() {
        if (m_done < m_commands.size())
            m_commands[m_done++]->doIt();
    }

public Q_SLOTS:
    void take(Prm::ParameterChange& change) {
        std::unique_ptr<Bsc::CompositeCommand> command(change.command);
        command->doIt(); // if this throws, nothing has changed, and the command is deleted
        m_commands.resize(m_done);
        m_commands.push_back(std::move(command));
        ++m_done;
    }

private:
    std::vector<std::unique_ptr<Bsc::CompositeCommand>> m_commands;
    std::size_t m_done = 0;
};
// [stack]
} // namespace

int main() {
    Prm::NumericParameter<double> opacity("opacity");
    Prm::NumericParameter<double> angle("angle");
    Prm::ParameterSet set("logo");
    set.addParameter(opacity);
    set.addParameter(angle);
    UndoStack stack;
    set.AttachCommandRegistrationObserver(&stack, SLOT(take(Prm::ParameterChange&)), true);

    QTextStream out(stdout);
    const auto show = [&](const char* title) {
        QString state = QStringLiteral("opacity %1, angle %2")
                            .arg(opacity.value({Time::fromInt(10)}))
                            .arg(angle.value({Time::fromInt(10)}));
        out << title << state << '\n';
        return state;
    };
    show("new:     ");

    // [offer]
    auto* command = new Bsc::CompositeCommand;
    command->push_back(new Prm::ParameterSetValueEdit(opacity, 1.0, {Time::fromInt(0)}));
    command->push_back(new Prm::ParameterSetValueEdit(angle, 90.0, {Time::fromInt(0)}));
    opacity.registerCompositeCommand(*command, {});
    // [offer]
    auto* shift = new Bsc::CompositeCommand;
    shift->push_back(new Prm::ParameterSetValueEdit(angle, 180.0, {Time::fromInt(20)}));
    Prm::ParameterRetimeEdit::appendToCommand(set, Prm::Retiming::shifted(-5), *shift);
    angle.registerCompositeCommand(*shift, {});

    const QString done = show("done:    ");
    for (int i = 0; i < 2; ++i)
        stack.undo();
    const bool isNew = show("undone:  ") == QLatin1String("opacity 0, angle 0") && !opacity.keyframeCount({});
    for (int i = 0; i < 2; ++i)
        stack.redo();
    return isNew && show("redone:  ") == done && angle.keyframeCount({}) == 2 ? 0 : 1;
}

#include "undo_stack.moc"
