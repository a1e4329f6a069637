// A small host: a document with two views, a set with a compound, one undo stack for all, and a project file.

#include "host/bsc/CompositeCommand.h"
#include "prm/CompoundParameter.h"
#include "prm/NumericParameter.h"
#include "prm/ParameterEdits.h"
#include "prm/ProjectFile.h"
#include "prm/Views.h"

#include <QTextStream>

#include <memory>
#include <vector>

// [document]
/// A logo that moves and fades, seen by two eyes. Every edit goes through `set`, and can be undone.
class Document : public QObject {
    Q_OBJECT

public:
    Document() {
        views.setViewNames({{"Left", "L"}, {"Right", "R"}});
        position.addParameter(x);
        position.addParameter(y);
        logo.addParameter(position);
        logo.addParameter(opacity);
        root.addParameterSet(logo);
        root.AttachCommandRegistrationObserver(this, SLOT(take(Prm::ParameterChange&)), true);
    }
    /// Sets a keyframe in the current view, which has data of its own from then on.
    void set(Prm::ParameterWithoutType& parameter, const QVariant& value, int frame) {
        auto* const command = new Bsc::CompositeCommand;
        const Prm::Context at(Prm::Time::fromInt(frame), views.currentView());
        command->push_back(new Prm::ParameterSplitViewEdit(parameter, at.view));
        command->push_back(new Prm::ParameterSetValueEdit(parameter, value, at));
        parameter.registerCompositeCommand(*command, at);
    }
    void undo() {
        if (m_done.empty())
            return;
        m_done.back()->undoIt();
        m_done.pop_back();
    }

    Prm::Views views;
    Prm::NumericParameter<double> x{"x"}, y{"y"}, opacity{"opacity", 1.0};
    Prm::CompoundParameter position{"position", true};
    Prm::ParameterSet logo{"logo"}, root;
    Prm::ProjectFile file{root};

public Q_SLOTS:
    void take(Prm::ParameterChange& change) {
        std::unique_ptr<Bsc::CompositeCommand> command(change.command);
        command->doIt();
        m_done.push_back(std::move(command));
    }

private:
    std::vector<std::unique_ptr<Bsc::CompositeCommand>> m_done;
};
// [document]

void show(QTextStream& out, const char* title, const Document& shown) {
    out << title << '\n';
    for (const Prm::View view : shown.views.allViews()) {
        const Prm::Context at(Prm::Time::fromInt(5), view);
        out << "    " << shown.views.viewName(view) << " eye: " << shown.x.value(at) << ", " << shown.y.value(at)
            << "; opacity " << shown.opacity.value(at) << '\n';
    }
}

int main() {
    QTextStream out(stdout);
    Document document;
    document.set(document.opacity, 0.5, 0);
    document.set(document.position, QVariantList{0.0, 0.0}, 0);
    document.set(document.position, QVariantList{10.0, 4.0}, 10);
    document.views.setCurrentView(Prm::View(1));
    document.set(document.position, QVariantList{2.0, 0.0}, 0);
    show(out, "frame 5, the right eye on its own:", document);
    Document copy;
    const bool loaded = copy.file.loadText(document.file.text()) && copy.file.report().isEmpty();
    document.undo();
    show(out, "the last edit undone:", document);
    show(out, "what had been written before that:", copy);
    const Prm::Context right(Prm::Time::fromInt(5), Prm::View(1));
    return loaded && copy.x.value(right) == 6.0 && document.x.value(right) == 5.0 && !document.x.isSplit() ? 0 : 1;
}
#include "small_host.moc"
