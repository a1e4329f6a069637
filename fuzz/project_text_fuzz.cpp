// Any bytes through the tool: they come back as they were, everything can be asked, and an edit is read back as it was
// meant to be, while the lines of others are not touched. Library and tool read the same header.

#include "fuzz/Fuzz.h"
#include "fuzz/Pieces.h"
#include "prm/Explanation.h"
#include "prm/MoveKeyframeEdit.h"
#include "prm/ParameterEdits.h"
#include "prm/ParameterSet.h"
#include "prm/ProjectFile.h"
#include "prm/document/ParameterPatch.h"
#include "prm/document/ProjectDiff.h"
#include "tool/Checks.h"
#include "tool/Project.h"

using namespace Tool;

namespace {

QByteArray written(const FileParameter::Data& parameter) {
    return QByteArray::fromStdString(Prm::lines(parameter, {}, false));
}

/// The lines are read in the order that takes the least time, and say the same as in their own.
void checkOrder(const ProjectText& text, const FileParameter& parameter) {
    FileParameter::Data expected;
    for (const int line : text.node(parameter.node()).lines) {
        if (toView(toText(text.line(line)).toUtf8()) != text.line(line))
            return;
        try {
            expected.streamInValue(toText(text.reading(line).entry), text.version(),
                                   [](const QString& value) { return "0 " + value; });
        } catch (const std::runtime_error&) {
            continue;
        }
    }
    Fuzz::same("any order of reading", written(expected), written(parameter.data()));
}

void readEverything(const ProjectText& text) {
    Kinds kinds(text);
    for (int node = 1; node < text.nodeCount(); ++node) {
        const QString path = text.path(node);
        HOLD(text.findNode(path.toStdString()) == node || path.contains(QChar(0xFFFD)));
        HOLD(text.node(node).parent < node);
        if (!text.node(node).isParameter())
            continue;
        const FileParameter parameter = kinds.read(node);
        checkOrder(text, parameter);
        try {
            const Prm::Context at(Prm::Time::fromInt(3), Prm::View(1));
            const auto values = kinds.shown(parameter).sample({Prm::Time::fromInt(-1), at.time}, at.view);
            const auto chain = kinds.chain(parameter);
            HOLD(chain.empty() || plainText(explain(*chain.front(), at).value) == plainText(values.last()));
        } catch (const Problem&) {
            continue;
        }
    }
    for (const Finding& finding : findingsIn(text))
        HOLD(finding.line >= 0 && finding.line < std::max(text.lineCount(), 1));
}

void edit(FileParameter::Data& parameter, Worlds::Choices& choices) {
    const double times[] = {1, 3, 4.5};
    const Prm::Context place(Prm::Time::fromDouble(times[choices.below(3)]),
                             Prm::View(static_cast<quint32>(choices.below(3))));
    const int what = choices.below(4);
    if (what == 0)
        Prm::ParameterRetimeEdit(parameter, Prm::Retiming::shifted(choices.below(5) - 2)).doIt();
    else if (what == 1)
        Prm::MoveKeyframeEdit(parameter, {Prm::Time::fromInt(5), place.view}, place).doIt();
    else if (what == 2)
        Prm::ParameterSplitViewEdit(parameter, place.view).doIt();
    else
        parameter.vSetValue({"7", FileValue::noLine}, place);
}

QByteArray linesOfOthers(const ProjectText& text, int node) {
    const std::vector<int>& own = text.node(node).lines;
    QByteArray lines;
    for (int i = 0; i < text.lineCount(); ++i) {
        if (!std::binary_search(own.begin(), own.end(), i))
            lines += toBytes(text.line(i)) + '\n';
    }
    return lines;
}

void editEverything(const ProjectText& text, Worlds::Choices& choices) {
    for (int node = 1; node < text.nodeCount(); ++node) {
        if (!text.node(node).isParameter())
            continue;
        const FileParameter parameter(text, node);
        const FileViews before = parameter.views();
        edit(parameter.data(), choices);
        QByteArray bytes;
        try {
            bytes = bytesWith(text, changedLines(text, before, parameter, text.version()));
        } catch (const Problem&) {
            continue; // The format holds only so many digits.
        }
        const ProjectText edited(bytes);
        const int again = edited.findNode(text.reading(text.node(node).lines.front()).path);
        HOLD(again >= 0);
        Fuzz::same("the lines of others", linesOfOthers(text, node), linesOfOthers(edited, again));
        const FileParameter read(edited, again);
        Fuzz::same("an edit is read back", written(parameter.data()), written(read.data()));
    }
}

QByteArray written(Prm::ProjectFileVersion version) {
    Prm::ParameterSet properties;
    version.initialiseProperties(properties);
    return QByteArray::fromStdString(Prm::lines(properties));
}

/// What was read and written reads back alike, and the three readers agree.
void checkHeader(const QByteArray& bytes, const ProjectText& text) {
    Prm::ParameterSet root;
    Prm::ProjectFile file(root);
    using Finding = Prm::ProjectFileFinding;
    if (!file.loadText(bytes)) {
        HOLD(file.report().front().reason == Finding::ConflictMarker || !bytes.contains("FileVersion.value="));
        return;
    }
    Prm::ProjectFileVersion seen = file.version();
    const bool incomplete = !file.report().isEmpty() && file.report().front().reason == Finding::IncompleteHeader;
    HOLD(seen.streamVersion != Prm::StreamVersion::invalid);
    static_cast<void>(seen.timestamp().isValid());
    static_cast<void>(Prm::BuildVersion(seen) < Prm::BuildVersion(seen.productVersion, {}));
    HOLD(text.hasCompleteHeader() == !incomplete);
    if (incomplete)
        return;
    // Of an older one, only the first line is the header.
    const QByteArray once = written(seen);
    HOLD(file.loadText(once));
    if (seen.streamVersion >= Prm::StreamVersion::versionInfo2)
        Fuzz::same("a header reads back", once, written(file.version()));
    // The tool has no use for the time.
    Prm::ProjectFileVersion tools = text.version();
    tools.setTimestamp({});
    seen.setTimestamp({});
    Fuzz::same("library and tool read one header", written(seen), written(tools));
}

void check(const QByteArray& bytes, Worlds::Choices choices) {
    const ProjectText text(bytes);
    checkHeader(bytes, text);
    Fuzz::same("what is not edited is saved as it was", bytes, text.bytes());
    readEverything(text);
    editEverything(text, choices);
    HOLD(differences(text, ProjectText(bytes)).empty());
    // The half of a text against the whole.
    const ProjectText half(bytes.left(bytes.size() / 2));
    HOLD(differences(half, text).empty() == differences(text, half).empty());
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Worlds::Choices choices(data, size);
    check(Fuzz::bytesOf(data, size), choices);
    Worlds::Choices parts = choices;
    check(Fuzz::pieced(parts, INT_MAX), choices);
    return 0;
}
