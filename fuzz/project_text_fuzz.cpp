// Any bytes through the tool's reading of project text: they come back as they were, and everything can be asked.

#include "fuzz/Fuzz.h"
#include "tool/BuiltParameter.h"
#include "tool/Checks.h"
#include "tool/Problem.h"
#include "tool/ProjectDiff.h"

using namespace Tool;

namespace {

void readEverything(const ProjectText& text) {
    Kinds kinds(text, KindRules());
    Masters masters;
    for (int node = 1; node < static_cast<int>(text.nodes().size()); ++node) {
        const QString path = text.path(node);
        HOLD(text.findNode(path.toStdString()) == node || path.contains(QChar(0xFFFD)));
        HOLD(text.node(node).parent < node);
        if (!text.node(node).isParameter())
            continue;
        BuiltParameter built(text, node, kinds.of(node));
        try {
            built.followMasters(text, masters);
        } catch (const Problem&) {
            continue;
        }
        built.sample({Prm::Time::fromInt(-1), Prm::Time::fromInt(3)}, Prm::View(1));
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray bytes = Fuzz::bytesOf(data, size);
    const ProjectText text(bytes);
    Fuzz::same("what is not edited is saved as it was", bytes, text.bytes());
    readEverything(text);
    for (const Finding& finding : findingsIn(text))
        HOLD(finding.line >= 0 && finding.line < std::max(text.lineCount(), 1));
    HOLD(differences(text, ProjectText(bytes)).empty());
    // The half of a text against the whole.
    const ProjectText half(bytes.left(bytes.size() / 2));
    HOLD(differences(half, text).empty() == differences(text, half).empty());
    return 0;
}
