#include "tool/Commands.h"
#include "tool/Progress.h"
#include "tool/Project.h"
#include "tool/Streams.h"

namespace Tool {

namespace {

void addParameter(Table& table, const FileParameter& parameter, Kind kind, const QString& path) {
    const auto value = [&](const FileValue& each) { return kind->value(parameter.shown(each.text)); };
    for (const auto& [view, data] : parameter.views()) {
        const QVector<QVariant> start{path, static_cast<double>(view)};
        for (const FileKeyframe& key : data.keys) {
            const Prm::IType& shape = key.interpolationData;
            QVector<QVariant> row = start + QVector<QVariant>{key.time.toDouble(), value(key.value),
                                                              Prm::qstrInterpolationTypeString(shape.interpolation)};
            if (shape.interpolation == Prm::Interpolation::Bezier)
                row << shape.x1 << shape.y1 << shape.x2 << shape.y2;
            else
                row.resize(row.size() + 4);
            table.add(row);
        }
        if (data.keys.empty())
            table.add(start + QVector<QVariant>{QVariant(), value(data.value), QString("Static")});
    }
}

} // namespace

int listKeyframes(Arguments& arguments) {
    Project::declareWithPatterns(arguments, "[PATTERN...]");
    arguments.tableOptions().example("prm keys project.prm blur.size");
    if (!arguments.read())
        return Fine;
    Project project(arguments);
    Table table({"path", "view", "frame", "value", "kind", "x1", "y1", "x2", "y2"});
    const std::vector<int> nodes = project.parameters(arguments.patterns());
    Progress progress("listing", nodes.size());
    for (const int node : nodes) {
        progress.step();
        const FileParameter parameter = project.parameter(node);
        addParameter(table, parameter, project.kinds().of(parameter), project.text().path(node));
    }
    print(table.written(arguments.tableForm()));
    return Fine;
}

} // namespace Tool
