#include "prm/ParameterEdits.h"
#include "tool/Commands.h"
#include "tool/Frames.h"
#include "tool/Streams.h"
#include "tool/edit/Editing.h"

namespace Tool {

namespace {

/// One side of the keyframes: its line in the file, and what it is to be.
struct Side {
    Key key;
    const char* name;
    Prm::Extrapolation kind;
};

Prm::Extrapolation kindNamed(const QString& name, const char* option) {
    for (const Prm::Extrapolation kind : {Prm::Extrapolation::Constant, Prm::Extrapolation::Linear}) {
        if (kindText(kind).compare(name, Qt::CaseInsensitive) == 0)
            return kind;
    }
    throw WrongUse("--%1: '%2' is not constant or linear", option, name);
}

/// The sides that the options name.
std::vector<Side> sidesOf(const Arguments& arguments) {
    std::vector<Side> sides;
    for (const auto& [key, name] : {std::pair(Key::Before, "before"), std::pair(Key::After, "after")}) {
        const char* const option = arguments.has(name) ? name : "as";
        if (arguments.has(option))
            sides.push_back({key, name, kindNamed(arguments.value(option), option)});
    }
    if (sides.empty())
        throw WrongUse("--as, --before or --after is needed");
    return sides;
}

/// Whether no other view has data, which would be continued alike.
bool isAlone(const Project& project, const FileParameter& parameter, const Prm::View& view) {
    const bool isShared = view.isValid() && parameter.data().viewList().size() > 1;
    if (isShared)
        tell("%1: its views share one extrapolation; without --view it is set for all", project.place(parameter));
    return !isShared;
}

LineChanges changesTo(const Project& project, const FileParameter& parameter, const std::vector<Side>& sides) {
    LineChanges changes;
    QStringList done;
    for (const Side& side : sides) {
        FileParameter::Data& data = parameter.data();
        const bool isBefore = side.key == Key::Before;
        const Prm::Extrapolation former = isBefore ? data.extrapolationBefore() : data.extrapolationAfter();
        if (former == side.kind)
            continue;
        changeSetting(project.text(), parameter.node(), side.key,
                      QByteArray(side.name) + '=' + kindText(side.kind).toLatin1(), changes);
        done.append(message("%1 %2 to %3", side.name, kindText(former), kindText(side.kind)));
    }
    if (!done.isEmpty())
        tell("%1: %2", project.place(parameter), done.join(", "));
    return changes;
}

} // namespace

int setExtrapolation(Arguments& arguments) {
    Project::declareWithPatterns(arguments);
    const QStringList kinds{"constant", "linear"};
    arguments.option("as", "How curves continue on both sides of the keyframes: constant or linear.", "KIND", kinds)
        .option("before", "Before the first keyframe.", "KIND", kinds)
        .option("after", "After the last keyframe.", "KIND", kinds)
        .option("view", "Only where no other view than this has data. All views of a parameter share the setting.",
                "N");
    declareOutput(arguments);
    arguments.example("prm extrapolation project.prm blur.size --after linear --in-place");
    if (!arguments.read())
        return Fine;
    const std::vector<Side> sides = sidesOf(arguments);
    const Prm::View view = viewOption(arguments, Prm::View::INVALID());
    return editLines(arguments, arguments.patterns(), [&](const Project& project, const FileParameter& parameter) {
        return hasKeyframes(arguments, project, parameter, Prm::KeyframeSpan().in(view)) &&
                       isAlone(project, parameter, view)
                   ? changesTo(project, parameter, sides)
                   : LineChanges();
    });
}

} // namespace Tool
