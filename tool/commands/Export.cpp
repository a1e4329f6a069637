#include "tool/Commands.h"
#include "tool/Frames.h"
#include "tool/OutputFile.h"
#include "tool/Project.h"
#include "tool/Streams.h"
#include "tool/exchange/SampleTable.h"
#include "tool/exchange/StyleSheet.h"

#include <array>

namespace Tool {

namespace {

/// A form that a project is written in. Returns the exit code.
struct Form {
    const char* name;
    int (*write)(const Arguments& arguments);
};

std::vector<int> nodesOf(const Arguments& arguments, const Project& project) {
    return project.parameters(arguments.patterns());
}

int writeTable(const Arguments& arguments) {
    for (const char* const option : {"view", "fps"}) {
        if (arguments.has(option))
            throw WrongUse("--%1 is for css; a table has all views, and frames", option);
    }
    const QVector<Prm::Time> times =
        arguments.has("frames") ? readFrames(arguments.value("frames")) : QVector<Prm::Time>();
    Project project(arguments);
    const SampleExport samples(project, nodesOf(arguments, project));
    writeOutput(arguments.value("o"), samples.table(times.isEmpty() ? samples.wholeFrames() : times));
    return samples.isComplete() ? Fine : Findings;
}

int writeStyleSheet(const Arguments& arguments) {
    if (arguments.has("frames"))
        throw WrongUse("--frames is for csv; a style sheet has the keyframes themselves");
    const double framesPerSecond = numberOption(arguments, "fps");
    if (framesPerSecond <= 0)
        throw WrongUse("--fps gives the frames per second, a number above 0");
    const Prm::View view = viewOption(arguments);
    Project project(arguments);
    const StyleSheet sheet = styleSheet(project, nodesOf(arguments, project), view, framesPerSecond);
    writeOutput(arguments.value("o"), sheet.text);
    for (const QString& loss : sheet.losses)
        tell("%1", loss);
    return sheet.losses.isEmpty() && sheet.isComplete ? Fine : Findings;
}

constexpr std::array forms{Form{"csv", writeTable}, Form{"css", writeStyleSheet}};

/// What --as says, otherwise the ending of the file that is written.
const Form& formOf(const Arguments& arguments) {
    const QString file = arguments.value("o").toLower();
    for (const Form& form : forms) {
        if (arguments.has("as") ? arguments.value("as") == form.name : file.endsWith(message(".%1", form.name)))
            return form;
    }
    if (arguments.has("as"))
        throw WrongUse("--as %1: it is csv or css", arguments.value("as"));
    throw WrongUse("--as says in what form to write: csv or css");
}

} // namespace

int exportProject(Arguments& arguments) {
    Project::declareWithPatterns(arguments, "[PATTERN...]");
    arguments.option({"o", "output"}, "Writes to a file, - for standard output.", "OUT")
        .option("as", "A table of values, or a style sheet; as OUT is called unless given.", "csv|css")
        .option("frames", "For csv: A..B, A..BxSTEP or single frames; all whole frames unless given.", "FRAMES")
        .option("fps", "For css: frames per second.", "FPS")
        .option("view", "For css: the view, 0 unless given.", "N")
        .example("prm export clip.prm 'logo.*' -o clip.csv --frames 0..96");
    if (!arguments.read())
        return Fine;
    if (!arguments.has("o"))
        throw WrongUse("-o is needed: where to write");
    if (isSameFile(arguments.value("o"), arguments.file()))
        throw WrongUse("the project text would be overwritten");
    return formOf(arguments).write(arguments);
}

} // namespace Tool
