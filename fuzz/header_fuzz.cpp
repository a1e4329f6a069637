// The version header, by its three readers: what was read and written reads back alike, and the readers agree.

#include "fuzz/Fuzz.h"
#include "prm/ParameterSet.h"
#include "prm/ProjectFile.h"
#include "tool/ProjectText.h"

#include <QTextStream>

using namespace Prm;

namespace {

QByteArray written(ProjectFileVersion version) {
    ParameterSet properties;
    version.initialiseProperties(properties);
    QString text;
    QTextStream stream(&text);
    properties.bStreamOut(stream, {}, true);
    stream.flush();
    return text.toUtf8();
}

ProjectFileVersion readBy(ProjectFile& file, const QByteArray& text) {
    HOLD(file.loadText(text));
    return file.version();
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray text = Fuzz::bytesOf(data, size);
    ParameterSet root;
    ProjectFile file(root);
    if (!file.loadText(text)) {
        HOLD(file.report().front().reason == ProjectFileFinding::ConflictMarker ||
             !text.contains("FileVersion.value="));
        return 0;
    }
    ProjectFileVersion seen = file.version();
    const bool incomplete =
        !file.report().isEmpty() && file.report().front().reason == ProjectFileFinding::IncompleteHeader;
    HOLD(seen.streamVersion != StreamVersion::invalid);
    static_cast<void>(seen.timestamp().isValid());
    static_cast<void>(BuildVersion(seen) < BuildVersion(seen.productVersion, {}));

    ProjectFileVersion streamed;
    QTextStream stream(text);
    stream.setCodec("UTF-8");
    streamed.read(stream);
    HOLD(streamed.atEnd() || stream.atEnd());

    const Tool::ProjectText tool(text);
    HOLD(tool.hasCompleteHeader() == !incomplete);
    if (!incomplete) {
        // Of an older one, only the first line is the header.
        const QByteArray once = written(seen);
        if (seen.streamVersion >= StreamVersion::versionInfo2)
            Fuzz::same("a header reads back", once, written(readBy(file, once)));
        // The tool has no use for the time.
        ProjectFileVersion tools = tool.version();
        tools.setTimestamp({});
        seen.setTimestamp({});
        Fuzz::same("library and tool read one header", written(seen), written(tools));
    }
    return 0;
}
