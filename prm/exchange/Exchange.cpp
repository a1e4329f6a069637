#include "prm/Exchange.h"

#include "prm/ParameterSet.h"
#include "prm/ProjectFile.h"
#include "prm/document/Problem.h"
#include "prm/exchange/AnimationImport.h"
#include "prm/exchange/LottieExport.h"
#include "prm/exchange/SampleTable.h"
#include "prm/exchange/StyleSheet.h"

namespace Prm {

namespace {

QStringList textsOf(const std::vector<document::Evaluability>& notes) {
    QStringList texts;
    for (const document::Evaluability& each : notes)
        texts += each.note;
    return texts;
}

} // namespace

ImportedText importAnimation(const QByteArray& json) {
    const document::ImportResult result = document::importAnimation(json);
    return {ProjectFile(*result.root).text(), result.report.losses()};
}

ImportedText importTable(const QByteArray& table, double framesPerSecond) {
    const document::SampleImport result = document::importSamples(table, framesPerSecond);
    return {result.text, result.changes};
}

ExportedText exportTable(const QByteArray& project, const ExportOptions& options) {
    document::Document document(project, options.rules);
    const document::SampleExport samples(document, document.parameters(options.patterns));
    return {samples.table(options.times.isEmpty() ? samples.wholeFrames() : options.times), textsOf(samples.notes())};
}

ExportedText exportStyleSheet(const QByteArray& project, const ExportOptions& options) {
    if (!(options.framesPerSecond > 0))
        throw document::Problem("%1 frames per second: not a number above 0", options.framesPerSecond);
    document::Document document(project, options.rules);
    const document::StyleSheet sheet =
        styleSheet(document, document.parameters(options.patterns), options.view, options.framesPerSecond);
    return {sheet.text, textsOf(sheet.notes) + sheet.losses};
}

ExportedText exportAnimation(const QByteArray& project, const ExportOptions& options) {
    document::Document document(project, options.rules);
    const document::LottieOptions how{options.view, options.framesPerSecond, options.size};
    const document::LottieExport animation = exportLottie(document, document.parameters(options.patterns), how);
    return {animation.text, textsOf(animation.notes) + animation.losses};
}

} // namespace Prm
