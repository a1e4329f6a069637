#include "prm/Exchange.h"

#include "prm/ProjectDiff.h"
#include "prm/ProjectMerge.h"
#include "python/src/Bindings.h"
#include "python/src/Home.h"
#include "python/src/Opening.h"

namespace PrmPython {

namespace {

/// The result of a function that runs without the interpreter's lock.
template <class Work> auto unlocked(const Work& work) {
    const Working working;
    return work();
}

/// The text of a project, of a file by its path, or bytes.
QByteArray projectText(const py::object& given) {
    if (py::isinstance<Home>(given))
        return given.cast<HomePointer>()->ownedFile().text();
    return PyBytes_Check(given.ptr()) ? utf8FromText(given) : contentsOf(given);
}

HomePointer imported(const Prm::ImportedText& source) {
    HomePointer home = readProject(source.text, {}, {});
    home->importLosses = source.losses;
    return home;
}

HomePointer importAnimation(const py::object& path) {
    const QByteArray json = contentsOf(path);
    return imported(unlocked([&] { return Prm::importAnimation(json); }));
}

HomePointer importTable(const py::object& path, double framesPerSecond) {
    const QByteArray table = contentsOf(path);
    return imported(unlocked([&] { return Prm::importTable(table, framesPerSecond); }));
}

/// Text does not tell switches from numbers.
QStringList rulesOf(const Prm::ParameterSet& root) {
    QStringList rules;
    root.forEachParameter(
        [&](Prm::ParameterWithoutType* parameter) {
            if (dynamic_cast<const Prm::Parameter<bool>*>(parameter))
                rules << parameter->path() + "=switch";
        },
        true);
    return rules;
}

Prm::ExportOptions optionsOf(const HomePointer& self, const py::iterable& patterns, const ViewName& view,
                             double framesPerSecond) {
    Prm::ExportOptions options;
    options.patterns = listOf(patterns);
    options.rules = rulesOf(self->ownedRoot());
    options.view = findView(self.get(), view);
    options.framesPerSecond = framesPerSecond;
    return options;
}

py::str exportTable(const HomePointer& self, const py::iterable& patterns, const std::optional<py::iterable>& times,
                    double framesPerSecond) {
    const QByteArray text = self->ownedFile().text();
    Prm::ExportOptions options = optionsOf(self, patterns, {}, framesPerSecond);
    if (times)
        for (const py::handle time : *times)
            options.times.append(timeOf(numberFrom(time)));
    return textFromUtf8(unlocked([&] { return Prm::exportTable(text, options); }).text);
}

py::str exportStyleSheet(const HomePointer& self, double framesPerSecond, const py::iterable& patterns,
                         const ViewName& view) {
    const QByteArray text = self->ownedFile().text();
    const Prm::ExportOptions options = optionsOf(self, patterns, view, framesPerSecond);
    return textFromUtf8(unlocked([&] { return Prm::exportStyleSheet(text, options); }).text);
}

std::vector<Prm::ProjectDifference> differences(const py::object& from, const py::object& to) {
    const QByteArray first = projectText(from);
    const QByteArray second = projectText(to);
    return unlocked([&] { return Prm::projectDifferences(first, second); });
}

Prm::MergedProject merged(const py::object& base, const py::object& ours, const py::object& theirs,
                          const std::optional<QString>& prefer) {
    const QByteArray texts[] = {projectText(base), projectText(ours), projectText(theirs)};
    if (prefer && *prefer != "ours" && *prefer != "theirs")
        throw py::value_error("prefer is \"ours\" or \"theirs\"");
    Prm::MergeSettlement settlement;
    if (prefer)
        settlement = [side = *prefer == "ours" ? Prm::MergeSide::Ours : Prm::MergeSide::Theirs](const QString&) {
            return std::optional<Prm::MergeSide>(side);
        };
    return unlocked([&] { return Prm::mergeProjects(texts[0], texts[1], texts[2], settlement); });
}

std::vector<Prm::ProjectConflict> mergeInto(const HomePointer& self, const py::object& base, const py::object& theirs,
                                            const std::optional<QString>& prefer) {
    const Prm::MergedProject result = merged(base, py::cast(self), theirs, prefer);
    adoptText(*self, result.text, QStringLiteral("Merge"));
    return result.conflicts;
}

template <class Item> void bindItem(py::class_<Item>& item) {
    item.def_property_readonly("path", [](const Item& self) { return self.path; });
    item.def_property_readonly("view", [](const Item& self) { return toPython(self.view); });
    item.def_property_readonly("what", [](const Item& self) { return self.what; });
    item.def_property_readonly("frame", [](const Item& self) { return toPython(self.frame); });
    item.def_property_readonly("message", [](const Item& self) { return self.message; });
    item.def("__str__", [](const Item& self) { return self.message; });
    item.def("__repr__", [](const py::object& self) {
        return py::str("<prm.{}: {}>").format(py::type::of(self).attr("__name__"), py::str(self));
    });
}

} // namespace

void bindExchange(py::module_& module) {
    using Difference = Prm::ProjectDifference;
    using Conflict = Prm::ProjectConflict;
    py::class_<Difference> difference(module, "Difference", "One thing that two project texts do not say alike.");
    bindItem(difference);
    difference.def_property_readonly("change", [](const Difference& self) { return self.change; });
    difference.def_property_readonly("before", [](const Difference& self) { return toPython(self.from); });
    difference.def_property_readonly("after", [](const Difference& self) { return toPython(self.to); });
    py::class_<Conflict> conflict(module, "Conflict", "One thing that both sides of a merge have changed differently.");
    bindItem(conflict);
    conflict.def_property_readonly("base", [](const Conflict& self) { return toPython(self.base); });
    conflict.def_property_readonly("ours", [](const Conflict& self) { return toPython(self.ours); });
    conflict.def_property_readonly("theirs", [](const Conflict& self) { return toPython(self.theirs); });
    auto project = py::reinterpret_borrow<py::class_<Home, HomePointer>>(module.attr("Project"));
    project.def_static("import_animation", &importAnimation, py::arg("path"),
                       "A project of a Lottie animation (JSON). See import_losses. Raises ValueError with the place.");
    project.def_static("import_table", &importTable, py::arg("path"), py::kw_only(), py::arg("fps") = 0.0,
                       "A project of a table of comma-separated values; fps: the first column may count in seconds.");
    project.def_property_readonly(
        "import_losses", [](const HomePointer& self) { return toPython(self->importLosses); },
        "What is not as the source of the import has it.");
    project.def("export_table", &exportTable, py::arg("patterns") = py::tuple(), py::kw_only(),
                py::arg("times") = py::none(), py::arg("fps") = 0.0,
                "The values of parameters, of all without patterns, as comma-separated values.");
    project.def("export_style_sheet", &exportStyleSheet, py::arg("fps"), py::arg("patterns") = py::tuple(),
                py::kw_only(), py::arg("view") = ViewName(), "Parameters as a style sheet (CSS).");
    project.def("merge", &mergeInto, py::arg("base"), py::arg("theirs"), py::kw_only(), py::arg("prefer") = py::none(),
                "Merges what others have made of a base into this project, in one undo step. Both are paths, projects, "
                "or bytes. Returns the conflicts, in which this project's side is kept unless prefer=\"theirs\".");
    project.def(
        "diff", [](const py::object& self, const py::object& other) { return differences(self, other); },
        py::arg("other"), "What leads from this project to another one: a path, a project, or bytes.");
    module.def("diff", &differences, py::arg("before"), py::arg("after"), "What leads from one project to another.");
}

} // namespace PrmPython
