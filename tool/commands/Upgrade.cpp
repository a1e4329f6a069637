#include "prm/ParameterSet.h"
#include "tool/Commands.h"
#include "tool/Problem.h"
#include "tool/Progress.h"
#include "tool/edit/Editing.h"
#include "tool/edit/ParameterPatch.h"

#include <QTextStream>

#include <algorithm>

namespace Tool {

namespace {

std::vector<QByteArray> newestHeader() {
    Prm::ProjectFileVersion version(QStringLiteral("prm"));
    Prm::ParameterSet properties;
    version.initialiseProperties(properties);
    QString text;
    QTextStream stream(&text);
    properties.bStreamOut(stream, QString(), false);
    stream.flush();
    std::vector<QByteArray> lines;
    for (const QByteArray& line : text.toUtf8().split('\n')) {
        if (!line.isEmpty())
            lines.push_back(line);
    }
    return lines;
}

QByteArray nameOf(const QByteArray& line) {
    return line.left(line.indexOf('.'));
}

/// What the file already says of its writer stays; only the version of the format is another.
std::vector<QByteArray> upgradedHeader(const ProjectText& text) {
    std::vector<QByteArray> header = newestHeader();
    for (int i = 0; i < text.lineCount(); ++i) {
        const QByteArray line = toBytes(text.line(i));
        const auto found = std::find_if(header.begin() + 1, header.end(),
                                        [&](const QByteArray& each) { return nameOf(each) == nameOf(line); });
        if (text.key(i) == Key::Header && found != header.end())
            *found = line;
    }
    return header;
}

void changeHeader(const ProjectText& text, LineChanges& changes) {
    const std::vector<QByteArray> header = upgradedHeader(text);
    int first = -1;
    for (int i = 0; i < text.lineCount(); ++i) {
        if (text.key(i) != Key::Header)
            continue;
        changes[i] = first < 0 ? header : std::vector<QByteArray>();
        first = first < 0 ? i : first;
    }
    if (first >= 0)
        return;
    std::vector<QByteArray>& lines = changes[0];
    if (lines.empty())
        lines = {toBytes(text.line(0))};
    lines.insert(lines.begin(), header.begin(), header.end());
}

/// Parameters whose lines a reader of the newest version takes in another sense.
void changeParameters(const ProjectText& text, LineChanges& changes) {
    Prm::ProjectFileVersion newest;
    newest.streamVersion = Prm::StreamVersion::latest;
    Progress progress("upgrading", text.nodes().size());
    for (int node = 0; node < static_cast<int>(text.nodes().size()); ++node) {
        progress.step();
        if (!text.node(node).isParameter())
            continue;
        const std::vector<ParameterLine> lines = linesOf(text, node);
        const WrittenParameter parameter(lines, text.version());
        const WrittenState state = parameter.state();
        if (!(WrittenParameter(lines, newest).state().views == state.views))
            changes.merge(allLines(text, node, state, parameter, newest));
    }
}

} // namespace

int upgrade(Arguments& arguments) {
    Project::declare(arguments);
    declareOutput(arguments);
    arguments.example(QStringLiteral("prm upgrade project.prm -o upgraded.prm"));
    if (!arguments.read(1, 1))
        return Fine;
    outputOf(arguments);
    const Project project(arguments);
    const ProjectText& text = project.text();
    const quint32 version = text.version().streamVersion;
    if (version > Prm::StreamVersion::latest)
        throw Problem(QStringLiteral("%1: written in version %2 of the format, newer than %3")
                          .arg(arguments.file())
                          .arg(version)
                          .arg(Prm::StreamVersion::latest));
    LineChanges changes;
    if (version < Prm::StreamVersion::latest)
        changeParameters(text, changes);
    if (version < Prm::StreamVersion::latest || !text.hasCompleteHeader())
        changeHeader(text, changes);
    writeEdited(arguments, text, bytesWith(text, changes));
    return Fine;
}

} // namespace Tool
