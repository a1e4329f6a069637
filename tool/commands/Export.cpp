#include "tool/Commands.h"
#include "tool/Frames.h"
#include "tool/Project.h"
#include "tool/Streams.h"
#include "tool/exchange/SampleTable.h"

namespace Tool {

int exportProject(Arguments& arguments) {
    Project::declareWithPatterns(arguments, "[PATTERN...]");
    arguments.option({"o", "output"}, "Writes to a file, - for standard output.", "OUT")
        .option("frames", "A..B, A..BxSTEP or single frames; the whole frames of all keyframes unless given.", "FRAMES")
        .example("prm export clip.prm 'logo.*' -o clip.csv --frames 0..96");
    if (!arguments.read())
        return Fine;
    if (!arguments.has("o"))
        throw WrongUse("-o is needed: where to write");
    const QVector<Prm::Time> times =
        arguments.has("frames") ? readFrames(arguments.value("frames")) : QVector<Prm::Time>();
    Project project(arguments);
    const SampleExport samples(project, project.parameters(arguments.patterns()));
    writeOutput(arguments.value("o"), samples.table(times.isEmpty() ? samples.wholeFrames() : times));
    return samples.isComplete() ? Fine : Findings;
}

} // namespace Tool
