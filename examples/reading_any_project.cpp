// A project file without the application that wrote it: its parameters, what two people have changed, and other forms.

#include "prm/Exchange.h"
#include "prm/GuessedSets.h"
#include "prm/ParameterSet.h"
#include "prm/ParameterWithoutType.h"
#include "prm/ProjectDiff.h"
#include "prm/ProjectFile.h"
#include "prm/ProjectMerge.h"

#include <QCoreApplication>
#include <QTextStream>

using Prm::Time;
using Prm::View;

namespace {

const QByteArray base = R"(FileVersion.value=3002
ProductName.value="Studio"
ProductBuildNumber.value="7"
ProductVersion.value="4.1.2"
logo.name="Logo"
logo.opacity.views=[0]
logo.opacity.keyframes.append( Key( 1, 0, Linear ) )
logo.opacity.keyframes.append( Key( 11, 1, Linear ) )
logo.visible.value=1
)";

QByteArray with(QByteArray text, const char* before, const char* after) {
    return text.replace(before, after);
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    QTextStream out(stdout);

    // [open]
    const boost::shared_ptr<Prm::ParameterSet> root = Prm::guessedSets(base, {"*.visible=switch"});
    Prm::ProjectFile project(*root);
    if (!project.loadText(base))
        out << project.errorString() << '\n';
    const Prm::ParameterWithoutType* const opacity = root->subsetWithName("logo")->parameterWTWithName("opacity");
    if (opacity)
        out << opacity->variantValue({Time::fromInt(6), View()}).toDouble() << '\n'; // 0.5
    // [open]

    const QByteArray ours = with(base, "Key( 11, 1,", "Key( 25, 1,");
    const QByteArray theirs = with(with(base, "Key( 11, 1,", "Key( 45, 1,"), "Key( 1, 0,", "Key( 1, 0.5,");
    // [merge]
    const Prm::MergedProject merged = Prm::mergeProjects(base, ours, theirs);
    for (const Prm::ProjectConflict& conflict : merged.conflicts)
        out << conflict.message << '\n'; // logo.opacity: the keyframe at 11 was moved to 25 here and to 45 there
    // [merge]
    // [differences]
    for (const Prm::ProjectDifference& difference : Prm::projectDifferences(ours, merged.text))
        out << difference.message << '\n'; // logo.opacity: key at 1: value 0 changed to 0.5
    // [differences]
    // [export]
    Prm::ExportOptions options;
    options.framesPerSecond = 24;
    const Prm::ExportedText sheet = Prm::exportStyleSheet(merged.text, options);
    out << sheet.text;
    for (const QString& loss : sheet.losses)
        out << loss << '\n'; // logo.visible: number or switch, read as a number
    // [export]
    // [import]
    const Prm::ImportedText table = Prm::importTable("frame,logo.x\n1,0\n2,0.5\n4,3\n");
    out << table.text;
    // [import]
    return opacity && merged.conflicts.size() == 1 && sheet.losses.size() == 1 && table.losses.isEmpty() ? 0 : 1;
}
