#include "tool/Commands.h"
#include "tool/Frames.h"
#include "tool/Problem.h"
#include "tool/Progress.h"
#include "tool/Project.h"
#include "tool/Streams.h"

namespace Tool {

namespace {

constexpr qint64 mostValues = 10000000;

QVector<Prm::Time> timesOf(const Arguments& arguments) {
    const QString frames = QStringLiteral("frames");
    const QString file = QStringLiteral("times-from");
    if (arguments.has(frames) == arguments.has(file))
        throw WrongUse(QStringLiteral("one of --frames and --times-from is needed"));
    const QVector<Prm::Time> times =
        arguments.has(frames) ? readFrames(arguments.value(frames)) : readTimesFile(arguments.value(file));
    return times;
}

Prm::View viewOf(const Arguments& arguments) {
    const QString view = QStringLiteral("view");
    return arguments.has(view) ? readView(arguments.value(view)) : Prm::View();
}

/// Whether all values can be evaluated. Says why not, or what else the user should know.
bool canBeEvaluated(Project& project, int node) {
    const QString path = project.text().path(node);
    const ValueKind kind = project.kindOf(node);
    if (kind == ValueKind::NumberOrSwitch)
        tell(QStringLiteral("%1: number or switch, read as a number; --type %1=switch settles it").arg(path));
    if (kind == ValueKind::Opaque)
        tell(QStringLiteral("%1: cannot be evaluated, its values are of no known type").arg(path));
    else if (project.hasContradictedKind(node))
        tell(QStringLiteral("%1: some values are not of type %2, and are read as far as possible")
                 .arg(path, kindName(kind)));
    else
        return true;
    return false;
}

} // namespace

int evaluate(Arguments& arguments) {
    Project::declareWithPatterns(arguments);
    arguments
        .option({QStringLiteral("frames")}, QStringLiteral("A..B, A..BxSTEP or single frames, separated by commas."),
                QStringLiteral("FRAMES"))
        .option({QStringLiteral("times-from")}, QStringLiteral("Reads the frames from a file."), QStringLiteral("FILE"))
        .option({QStringLiteral("view")}, QStringLiteral("The view to look at, 0 unless given."), QStringLiteral("N"))
        .tableOptions()
        .example(QStringLiteral("prm eval project.prm blur.size --frames 0..100x5 --view 1"));
    if (!arguments.read(2, -1))
        return Fine;
    const TableForm form = arguments.tableForm();
    const QVector<Prm::Time> times = timesOf(arguments);
    const Prm::View view = viewOf(arguments);
    Project project(arguments);
    const std::vector<int> nodes = project.parameters(arguments.patterns());
    if (times.size() * static_cast<qint64>(nodes.size()) > mostValues)
        throw Problem(QStringLiteral("more than %1 values").arg(mostValues));

    QStringList headings(QStringLiteral("frame"));
    std::vector<QVector<QVariant>> columns;
    bool isComplete = true;
    Progress progress("evaluating", nodes.size());
    for (const int node : nodes) {
        progress.step();
        headings.append(project.text().path(node));
        isComplete = canBeEvaluated(project, node) && isComplete;
        columns.push_back(project.shown(node).sample(times, view));
    }
    Table table(headings);
    for (int i = 0; i < times.size(); ++i) {
        QVector<QVariant> row{times[i].toDouble()};
        for (const QVector<QVariant>& values : columns)
            row.append(values[i]);
        table.add(row);
    }
    print(table.written(form));
    return isComplete ? Fine : Findings;
}

} // namespace Tool
