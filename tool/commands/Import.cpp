#include "prm/ParameterSet.h"
#include "prm/ProjectFile.h"
#include "prm/exchange/AnimationImport.h"
#include "prm/exchange/SampleTable.h"
#include "tool/Arguments.h"
#include "tool/Commands.h"
#include "tool/Frames.h"
#include "tool/OutputFile.h"
#include "tool/Streams.h"

#include <QFileInfo>

namespace Tool {

namespace {

struct Places {
    QString text;
    QString table;
};

Places placesOf(const Arguments& arguments) {
    Places places{arguments.has("output") ? arguments.value("output") : "-", arguments.value("map")};
    const bool hasTable = arguments.has("map");
    if (isSameFile(places.text, arguments.file()) || (hasTable && isSameFile(places.table, arguments.file())))
        throw WrongUse("%1 would be overwritten", arguments.file());
    if (hasTable && (places.table == places.text || isSameFile(places.table, places.text)))
        throw WrongUse("the project text and the table need different files");
    return places;
}

ImportResult read(const QString& name) {
    const QByteArray json = readInput(name, Most::bytesOfAnimation);
    try {
        return Prm::document::importAnimation(json);
    } catch (const Problem& problem) {
        throw Problem("%1:%2", name, problem.text());
    }
}

/// Nothing is in its place until everything could be written.
void write(const Places& places, const ImportResult& result) {
    OutputFile text(places.text);
    text.write(Prm::ProjectFile(*result.root).text());
    if (!places.table.isEmpty()) {
        OutputFile table(places.table);
        table.write(result.report.table());
        table.commit();
    }
    text.commit();
}

bool isTable(const Arguments& arguments) {
    const QString name = arguments.file().toLower();
    return arguments.has("table") || name.endsWith(".csv") || name.endsWith(".tsv");
}

SampleImport readTable(const Arguments& arguments) {
    const double framesPerSecond = numberOption(arguments, "fps");
    if (arguments.has("fps") && framesPerSecond <= 0)
        throw WrongUse("--fps: '%1' is not a number above 0", arguments.value("fps"));
    const QByteArray table = readInput(arguments.file());
    try {
        return importSamples(table, framesPerSecond);
    } catch (const Problem& problem) {
        throw Problem("%1:%2", inputName(arguments.file()), problem.text());
    }
}

int importTable(const Arguments& arguments, const Places& places) {
    if (arguments.has("map"))
        throw WrongUse("--map is for animations");
    const SampleImport result = readTable(arguments);
    writeOutput(places.text, result.text);
    for (const QString& change : result.changes)
        tell("%1: %2", inputName(arguments.file()), change);
    tell("%1, %2", counted(result.parameters, "parameter"), counted(result.keyframes, "keyframe"));
    return result.changes.isEmpty() ? Fine : Findings;
}

} // namespace

int importAnimation(Arguments& arguments) {
    arguments.positional("FILE", "A Lottie animation (JSON) or a table of values (*.csv, *.tsv), - for standard input.")
        .option({"o", "output"}, "Writes the project text to a file, not to standard output.", "OUT")
        .option("map", "Writes a table of what became of every entry: held, changed or left out.", "TABLE")
        .option("table", "Standard input is a table of values.")
        .option("fps", "Frames per second, for a table whose times are seconds.", "FPS")
        .example("prm import clip.json -o clip.prm --map clip.tsv");
    if (!arguments.read())
        return Fine;
    const Places places = placesOf(arguments);
    if (isTable(arguments))
        return importTable(arguments, places);
    const ImportResult result = read(arguments.file());
    write(places, result);
    report(result.report.summary());
    return result.report.hasLosses() ? Findings : Fine;
}

} // namespace Tool
