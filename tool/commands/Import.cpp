// Animations of other programs.

#include "prm/ParameterSet.h"
#include "prm/ProjectFile.h"
#include "tool/Arguments.h"
#include "tool/Commands.h"
#include "tool/OutputFile.h"
#include "tool/Problem.h"
#include "tool/Streams.h"
#include "tool/import/AnimationImport.h"

#include <QFileInfo>
#include <QTextStream>

namespace Tool {

namespace {

const QString standardStream = QStringLiteral("-");
const QString output = QStringLiteral("output");
const QString map = QStringLiteral("map");

bool isSameFile(const QString& a, const QString& b) {
    const QFileInfo one(a);
    const QFileInfo other(b);
    const bool sameName = one.absoluteFilePath() == other.absoluteFilePath();
    return a != standardStream && (sameName || (one.exists() && other.exists() && one == other));
}

void declare(Arguments& arguments) {
    arguments.positional(QStringLiteral("ANIMATION"), QStringLiteral("A Lottie file (JSON), - for standard input."))
        .option({QStringLiteral("o"), output},
                QStringLiteral("Writes the project text to a file, not to standard output."), QStringLiteral("OUT"))
        .option({map}, QStringLiteral("Writes a table of what became of every entry: held, changed or left out."),
                QStringLiteral("TABLE"))
        .example(QStringLiteral("prm import clip.json -o clip.prm --map clip.tsv"));
}

struct Places {
    QString text;
    QString table;
};

Places placesOf(const Arguments& arguments) {
    Places places{arguments.has(output) ? arguments.value(output) : standardStream, arguments.value(map)};
    const bool hasTable = arguments.has(map);
    if (isSameFile(places.text, arguments.file()) || (hasTable && isSameFile(places.table, arguments.file())))
        throw WrongUse(QStringLiteral("the animation would be overwritten"));
    if (hasTable && (places.table == places.text || isSameFile(places.table, places.text)))
        throw WrongUse(QStringLiteral("the project text and the table need different files"));
    return places;
}

/// Nothing is in its place until everything could be written.
void write(const Places& places, const ImportResult& result) {
    OutputFile text(places.text);
    text.write(Prm::ProjectFile(*result.root).text());
    if (places.table.isEmpty()) {
        text.commit();
        return;
    }
    OutputFile table(places.table);
    table.write(result.report.table());
    table.commit();
    text.commit();
}

} // namespace

int importAnimation(Arguments& arguments) {
    declare(arguments);
    if (!arguments.read(1, 1))
        return Fine;
    const Places places = placesOf(arguments);
    const ImportResult result = importAnimation(readInput(arguments.file(), largestAnimation));
    if (!result.root)
        throw Problem(QStringLiteral("%1:%2").arg(arguments.file(), result.error));
    write(places, result);
    QString summary;
    QTextStream stream(&summary);
    result.report.summarise(stream);
    report(summary.trimmed());
    return result.report.hasLosses() ? Findings : Fine;
}

} // namespace Tool
