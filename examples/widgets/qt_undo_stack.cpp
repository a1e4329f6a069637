// Commands of the library on a QUndoStack: texts in its menu, and a drag that is one step.

#include "host/bsc/CompositeCommand.h"
#include "prm/NumericParameter.h"
#include "prm/ParameterEdits.h"
#include "prm/ParameterSet.h"
#include "prm/UndoableEdit.h"

#include <QTextStream>
#include <QUndoStack>

#include <memory>
#include <utility>

using Prm::Time;

namespace {

// [adapter]
/// A command that was done, as QUndoStack wants it. Commands of one drag are merged where they can be.
class DoneCommand : public QUndoCommand {
public:
    /// A drag has a number; -1 is none.
    DoneCommand(std::unique_ptr<Bsc::Command> done, int drag) : m_command(std::move(done)), m_drag(drag) {
        setText(Prm::undoText(*m_command));
    }
    int id() const override { return m_drag; }
    bool mergeWith(const QUndoCommand* next) override {
        const auto* const other = dynamic_cast<const DoneCommand*>(next);
        if (!other || !Prm::mergeEdits(*m_command, *other->m_command))
            return false;
        setText(Prm::undoText(*m_command));
        return true;
    }
    void undo() override { m_command->undoIt(); }
    /// QUndoStack also calls this when the command is pushed.
    void redo() override {
        if (!std::exchange(m_isNew, false))
            m_command->doIt();
    }

private:
    std::unique_ptr<Bsc::Command> m_command;
    int m_drag;
    bool m_isNew = true;
};
// [adapter]

// [stack]
/// Receives the commands that parameters register.
class UndoStack : public QUndoStack {
    Q_OBJECT

public:
    /// Until the drag ends, like edits in a row become one step.
    void beginDrag() { m_drag = ++m_drags; }
    void endDrag() { m_drag = -1; }

public Q_SLOTS:
    void take(Prm::ParameterChange& change) {
        std::unique_ptr<Bsc::CompositeCommand> command(change.command);
        command->doIt(); // before it is pushed: if this throws, nothing has changed
        push(new DoneCommand(std::move(command), m_drag));
    }

private:
    int m_drags = 0;
    int m_drag = -1;
};
// [stack]

} // namespace

int main() {
    Prm::NumericParameter<double> opacity("opacity");
    Prm::ParameterSet logo("logo");
    logo.addParameter(opacity);
    UndoStack stack;
    logo.AttachCommandRegistrationObserver(&stack, SLOT(take(Prm::ParameterChange&)), true);
    const auto set = [&](double value) {
        auto* const command = new Bsc::CompositeCommand;
        command->push_back(new Prm::ParameterSetValueEdit(opacity, value, Time::fromInt(10)));
        opacity.registerCompositeCommand(*command, Time::fromInt(10));
    };
    set(0.25);
    // [drag]
    stack.beginDrag();
    for (const double value : {0.5, 0.75, 1.0})
        set(value);
    stack.endDrag();
    set(0.0);
    // [drag]
    const auto value = [&] { return opacity.value(Time::fromInt(10)); };
    const bool areThree = stack.count() == 3 && stack.undoText() == "Set value of logo.opacity";
    stack.undo();
    const bool isDragged = value() == 1.0;
    stack.undo();
    const bool isBeforeDrag = value() == 0.25;
    stack.redo();
    QTextStream(stdout) << stack.undoText() << ": " << value() << '\n';
    return areThree && isDragged && isBeforeDrag && value() == 1.0 ? 0 : 1;
}

#include "qt_undo_stack.moc"
