#include "tool/Commands.h"
#include "tool/Frames.h"
#include "tool/PlotCurves.h"
#include "tool/PlotPicture.h"
#include "tool/PlotText.h"
#include "tool/Project.h"
#include "tool/Streams.h"
#include "tool/TerminalSize.h"

#include <QFileInfo>

#include <algorithm>

namespace Tool {

namespace {

struct Limits {
    int least;
    int most;
};

constexpr Limits columnLimits{20, 1000};
constexpr Limits rowLimits{4, 500};
constexpr Limits pixelLimits{200, 20000};

/// What an option says, otherwise `usual`. Throws `WrongUse` for a number out of its limits.
int sizeOf(const Arguments& arguments, const QString& option, const Limits& limits, int usual) {
    if (!arguments.has(option))
        return usual;
    bool isNumber = false;
    const int size = arguments.value(option).toInt(&isNumber);
    if (!isNumber || size < limits.least || size > limits.most)
        throw WrongUse("--%1 is a number from %2 to %3", option, limits.least, limits.most);
    return size;
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

void plotPicture(const Arguments& arguments, PlotRequest request) {
    const int width = sizeOf(arguments, "width", pixelLimits, 960);
    const int height = sizeOf(arguments, "height", pixelLimits, 540);
    const QString name = pictureName(arguments);
    Project project(arguments);
    request.parameters = project.parameters(arguments.patterns());
    request.samples = 2 * width;
    writeOutput(name, plotPicture(plotOf(project.kinds(), request), width, height));
}

void plotInTerminal(const Arguments& arguments, PlotRequest request) {
    const int usual = std::min(std::max(terminalColumns(), columnLimits.least), columnLimits.most);
    const TextSize size{sizeOf(arguments, "width", columnLimits, usual), sizeOf(arguments, "height", rowLimits, 20),
                        wantsColours()};
    Project project(arguments);
    request.parameters = project.parameters(arguments.patterns());
    request.samples = 4 * size.columns;
    print(plotText(plotOf(project.kinds(), request), size));
}

} // namespace

int plot(Arguments& arguments) {
    declare(arguments);
    if (!arguments.read())
        return Fine;
    const PlotRequest request = requestOf(arguments);
    if (arguments.has("o"))
        plotPicture(arguments, request);
    else
        plotInTerminal(arguments, request);
    return Fine;
}

} // namespace Tool
