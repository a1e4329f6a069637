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

} // namespace

int evaluate(Arguments& arguments) {
    Project::declareWithPatterns(arguments);
    arguments.option("frames", "A..B, A..BxSTEP or single frames, separated by commas.", "FRAMES")
        .option("times-from", "Reads the frames from a file.", "FILE")
        .option("view", "The view to look at, 0 unless given.", "N")
        .tableOptions()
        .example("prm eval project.prm blur.size --frames 0..100x5 --view 1");
    if (!arguments.read())
        return Fine;
    const TableForm form = arguments.tableForm();
    const QVector<Prm::Time> times = timesOf(arguments);
    const Prm::View view = viewOption(arguments);
    Project project(arguments);
    const std::vector<int> nodes = project.parameters(arguments.patterns());
    Budget(Most::values, "more than %1 values").spend(times.size() * static_cast<qint64>(nodes.size()));

    QStringList headings("frame");
    std::vector<QVector<QVariant>> columns;
    bool isComplete = true;
    project.forEach(nodes, "evaluating", [&](const FileParameter& parameter) {
        headings.append(parameter.path());
        isComplete = canBeEvaluated(parameter) && isComplete;
        columns.push_back(project.kinds().shown(parameter).sample(times, view));
    });
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
