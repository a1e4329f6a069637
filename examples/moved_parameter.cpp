// Parameters that old files have elsewhere: another name, another set, another unit.

#include "prm/MovedParameter.h"
#include "prm/NumericParameter.h"
#include "prm/ParameterSet.h"
#include "prm/ProjectFile.h"

#include <QTextStream>

using Prm::Time;
using Number = Prm::NumericParameter<double>;

namespace {

/// What an old program wrote: the softness in the logo, and how transparent it is, in percent.
constexpr char oldFile[] = R"(FileVersion.value=2019
logo.softness.value=4
logo.transparency.keyframes.append( Key( 0, 100, Linear ) )
logo.transparency.keyframes.append( Key( 10, 20, Linear ) )
logo.size.value=3
)";

// [migration]
QString opacityOf(const QString& transparency) {
    QString text;
    Prm::ValueType<double>::write(text, 1.0 - Prm::ValueType<double>::read(transparency) / 100.0);
    return text;
}

/// Receives the line under the name of the target, and reads it with the values converted.
bool readTransparency(Prm::BasicParameter* target, const QString& line, const Prm::ProjectFileVersion& version) {
    auto* const opacity = qobject_cast<Prm::ParameterWithoutType*>(target);
    return opacity && opacity->streamInValue(line.section('.', 1), version, opacityOf);
}
// [migration]

} // namespace

int main() {
    QTextStream out(stdout);
    Number opacity("opacity");
    Number scale("scale");
    Number blur("blur");
    Prm::ParameterSet logo("logo");
    Prm::ParameterSet lens("lens");
    Prm::ParameterSet root;
    logo.addParameter(opacity);
    logo.addParameter(scale);
    lens.addParameter(blur);
    root.addParameterSet(logo);
    root.addParameterSet(lens);

    // [name]
    // Only the name is new: the parameter also reads lines with the old one.
    scale.addAdditionalScriptName("size");
    // [name]
    // [moved]
    // The set is new: a moved parameter in the old place passes lines on.
    Prm::MovedParameter softness("softness");
    softness.setTargetParam(blur);
    logo.addBasicParameter(softness);
    // [moved]
    // [converted]
    // The unit is new: a migration function reads the lines.
    Prm::MovedParameter transparency("transparency");
    transparency.setMigrationFunction(readTransparency);
    transparency.setTargetParam(opacity);
    logo.addBasicParameter(transparency);
    // [converted]

    Prm::ProjectFile project(root);
    project.loadText(oldFile);
    out << "lines that no member took: " << project.report().size() << '\n';
    out << "lens.blur    " << blur.value(Time::fromInt(0)) << '\n';
    out << "logo.scale   " << scale.value(Time::fromInt(0)) << '\n';
    for (const int frame : {0, 5, 10})
        out << "logo.opacity " << opacity.value(Time::fromInt(frame)) << " at frame " << frame << '\n';

    // Only the new names are written.
    const QByteArray text = project.text();
    out << text.mid(text.indexOf("logo.name"));
    const bool read = blur.value(Time()) == 4.0 && scale.value(Time()) == 3.0 && opacity.value(Time::fromInt(5)) == 0.4;
    return read && project.report().isEmpty() && !text.contains("transparency") ? 0 : 1;
}
