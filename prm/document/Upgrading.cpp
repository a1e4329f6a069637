#include "prm/document/Upgrading.h"

#include "prm/ParameterSet.h"
#include "prm/document/Problem.h"
#include "prm/document/Progress.h"

#include <QTextStream>

#include <algorithm>

namespace Prm::document {

namespace {

QByteArray nameOf(const QByteArray& line) {
    return line.left(line.indexOf('.'));
}

/// What the file already says of its writer stays; only the version of the format is another.
Lines upgradedHeader(const ProjectText& text) {
    Lines header = newestHeader();
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
    int first = FileValue::noLine;
    for (int i = text.lineCount() - 1; i >= 0; --i) {
        if (text.key(i) == Key::Header)
            changes[first = i].own = Lines();
    }
    const Lines header = upgradedHeader(text);
    Lines& place = changes[std::max(first, 0)].before;
    place.insert(place.begin(), header.begin(), header.end());
}

/// Parameters whose lines a reader of the newest version takes in another sense.
void changeParameters(const ProjectText& text, LineChanges& changes) {
    ProjectFileVersion newest;
    newest.streamVersion = StreamVersion::latest;
    Progress progress("upgrading", static_cast<std::size_t>(text.nodeCount()));
    for (int node = 0; node < text.nodeCount(); ++node) {
        progress.step();
        if (!text.node(node).isParameter())
            continue;
        const FileParameter parameter(text, node);
        changes.merge(changedLines(text, parameter.views(), parameter, newest));
    }
}

} // namespace

Lines newestHeader() {
    ProjectFileVersion version("prm");
    ParameterSet properties;
    version.initialiseProperties(properties);
    QString text;
    QTextStream stream(&text);
    properties.bStreamOut(stream, QString(), false);
    stream.flush();
    Lines lines;
    for (const QString& line : text.split('\n', Qt::SkipEmptyParts))
        lines.push_back(line.toUtf8());
    return lines;
}

LineChanges upgradingChanges(const ProjectText& text, const QString& name) {
    const quint32 version = text.version().streamVersion;
    if (version > StreamVersion::latest)
        throw Problem("%1: written in version %2 of the format, newer than %3; a newer prm is needed", name, version,
                      StreamVersion::latest);
    LineChanges changes;
    if (version < StreamVersion::latest)
        changeParameters(text, changes);
    if (version < StreamVersion::latest || !text.hasCompleteHeader())
        changeHeader(text, changes);
    return changes;
}

} // namespace Prm::document
