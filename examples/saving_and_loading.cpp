// Saving and loading a project: what could not be read, what cannot be written, and a file that is always complete.

#include "prm/NumericParameter.h"
#include "prm/ParameterSet.h"
#include "prm/ProjectFile.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QTextStream>

using Prm::Time;

namespace {

/// A file that a newer version of this program wrote, and that was then edited by hand.
constexpr char written[] = R"(FileVersion.value=3002
ProductName.value="Studio"
ProductBuildNumber.value="7"
ProductVersion.value="4.1.2"
logo.name="Logo"
logo.opacity.views=[0]
logo.opacity.keyframes.append( Key( 1, 0, Linear ) )
logo.opacity.keyframes.append( Key( 12, 1 )
logo.opacity.keyframes.append( Key( 24, 1, Linear ) )
logo.glow.value=3
)";

QByteArray contents(const QString& name) {
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool writeFile(const QString& name, const char* text) {
    QFile file(name);
    return file.open(QIODevice::WriteOnly) && file.write(text) == static_cast<qint64>(qstrlen(text));
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName("Studio"); // for the header of the file
    QCoreApplication::setApplicationVersion("4.2.0");
    QTextStream out(stdout);
    const QTemporaryDir folder;
    const QString fileName = folder.filePath("clip.prm");
    if (!writeFile(fileName, written))
        return 1;

    Prm::NumericParameter<double> opacity("opacity");
    Prm::ParameterSet logo("logo");
    Prm::ParameterSet root;
    logo.addParameter(opacity);
    root.addParameterSet(logo);

    // [load]
    Prm::ProjectFile project(root);
    if (!project.load(fileName)) // the file cannot be read, has a conflict, or is no project: nothing was edited
        out << project.errorString() << '\n';
    for (const Prm::ProjectFileFinding& finding : project.report())
        out << "line " << finding.lineNumber << ": " << finding.reasonToString() << ": " << finding.text << '\n';
    // [load]
    // [version]
    if (Prm::BuildVersion(project.version()) < Prm::BuildVersion("4.2.0", "0"))
        out << "written by " << project.version().productName << " before 4.2\n";
    // [version]
    const bool reported = project.report().size() == 2 && opacity.keyframeCount({}) == 2 &&
                          project.report().at(0).reasonToString().startsWith("malformed");

    // [losses]
    opacity.vSetValue(0.25, Time::fromDouble(1234.5678)); // a time has six digits in project text
    const QStringList losses = project.saveLosses();
    for (const QString& loss : losses)
        out << "will be lost: " << loss << '\n';
    // [losses]

    // [save]
    const bool saved = project.save(fileName);
    if (!saved)
        out << project.errorString() << '\n'; // the file has not changed
    // [save]
    out << "saved:\n" << contents(fileName);

    const bool refused = !project.save(folder.path());
    out << "saved to a folder? It " << project.errorString().section(": ", -1) << '\n';
    const bool kept = contents(fileName).endsWith("\nlogo.glow.value=3\n");
    return reported && losses.size() == 2 && saved && kept && refused ? 0 : 1;
}
