#include "prm/exchange/LottieExport.h"
#include "prm/exchange/SampleTable.h"
#include "prm/exchange/StyleSheet.h"
#include "tool/Commands.h"
#include "tool/Frames.h"
#include "tool/OutputFile.h"
#include "tool/Project.h"
#include "tool/Streams.h"

#include <array>
#include <cmath>

namespace Tool {

namespace {

/// A form that a project is written in. Returns the exit code.
struct Form {
    const char* name;
    const char* ending;
    int (*write)(const Arguments& arguments);
};

std::vector<int> nodesOf(const Arguments& arguments, Project& project) {
    return project.parameters(arguments.patterns());
}

int writeTable(const Arguments& arguments) {
    for (const char* const option : {"view", "fps", "size"}) {
        if (arguments.has(option))
            throw WrongUse("--%1 is not for csv; a table has all views, and frames", option);
    }
    const QVector<Prm::Time> times =
        arguments.has("frames") ? readFrames(arguments.value("frames")) : QVector<Prm::Time>();
    Project project(arguments);
    const SampleExport samples(project.document(), nodesOf(arguments, project));
    for (const Evaluability& note : samples.notes())
        tellNote(note);
    writeOutput(arguments.value("o"), samples.table(times.isEmpty() ? samples.wholeFrames() : times));
    return samples.isComplete() ? Fine : Findings;
}

double framesPerSecondOption(const Arguments& arguments) {
    const double framesPerSecond = numberOption(arguments, "fps");
    if (arguments.has("fps") && !(framesPerSecond > 0 && std::isfinite(framesPerSecond)))
        throw WrongUse("--fps gives the frames per second, a number above 0");
    return framesPerSecond;
}

int writeStyleSheet(const Arguments& arguments) {
    if (arguments.has("frames"))
        throw WrongUse("--frames is for csv; a style sheet has the keyframes themselves");
    if (arguments.has("size"))
        throw WrongUse("--size is for lottie; a style sheet has no picture");
    if (!arguments.has("fps"))
        throw WrongUse("--fps gives the frames per second, a number above 0");
    const double framesPerSecond = framesPerSecondOption(arguments);
    const Prm::View view = viewOption(arguments);
    Project project(arguments);
    const StyleSheet sheet = styleSheet(project.document(), nodesOf(arguments, project), view, framesPerSecond);
    writeOutput(arguments.value("o"), sheet.text);
    for (const Evaluability& note : sheet.notes)
        tellNote(note);
    for (const QString& loss : sheet.losses)
        tell("%1", loss);
    return sheet.losses.isEmpty() && sheet.isComplete ? Fine : Findings;
}

QSize sizeOption(const Arguments& arguments) {
    constexpr int usual = 512;
    if (!arguments.has("size"))
        return {usual, usual};
    const QStringList parts = arguments.value("size").split('x');
    const QSize size(parts.value(0).toInt(), parts.value(1).toInt());
    if (parts.size() != 2 || size.width() <= 0 || size.height() <= 0)
        throw WrongUse("--size: '%1' is not width and height, as in 1920x1080", arguments.value("size"));
    return size;
}

int writeLottie(const Arguments& arguments) {
    if (arguments.has("frames"))
        throw WrongUse("--frames is for csv; an animation has the keyframes themselves");
    const LottieOptions options{viewOption(arguments), framesPerSecondOption(arguments), sizeOption(arguments)};
    Project project(arguments);
    const LottieExport result = exportLottie(project.document(), nodesOf(arguments, project), options);
    writeOutput(arguments.value("o"), result.text);
    for (const Evaluability& note : result.notes)
        tellNote(note);
    for (const QString& loss : result.losses)
        tell("%1", loss);
    if (result.madeUp > 0)
        tell("paths, gradients, texts, pictures and sounds that are empty, because project text has none: %1",
             result.madeUp);
    return result.losses.isEmpty() && result.isComplete ? Fine : Findings;
}

constexpr std::array forms{Form{"csv", ".csv", writeTable}, Form{"css", ".css", writeStyleSheet},
                           Form{"lottie", ".json", writeLottie}};

/// What --as says, otherwise the ending of the file that is written.
const Form& formOf(const Arguments& arguments) {
    const QString file = arguments.value("o").toLower();
    for (const Form& form : forms) {
        if (arguments.has("as") ? arguments.value("as") == form.name : file.endsWith(form.ending))
            return form;
    }
    if (arguments.has("as"))
        throw WrongUse("--as: '%1' is not csv, css or lottie", arguments.value("as"));
    throw WrongUse("--as says in what form to write: csv, css or lottie");
}

} // namespace

int exportProject(Arguments& arguments) {
    Project::declareWithPatterns(arguments, "[PATTERN...]");
    arguments.option({"o", "output"}, "Writes to a file, - for standard output.", "OUT")
        .option("as", "A table of values, a style sheet, or an animation (*.json); as OUT is called unless given.",
                "csv|css|lottie")
        .option("frames", "For csv: A..B, A..BxSTEP or single frames; all whole frames unless given.", "FRAMES")
        .option("fps", "For css, and lottie where no layer says it: frames per second.", "FPS")
        .option("view", "For css and lottie: the view, 0 unless given.", "N")
        .option("size", "For lottie: of the picture, 512x512 unless given.", "WxH")
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
