// Animations in JSON: what is made of any bytes is sound, in proportion to them, saves and loads as project text, and
// becomes JSON again.

#include "fuzz/Fuzz.h"
#include "prm/Exchange.h"
#include "prm/ParameterSet.h"
#include "prm/ProjectFile.h"
#include "prm/document/Problem.h"
#include "prm/exchange/AnimationImport.h"
#include "prm/project/Invariants.h"

#include <QDateTime>
#include <QJsonDocument>

using namespace Prm;

/// Qt's own reader of JSON loses a list or object whose key comes twice.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libQt5Core.so\n";
}

namespace {

void exports(const QByteArray& text) {
    ExportOptions options;
    options.framesPerSecond = 25;
    const ExportedText animation = exportAnimation(text, options);
    QJsonParseError parsing{};
    QJsonDocument::fromJson(animation.text, &parsing);
    HOLD(parsing.error == QJsonParseError::NoError || parsing.error == QJsonParseError::DeepNesting);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    document::ImportResult result;
    try {
        result = document::importAnimation(Fuzz::bytesOf(data, size));
    } catch (const document::Problem& problem) {
        HOLD(!problem.text().isEmpty() && !problem.text().contains('\n'));
        return 0;
    }
    HOLD(!result.report.summary().isEmpty());
    HOLD(result.report.table().count('\n') == result.report.entries().size() + 1);
    Fuzz::intact(detail::verify(*result.root));
    ProjectFile file(*result.root, QStringLiteral("fuzz"));
    file.setTimeOfWriting(QDateTime(QDate(2021, 3, 1), QTime(), Qt::UTC));
    const QByteArray text = file.text();
    HOLD(static_cast<std::size_t>(text.size()) < (std::size_t(64) << 20) + 1000 * size);
    file.loadText(text);
    for (const ProjectFileFinding& finding : file.report()) {
        if (finding.reason != ProjectFileFinding::IncompleteHeader)
            Fuzz::fail("an import is all read back", finding.text);
    }
    const QByteArray again = file.text();
    file.loadText(again);
    Fuzz::same("an import saves alike", again, file.text());
    exports(again);
    return 0;
}
