#include "tool/Project.h"

#include "prm/KeyframeClipboard.h"
#include "tool/ProgressLine.h"
#include "tool/Streams.h"

#include <QFileInfo>

#include <algorithm>

namespace Tool {

namespace {

KindRules rulesOf(const Arguments& arguments) {
    KindRules rules;
    for (const QString& file : arguments.values("types")) {
        int number = 0;
        for (const QString& line : QString::fromUtf8(readInput(file)).split('\n')) {
            ++number;
            const QString rule = line.trimmed();
            if (!rule.isEmpty() && !rule.startsWith('#'))
                rules.add(rule, message("%1:%2: ", file, number));
        }
    }
    for (const QString& rule : arguments.values("type"))
        rules.add(rule, "--type: ");
    return rules;
}

/// A path as messages show it: not a megabyte of it.
QString shownPath(const QString& path) {
    constexpr int longest = 120;
    return path.size() <= longest ? path : path.left(longest) + "...";
}

/// The same problem, with the place of a parameter instead of its path alone.
Problem located(const Problem& problem, const QString& place, const QString& path) {
    const QString text = problem.text();
    if (text.startsWith(place.left(place.indexOf(':') + 1)))
        return problem;
    return Problem("%1: %2", place, text.startsWith(path + ": ") ? text.mid(path.size() + 2) : text);
}

/// Throws for a text that was given as a project and is none.
void refuseUnlessProject(const ProjectText& text, const QByteArray& bytes, const QString& file) {
    if (text.isProject())
        return;
    constexpr int beginning = 1000;
    const QByteArray start = bytes.left(beginning).trimmed();
    const bool isCopied = Prm::KeyframeClipboard::isClipboardText(QString::fromUtf8(start));
    const char* const hint = isCopied                ? "; these are copied keyframes"
                             : start.startsWith('{') ? "; prm import reads animations (JSON)"
                             : bytes.isEmpty()       ? ", it is empty"
                                                     : "";
    throw Problem("%1: not a project text%2", inputName(file), hint);
}

} // namespace

ProjectText readProject(const QString& file) {
    const QByteArray bytes = readInput(file);
    ProjectText text(bytes);
    refuseUnlessProject(text, bytes, file);
    return text;
}

QByteArray readProjectOrNothing(const QString& file, const QString& name) {
    QByteArray bytes = readInput(file);
    if (!bytes.isEmpty())
        refuseUnlessProject(ProjectText(bytes), bytes, name.isEmpty() ? file : name);
    return bytes;
}

void tellNote(const Evaluability& found) {
    if (!found.settledBy.isEmpty())
        tell("%1; --type %2 settles it", found.note, found.settledBy);
    else if (!found.note.isEmpty())
        tell("%1", found.note);
}

void Project::declare(Arguments& arguments, const char* syntax) {
    arguments.positional("FILE", "A project text, - for standard input.", syntax)
        .option("type", "How the values of parameters are read: switch, number, point or text.", "PATTERN=TYPE")
        .option("types", "A file of such rules, one to a line.", "FILE");
}

void Project::declareWithPatterns(Arguments& arguments, const char* syntax) {
    declare(arguments);
    arguments.positional("PATTERN", "Paths of parameters or groups, or shell patterns.", syntax);
}

Project::Project(const Arguments& arguments) : Project(arguments.file(), rulesOf(arguments)) {}

Project::Project(const QString& file, const KindRules& rules) : m_name(file), m_document(readProject(file), rules) {}

QString Project::place(const FileParameter& parameter, int line) const {
    if (line == FileValue::noLine)
        return place(parameter.node());
    return message("%1:%2: %3", inputName(m_name), line + 1, shownPath(parameter.path()));
}

QString Project::place(int node) const {
    const std::vector<int>& lines = text().node(node).lines;
    return message("%1:%2: %3", inputName(m_name), lines.empty() ? 1 : lines.front() + 1, shownPath(text().path(node)));
}

bool Project::canBeEvaluated(const FileParameter& parameter) const {
    Evaluability found = evaluability(parameter);
    if (!found.note.isEmpty())
        found.note = place(parameter) + found.note.mid(parameter.path().size());
    if (parameter.kind() == &ValueKind::opaque)
        found.note += "; --type gives one";
    tellNote(found);
    return found.isGiven;
}

std::vector<int> Project::parameters(const QStringList& patterns) const {
    try {
        return m_document.parameters(patterns, inputName(m_name) + ": ");
    } catch (const Problem& problem) {
        const bool areFiles =
            std::any_of(patterns.begin(), patterns.end(), [](const QString& each) { return QFileInfo(each).isFile(); });
        throw Problem("%1; %2", problem.text(), areFiles ? "several files come after --files" : "prm ls lists them");
    }
}

void Project::forEach(const std::vector<int>& nodes, const char* work,
                      const std::function<void(const FileParameter& parameter)>& visit) {
    m_document.forEach(nodes, work, [&](const FileParameter& parameter) {
        try {
            visit(parameter);
        } catch (const WrongUse&) {
            throw;
        } catch (const Problem& problem) {
            throw located(problem, place(parameter), parameter.path());
        }
    });
}

namespace {

/// What came of several files.
class Outcomes {
public:
    /// Returns the exit code for one of them.
    int use(const QString& file, const KindRules& rules, const std::function<int(Project& project)>& use) {
        m_total++;
        m_isRead = false;
        try {
            Project project(file, rules);
            m_isRead = true;
            const int code = use(project);
            (code == Fine ? m_fine : m_withFindings)++;
            return code;
        } catch (const std::bad_alloc&) {
            tellError(message("%1: out of memory", inputName(file)));
        } catch (const WrongUse&) {
            throw;
        } catch (const OutputProblem&) {
            throw;
        } catch (const Problem& problem) {
            tellError(problem.text());
        }
        (m_isRead ? m_failed : m_unread)++;
        return Unusable;
    }

    /// "500 files: 498 fine, 1 with findings, 1 could not be read".
    QString text() const {
        QStringList parts;
        for (const auto& [count, what] : {std::pair(m_fine, "fine"), std::pair(m_withFindings, "with findings"),
                                          std::pair(m_unread, "could not be read"), std::pair(m_failed, "failed")}) {
            if (count > 0)
                parts.append(message("%1 %2", count, what));
        }
        return message("%1: %2", counted(m_total, "file"), parts.join(", "));
    }

private:
    int m_total = 0;
    int m_fine = 0;
    int m_withFindings = 0;
    int m_unread = 0;
    int m_failed = 0;
    /// Whether the present one could be read.
    bool m_isRead = false;
};

} // namespace

int forEachProject(const Arguments& arguments, const std::function<int(Project& project)>& use,
                   const std::function<void()>& finish) {
    const KindRules rules = rulesOf(arguments);
    const QStringList files = arguments.files();
    if (!arguments.hasSeveralFiles()) {
        Project project(files.value(0), rules);
        const int code = use(project);
        finish();
        return code;
    }
    Outcomes outcomes;
    int worst = Fine;
    for (int i = 0; i < files.size(); ++i) {
        showFileInProgress(i + 1, files.size());
        worst = std::max(worst, outcomes.use(files[i], rules, use));
    }
    hideProgress();
    finish();
    tell("%1", outcomes.text());
    return worst;
}

int printTables(const Arguments& arguments, const std::function<std::pair<Table, int>(Project& project)>& tableOf) {
    const TableForm form = arguments.tableForm();
    Table all;
    const auto use = [&](Project& project) {
        auto [table, code] = tableOf(project);
        if (arguments.hasSeveralFiles())
            all.append(inputName(project.file()), table);
        else
            all = std::move(table);
        return code;
    };
    return forEachProject(arguments, use, [&] { print(all.written(form)); });
}

} // namespace Tool
