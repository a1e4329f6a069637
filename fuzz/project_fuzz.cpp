// A project text into a typed tree of every kind of member. Nothing is lost but what the report and `saveLosses` name,
// and what was loaded and saved once is loaded and saved alike ever after.

#include "fuzz/Fuzz.h"
#include "prm/RangeHash.h"
#include "tests/project/Project.h"

using namespace Prm;

namespace {

bool isKept(const ProjectFileFinding& finding) {
    return finding.reason == ProjectFileFinding::Unknown || finding.reason == ProjectFileFinding::Refused ||
           finding.reason == ProjectFileFinding::UnresolvedMaster || finding.reason == ProjectFileFinding::NotUtf8;
}

/// What the format cannot hold, without what could not be read.
bool isLosslessNow(const ProjectFile& file) {
    const QStringList losses = file.saveLosses();
    return std::all_of(losses.begin(), losses.end(), [](const QString& loss) { return loss.startsWith("line "); });
}

/// What is kept is in the report, in the order of the lines, and in the file.
void account(const ProjectFile& file, const QByteArray& loaded, const QByteArray& saved) {
    QByteArray kept;
    int last = 0;
    for (const ProjectFileFinding& finding : file.report()) {
        HOLD(finding.lineNumber >= last && finding.lineNumber <= std::max(1, loaded.count('\n') + 1));
        last = finding.lineNumber;
        HOLD(finding.lineNumber == 0 || !finding.reasonToString().isEmpty());
        if (isKept(finding))
            kept += finding.text.toUtf8() + '\n';
    }
    QByteArray written;
    for (const QByteArray& line : file.keptLines()) {
        HOLD(loaded.contains(line) && saved.contains(line));
        written += Fuzz::textOf(line).toUtf8() + '\n';
    }
    Fuzz::same("what is reported is kept", kept, written);
}

QString valuesOf(const ParameterSet& root) {
    return hashOf([&](Bsc::Hash& hash) { hashAt(hash, root, at(1.5, 1)); });
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray first = Fuzz::bytesOf(data, size);
    Project one;
    const QByteArray untouched = one.file.text();
    if (!one.file.loadText(first)) {
        HOLD(!one.file.report().isEmpty() && !one.file.errorString().isEmpty());
        Fuzz::same("a text that is refused edits nothing", untouched, one.file.text());
        return 0;
    }
    Fuzz::intact(detail::verify(one.root));
    const bool isLossless = isLosslessNow(one.file);
    const QByteArray second = one.file.text();
    account(one.file, first, second);

    Project two;
    HOLD(two.file.loadText(second));
    for (const ProjectFileFinding& finding : two.file.report()) {
        if (!isKept(finding))
            Fuzz::fail("what was saved is well formed", finding.text);
    }
    const QByteArray third = two.file.text();
    if (isLossless)
        Fuzz::same("saving loses nothing", second, third);
    Project three;
    three.file.loadText(third);
    HOLD(valuesOf(two.root) == valuesOf(three.root) || !isLossless);
    if (isLosslessNow(two.file))
        Fuzz::same("saving again loses nothing", third, three.file.text());
    // Over what is there already.
    one.file.loadText(third);
    Fuzz::intact(detail::verify(one.root));
    return 0;
}
