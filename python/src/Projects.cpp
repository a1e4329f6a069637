#include "python/src/Bindings.h"
#include "python/src/Home.h"
#include "python/src/Opening.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <boost/make_shared.hpp>

namespace PrmPython {

namespace {

QStringList rulesOf(const std::optional<py::dict>& kinds) {
    QStringList rules;
    if (kinds)
        for (const auto& [pattern, kind] : *kinds)
            rules << textOf(pattern) + "=" + textOf(kind);
    return rules;
}

HomePointer makeProject(const py::iterable& groups) {
    buryLeftBehind();
    HomePointer home = kept(new Home(boost::make_shared<Prm::ParameterSet>()));
    for (const py::handle group : groups)
        addMember(home, *home->root, group);
    home->history.clear();
    return home;
}

std::optional<QStringList> namesFrom(const std::optional<py::iterable>& views) {
    return views ? std::optional<QStringList>(listOf(*views)) : std::nullopt;
}

HomePointer openProject(const py::object& path, const std::optional<py::dict>& kinds,
                        const std::optional<py::iterable>& views) {
    return readProject(contentsOf(path), rulesOf(kinds), namesFrom(views));
}

void saveProject(const HomePointer& self, const py::object& path, std::optional<double> timestamp) {
    const QString name = fileNameOf(path);
    if (name.contains(QChar(0)) || QFile::decodeName(QFile::encodeName(name)) != name)
        raise(PyExc_ValueError, "no file can have this name: " + name);
    Prm::ProjectFile& file = self->ownedFile();
    file.setTimeOfWriting(timestamp ? QDateTime::fromMSecsSinceEpoch(qRound64(*timestamp * 1000.0), Qt::UTC)
                                    : QDateTime());
    bool isSaved = false;
    {
        const Counted<int> saving(self->saving);
        const Working working;
        isSaved = file.save(name);
    }
    if (!isSaved)
        raise(PyExc_OSError, name + ": " + file.errorString());
}

/// The statement "with project.edit(...)".
class EditBlock {
public:
    EditBlock(HomePointer home, const QString& text) : m_home(std::move(home)), m_text(text) {}

    void enter() {
        if (m_block)
            throw NotNow("this edit block is entered already");
        m_home->ownedRoot();
        m_block = m_home->history.begin(m_text);
    }
    void exit(py::handle error, py::handle, py::handle) {
        if (!m_block)
            throw NotNow("this edit block is not entered");
        m_home->ownedRoot();
        const History::Block block = std::exchange(m_block, nullptr);
        if (error.is_none())
            m_home->history.end(block);
        else
            m_home->history.rollBack(block);
    }

private:
    HomePointer m_home;
    QString m_text;
    History::Block m_block;
};

/// Undoes or redoes; returns the text of the step, or none.
template <void (History::*act)(), const std::vector<History::Step>& (History::*steps)() const>
std::optional<QString> stepped(const HomePointer& self) {
    self->ownedRoot();
    const auto& from = (self->history.*steps)();
    auto text = from.empty() ? std::optional<QString>() : from.back().text;
    (self->history.*act)();
    return text;
}

template <const std::vector<History::Step>& (History::*steps)() const>
std::optional<QString> nextText(const HomePointer& self) {
    self->ownedRoot();
    const auto& all = (self->history.*steps)();
    return all.empty() ? std::optional<QString>() : all.back().text;
}

GroupHandle rootOf(const HomePointer& self) {
    return {self, self->ownedRoot()};
}

void bindFiles(py::class_<Home, HomePointer>& project) {
    project.def_static("open", &openProject, py::arg("path"), py::kw_only(), py::arg("kinds") = py::none(),
                       py::arg("views") = py::none(),
                       "Opens the project text of any application. What values are is guessed from the text, or given: "
                       "kinds={\"logo.*\": \"switch\"}, with \"number\", \"switch\", \"point\", \"text\". views: their "
                       "names, \"Left\" and \"Right\" if not given.\n\nRaises OSError for a file that cannot be read, "
                       "ValueError for one that is no project text.");
    project.def_static(
        "from_text",
        [](const py::object& text, const std::optional<py::dict>& kinds, const std::optional<py::iterable>& views) {
            return readProject(utf8FromText(text), rulesOf(kinds), namesFrom(views));
        },
        py::arg("text"), py::kw_only(), py::arg("kinds") = py::none(), py::arg("views") = py::none(),
        "As open, of a text.");
    project.def("save", &saveProject, py::arg("path"), py::kw_only(), py::arg("timestamp") = py::none(),
                "Writes the project text; the former file stays until the new one is complete. timestamp: the time in "
                "the header, in seconds since 1970.\n\nRaises OSError. See save_losses before.");
    project.def_property_readonly(
        "text", [](const HomePointer& self) { return textFromUtf8(self->ownedFile().text()); },
        "The project text. Bytes that are no UTF-8 are lone surrogates (\"surrogateescape\").");
    project.def_property_readonly(
        "save_losses", [](const HomePointer& self) { return toPython(self->ownedFile().saveLosses()); },
        "A sentence for each thing that saving would lose.");
    project.def_property_readonly(
        "findings",
        [](const HomePointer& self) {
            const auto report = self->ownedFile().report();
            return std::vector<Prm::ProjectFileFinding>(report.begin(), report.end());
        },
        "What loading has to say of single lines.");
}

void bindSteps(py::class_<Home, HomePointer>& project) {
    using Steps = History;
    project.def("undo", &stepped<&Steps::undo, &Steps::done>,
                "Undoes the last step. Returns its text, None if there is none.\n\nRaises what an observer raises; the "
                "step is then not undone.");
    project.def("redo", &stepped<&Steps::redo, &Steps::undone>, "Does the last undone step again. Returns its text.");
    project.def_property_readonly("undo_text", &nextText<&Steps::done>, "The text of what undo would undo, or None.");
    project.def_property_readonly("redo_text", &nextText<&Steps::undone>, "The text of what redo would do, or None.");
    project.def(
        "forget_steps", [](const HomePointer& self) { self->ownedRoot(), self->history.clear(); },
        "Forgets what could be undone and redone. Removed members that nothing else keeps are deleted.");
    project.def_property_readonly(
        "is_replaying", [](const HomePointer& self) { return self->history.isReplaying(); },
        "Whether undo or redo runs. Then edits are refused, so a callback that edits asks.");
    project.def(
        "edit", [](const HomePointer& self, const QString& text) { return EditBlock(self, text); },
        py::arg("text") = QString(),
        "A block of edits that is one undo step: with project.edit(\"Slow down\"). Nothing of it remains if the block "
        "raises. Blocks may be nested.");
}

void bindOwnership(py::class_<Home, HomePointer>& project) {
    project.def(
        "close", [](const HomePointer& self) { self->close(); },
        "Deletes all parameters and groups, also those that are referred to: these raise ReferenceError.");
    project.def("__enter__", [](const py::object& self) { return self; });
    project.def("__exit__", [](const HomePointer& self, py::handle, py::handle, py::handle) { self->close(); });
    project.def_property_readonly(
        "alive", [](const HomePointer& self) { return self->root != nullptr; }, "Whether the project is not closed.");
    project.def(
        "take_over",
        [](const HomePointer& self) {
            if (self->history.isBusy() || self->saving > 0)
                throw NotNow("the project is being edited or saved");
            self->owner = std::this_thread::get_id();
        },
        "Makes the calling thread the one that may edit. Raises RuntimeError while another thread edits.");
    project.def_property(
        "view_names",
        [](const HomePointer& self) {
            QStringList names;
            for (const Prm::View view : self->views.allViews())
                names << self->views.viewName(view);
            return toPython(names);
        },
        [](const HomePointer& self, const py::iterable& names) {
            self->ownedRoot(), setViewNames(*self, listOf(names));
        },
        "The names of the views from 0 on. Project text has no names.");
}

} // namespace

void bindProjects(py::module_& module) {
    using Finding = Prm::ProjectFileFinding;
    py::class_<Finding>(module, "Finding", "What loading has to say of a line.")
        .def_readonly("line", &Finding::lineNumber, "Counted from 1.")
        .def_property_readonly("text", [](const Finding& self) { return self.text; })
        .def_property_readonly("reason", &Finding::reasonToString)
        .def("__repr__", [](const Finding& self) {
            return py::str("<prm.Finding line {}: {}>").format(self.lineNumber, self.reasonToString());
        });
    py::class_<EditBlock>(module, "EditBlock", "What Project.edit returns.")
        .def("__enter__", &EditBlock::enter)
        .def("__exit__", &EditBlock::exit);
    py::class_<Home, HomePointer> project(
        module, "Project",
        "A project: groups of parameters, undo steps, project text. A mapping.\n\nThe "
        "thread that made it edits; others may evaluate. Parameters that were found "
        "in it keep it.");
    project.def(py::init(&makeProject), py::arg("groups") = py::tuple(), "A project of the given groups.");
    project.def_static("new", &makeProject, py::arg("groups") = py::tuple(), "The same.");
    bindFiles(project);
    bindSteps(project);
    bindOwnership(project);
    project.def_property_readonly("root", &rootOf, "The group without a name that holds all others.");
    project.def("__repr__", [](const HomePointer& self) {
        if (!self->root)
            return py::str("<prm.Project, closed>");
        return self->isOwned() ? py::str("<prm.Project of {} members>").format(self->root->members().size())
                               : py::str("<prm.Project of another thread>");
    });
}

} // namespace PrmPython
