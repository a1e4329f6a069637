#include "tool/Commands.h"
#include "tool/Project.h"

namespace Tool {

namespace {

void addParameter(Table& table, const FileParameter& parameter) {
    for (const auto& [view, data] : parameter.views()) {
        const QVector<QVariant> start{parameter.path(), static_cast<double>(view)};
        for (const FileKeyframe& key : data.keys) {
            const Prm::IType& shape = key.interpolationData;
            QVector<QVariant> row = start + QVector<QVariant>{key.time.toDouble(), parameter.meaning(key.value),
                                                              Prm::qstrInterpolationTypeString(shape.interpolation)};
            if (shape.interpolation == Prm::Interpolation::Bezier)
                row << shape.x1 << shape.y1 << shape.x2 << shape.y2;
            else
                row.resize(row.size() + 4);
            table.add(row);
        }
        if (data.keys.empty())
            table.add(start + QVector<QVariant>{QVariant(), parameter.meaning(data.value), QString("Static")});
    }
}

} // namespace

int listKeyframes(Arguments& arguments) {
    Project::declareWithPatterns(arguments, "[PATTERN...]");
    arguments.severalFiles().tableOptions().example("prm keys project.prm blur.size");
    if (!arguments.read())
        return Fine;
    return printTables(arguments, [&](Project& project) {
        Table table({"path", "view", "frame", "value", "kind", "x1", "y1", "x2", "y2"});
        project.forEach(project.parameters(arguments.patterns()), "listing",
                        [&](const FileParameter& parameter) { addParameter(table, parameter); });
        return std::pair(std::move(table), Fine);
    });
}

} // namespace Tool
