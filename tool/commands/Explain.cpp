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
    return {{"frame", jsonValue(keyframe.time.toDouble())}, {"value", jsonValue(keyframe.value)}};
}

void addSegment(QJsonObject& object, const Explanation::Step& step) {
    const Prm::IType& shape = step.from->interpolationData;
    object["kind"] = kindText(shape.interpolation);
    object["timePart"] = jsonValue(step.timePart);
    object["changePart"] = jsonValue(step.changePart);
    if (shape.interpolation != Prm::Interpolation::Bezier)
        return;
    const std::pair<const char*, double> numbers[] = {
        {"x1", shape.x1}, {"y1", shape.y1}, {"x2", shape.x2}, {"y2", shape.y2}};
    for (const auto& [name, number] : numbers)
        object[QLatin1String(name)] = jsonValue(number);
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
        object["slope"] = jsonValue(step.slope);
    }
    return object;
}

QByteArray jsonOf(const Explanation& explanation, const QString& file) {
    QJsonArray steps;
    for (const Explanation::Step& step : explanation.steps)
        steps.append(stepObject(step));
    QJsonObject object{{"path", explanation.parameter->objectName()},
                       {"frame", explanation.context.time.toDouble()},
                       {"view", static_cast<double>(explanation.context.view.id())},
                       {"value", jsonValue(explanation.value)},
                       {"steps", steps}};
    if (!file.isEmpty())
        object["file"] = file;
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

/// Says why a master that the file names has no effect.
void tellOfMaster(const Project& project, int node) {
    const ProjectText& text = project.text();
    const int line = text.node(node).masterLine;
    if (line < 0)
        return;
    const QString name = toText(textAfterEquals(text.line(line)));
    const bool isMissing = text.masterOf(node) < 0;
    tell(isMissing ? "%1: no parameter '%2' to follow" : "%1: follows '%2', which closes a circle",
         project.place(FileParameter(text, node), line), name);
}

/// The explanations of all files.
class Explaining {
public:
    Explaining(bool isJson, bool namesFiles) : m_isJson(isJson), m_namesFiles(namesFiles) {}

    void add(Project& project, const FileParameter& parameter, const Prm::Context& at) {
        const auto chain = project.kinds().chain(parameter);
        if (chain.empty())
            return;
        tellOfMaster(project, project.kinds().masters(parameter.node()).back());
        const Explanation explanation = Prm::explain(*chain.front(), at);
        const QString file = m_namesFiles ? inputName(project.file()) : QString();
        const QByteArray one = m_isJson ? jsonOf(explanation, file) : linesOf(explanation, file);
        m_budget.spend(one.size());
        m_text += (m_isJson ? m_text.isEmpty() ? "\n" : ",\n" : "") + one;
    }

    QByteArray written() const { return m_isJson ? "[" + m_text + "\n]\n" : m_text; }

private:
    static QByteArray linesOf(const Explanation& explanation, const QString& file) {
        QByteArray text;
        for (const QString& line : explanation.toString(nameOf).split('\n'))
            text += printable(file.isEmpty() ? line : file + ": " + line).toUtf8() + '\n';
        return text;
    }

    const bool m_isJson;
    const bool m_namesFiles;
    TextBudget m_budget;
    QByteArray m_text;
};

} // namespace

int explain(Arguments& arguments) {
    Project::declareWithPatterns(arguments);
    arguments.option("frame", "The frame to look at, 0 unless given.", "FRAME")
        .option("view", "The view to look at, 0 unless given.", "N")
        .option("json", "Writes JSON. Numbers that it does not have are \"inf\", \"-inf\" and \"nan\".")
        .severalFiles()
        .example("prm explain project.prm blur.size --frame 12 --view 1");
    if (!arguments.read())
        return Fine;
    const Prm::Context at(timeOption(arguments, "frame"), viewOption(arguments));
    Explaining explaining(arguments.has("json"), arguments.hasSeveralFiles());
    return forEachProject(
        arguments,
        [&](Project& project) {
            bool isComplete = true;
            project.forEach(project.parameters(arguments.patterns()), "explaining",
                            [&](const FileParameter& parameter) {
                                isComplete = project.canBeEvaluated(parameter) && isComplete;
                                explaining.add(project, parameter, at);
                            });
            return isComplete ? Fine : Findings;
        },
        [&] { print(explaining.written()); });
}

} // namespace Tool
