#include "tool/Commands.h"
#include "tool/Frames.h"
#include "tool/Project.h"
#include "tool/Streams.h"

namespace Tool {

namespace {

QVector<Prm::Time> timesOf(const Arguments& arguments) {
    return arguments.hasFirstOf("frames", "times-from") ? readFrames(arguments.value("frames"))
                                                        : readTimesFile(arguments.value("times-from"));
}

std::pair<Table, int> valuesOf(Project& project, const QStringList& patterns, const QVector<Prm::Time>& times,
                               Prm::View view) {
    const std::vector<int> nodes = project.parameters(patterns);
    Budget(Most::values, "more than %1 values; name fewer parameters or frames")
        .spend(times.size() * static_cast<qint64>(nodes.size()), inputName(project.file()));
    QStringList headings("frame");
    std::vector<QVector<QVariant>> columns;
    bool isComplete = true;
    project.forEach(nodes, "evaluating", [&](const FileParameter& parameter) {
        headings.append(parameter.path());
        isComplete = project.canBeEvaluated(parameter) && isComplete;
        columns.push_back(project.kinds().shown(parameter).sample(times, view));
    });
    Table table(headings);
    for (int i = 0; i < times.size(); ++i) {
        QVector<QVariant> row{times[i].toDouble()};
        for (const QVector<QVariant>& values : columns)
            row.append(values[i]);
        table.add(row);
    }
    return {std::move(table), isComplete ? Fine : Findings};
}

} // namespace

int evaluate(Arguments& arguments) {
    Project::declareWithPatterns(arguments);
    arguments.option("frames", "A..B, A..BxSTEP or single frames, separated by commas.", "FRAMES")
        .option("times-from", "Reads the frames from a file.", "FILE")
        .option("view", "The view to look at, 0 unless given.", "N")
        .severalFiles()
        .tableOptions()
        .example("prm eval project.prm blur.size --frames 0..100x5 --view 1");
    if (!arguments.read())
        return Fine;
    const QVector<Prm::Time> times = timesOf(arguments);
    const Prm::View view = viewOption(arguments);
    return printTables(arguments,
                       [&](Project& project) { return valuesOf(project, arguments.patterns(), times, view); });
}

} // namespace Tool
