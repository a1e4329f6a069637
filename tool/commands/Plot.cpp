#include "tool/Commands.h"
#include "tool/Frames.h"
#include "tool/PlotCurves.h"
#include "tool/PlotPicture.h"
#include "tool/PlotText.h"
#include "tool/Project.h"
#include "tool/Streams.h"

#include <QFileInfo>

#include <algorithm>
#include <sys/ioctl.h>
#include <unistd.h>

namespace Tool {

namespace {

/// What an option says, otherwise `usual`. Throws `WrongUse` for a number out of its limits.
int sizeOf(const Arguments& arguments, const QString& option, int least, int most, int usual) {
    if (!arguments.has(option))
        return usual;
    bool isNumber = false;
    const int size = arguments.value(option).toInt(&isNumber);
    if (!isNumber || size < least || size > most)
        throw WrongUse("--%1 is a number from %2 to %3", option, least, most);
    return size;
}

/// How wide the terminal is on standard output; without one what COLUMNS says, or 80.
int terminalColumns() {
    winsize size{};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0)
        return size.ws_col;
    const int columns = qEnvironmentVariableIntValue("COLUMNS");
    return columns > 0 ? columns : 80;
}

std::vector<Prm::View> viewsOf(const Arguments& arguments) {
    const bool areAll = arguments.has("all-views");
    if (areAll && arguments.has("view"))
        throw WrongUse("--view and --all-views exclude each other");
    std::vector<Prm::View> views;
    for (const QString& text : arguments.values("view")) {
        const Prm::View wanted = readView(text);
        if (std::find(views.begin(), views.end(), wanted) == views.end())
            views.push_back(wanted);
    }
    if (views.empty() && !areAll)
        views.emplace_back();
    return views;
}

PlotRequest requestOf(const Arguments& arguments) {
    PlotRequest request;
    request.views = viewsOf(arguments);
    if (arguments.has("frames")) {
        const auto [first, last] = readRange(arguments.value("frames"));
        request.frames = PlotRange{first.toDouble(), last.toDouble()};
    }
    return request;
}

/// Where the picture goes. Throws `WrongUse` when that is where the project is.
QString pictureName(const Arguments& arguments) {
    QString name = arguments.value("o");
    const QFileInfo info(name);
    if (name != "-" && info.exists() && info == QFileInfo(arguments.file()))
        throw WrongUse("the project text would be overwritten");
    return name;
}

void declare(Arguments& arguments) {
    Project::declareWithPatterns(arguments);
    arguments.option("frames", "The frames to show, otherwise those with keyframes.", "A..B")
        .option("view", "A view to show, 0 unless given; may be repeated.", "N")
        .option("all-views", "Shows each view that has keyframes or a value.")
        .option({"o", "output"}, "Writes a picture (SVG) instead, - for standard output.", "FILE")
        .option("width", "Characters, or pixels of the picture.", "N")
        .option("height", "Of the curves, in lines or pixels.", "N")
        .example("prm plot project.prm blur.size --all-views")
        .example("prm plot project.prm 'blur.*' --frames 0..100 -o blur.svg");
}

Plot sampled(const Arguments& arguments, int samples) {
    PlotRequest request = requestOf(arguments);
    Project project(arguments);
    request.parameters = project.parameters(arguments.patterns());
    request.samples = samples;
    return plotOf(project, request);
}

void drawPicture(const Arguments& arguments) {
    constexpr int least = 200;
    constexpr int most = 20000;
    const int width = sizeOf(arguments, "width", least, most, 960);
    const int height = sizeOf(arguments, "height", least, most, 540);
    const QString name = pictureName(arguments);
    writeOutput(name, plotPicture(sampled(arguments, 2 * width), width, height));
}

void drawInTerminal(const Arguments& arguments) {
    constexpr int least = 20;
    constexpr int most = 1000;
    const int usual = std::min(std::max(terminalColumns(), least), most);
    const TextSize size{sizeOf(arguments, "width", least, most, usual), sizeOf(arguments, "height", 4, 500, 20),
                        hasColours(stdout)};
    print(plotText(sampled(arguments, 4 * size.columns), size));
}

} // namespace

int plot(Arguments& arguments) {
    declare(arguments);
    if (!arguments.read())
        return Fine;
    if (arguments.has("o"))
        drawPicture(arguments);
    else
        drawInTerminal(arguments);
    return Fine;
}

} // namespace Tool
