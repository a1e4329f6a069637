#include "prm/Explanation.h"
#include "prm/ParameterWithoutType.h"
#include "tool/Commands.h"
#include "tool/Frames.h"
#include "tool/Project.h"
#include "tool/Streams.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace Tool {

namespace {

using Prm::Explanation;

QString nameOf(const Prm::BasicParameter& parameter) {
    return printable(parameter.objectName());
}

/// Of the steps that there are in a file, which has neither classes nor view interpolation.
QString stepName(const Explanation::Step& step) {
    switch (step.kind) {
    case Explanation::Master:
        return "master";
    case Explanation::Default:
        return "default";
    case Explanation::NoKeyframes:
        return "static";
    case Explanation::AtKeyframe:
        return "keyframe";
    case Explanation::Between:
        return "between";
    case Explanation::Before:
        return "before";
    case Explanation::After:
        return "after";
    default:
        return "view";
    }
}

QJsonObject keyframeObject(const Explanation::Keyframe& keyframe) {
    return {{"frame", keyframe.time.toDouble()}, {"value", jsonValue(keyframe.value)}};
}

void addSegment(QJsonObject& object, const Explanation::Step& step) {
    const Prm::IType& shape = step.from->interpolationData;
    object["kind"] = kindText(shape.interpolation);
    object["timePart"] = step.timePart;
    object["changePart"] = step.changePart;
    if (shape.interpolation != Prm::Interpolation::Bezier)
        return;
    const std::pair<const char*, double> numbers[] = {
        {"x1", shape.x1}, {"y1", shape.y1}, {"x2", shape.x2}, {"y2", shape.y2}};
    for (const auto& [name, number] : numbers)
        object[QLatin1String(name)] = number;
}

QJsonObject stepObject(const Explanation::Step& step) {
    QJsonObject object{{"step", stepName(step)}, {"value", jsonValue(step.value)}};
    if (step.parameter)
        object["path"] = step.parameter->objectName();
    if (step.view.isValid())
        object["view"] = static_cast<double>(step.view.id());
    if (step.from)
        object["from"] = keyframeObject(*step.from);
    if (step.to)
        object["to"] = keyframeObject(*step.to);
    if (step.kind == Explanation::Between)
        addSegment(object, step);
    if (step.kind == Explanation::Before || step.kind == Explanation::After) {
        object["kind"] = kindText(step.extrapolation);
        object["slope"] = step.slope;
    }
    return object;
}

QByteArray jsonOf(const Explanation& explanation) {
    QJsonArray steps;
    for (const Explanation::Step& step : explanation.steps)
        steps.append(stepObject(step));
    const QJsonObject object{{"path", explanation.parameter->objectName()},
                             {"frame", explanation.context.time.toDouble()},
                             {"view", static_cast<double>(explanation.context.view.id())},
                             {"value", jsonValue(explanation.value)},
                             {"steps", steps}};
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

/// Says why a master that the file names has no effect.
void tellOfMaster(const ProjectText& text, int node) {
    const int line = text.node(node).masterLine;
    if (line < 0)
        return;
    const QString name = toText(textAfterEquals(text.line(line)));
    const bool isMissing = text.masterOf(node) < 0;
    tell(isMissing ? "%1: no parameter '%2' to follow" : "%1: follows '%2', which closes a circle", text.path(node),
         name);
}

} // namespace

int explain(Arguments& arguments) {
    Project::declareWithPatterns(arguments);
    arguments.option("frame", "The frame to look at, 0 unless given.", "FRAME")
        .option("view", "The view to look at, 0 unless given.", "N")
        .option("json", "Writes JSON.")
        .example("prm explain project.prm blur.size --frame 12 --view 1");
    if (!arguments.read())
        return Fine;
    const Prm::Context at(timeOption(arguments, "frame"), viewOption(arguments));
    const bool asJson = arguments.has("json");
    Project project(arguments);
    TextBudget budget;
    QByteArray text;
    bool isComplete = true;
    project.forEach(project.parameters(arguments.patterns()), "explaining", [&](const FileParameter& parameter) {
        isComplete = canBeEvaluated(parameter) && isComplete;
        const auto chain = project.kinds().chain(parameter);
        if (chain.empty())
            return;
        tellOfMaster(project.text(), project.kinds().masters(parameter.node()).back());
        const Explanation explanation = Prm::explain(*chain.front(), at);
        const QByteArray one = asJson ? jsonOf(explanation) : explanation.toString(nameOf).toUtf8();
        budget.spend(one.size());
        text += (asJson ? text.isEmpty() ? "\n" : ",\n" : "") + one + (asJson ? "" : "\n");
    });
    print(asJson ? "[" + text + "\n]\n" : text);
    return isComplete ? Fine : Findings;
}

} // namespace Tool
