#include "tool/Commands.h"
#include "tool/Problem.h"
#include "tool/Progress.h"
#include "tool/Project.h"
#include "tool/Streams.h"

namespace Tool {

namespace {

constexpr int columnsBeforeKind = 3;

/// Frame, value, kind and, for Bezier segments, the shape.
QVector<QVariant> keyframeRow(const BuiltParameter& built, unsigned int index, Prm::View view) {
    const Prm::ParameterWithoutType& parameter = built.parameter();
    const Prm::IType shape = parameter.interpolationData({&parameter, view, index});
    QVector<QVariant> row{parameter.keyframeTime(index, view).time.toDouble(), built.keyframeValue(index, view),
                          Prm::qstrInterpolationTypeString(shape.interpolation)};
    if (shape.interpolation == Prm::Interpolation::Bezier)
        row << shape.x1 << shape.y1 << shape.x2 << shape.y2;
    else
        row.resize(columnsBeforeKind + 4);
    return row;
}

void addParameter(Table& table, const BuiltParameter& built, const QString& path) {
    const Prm::ParameterWithoutType& parameter = built.parameter();
    for (const Prm::View view : parameter.viewList()) {
        const QVector<QVariant> start{path, static_cast<double>(view.id())};
        const unsigned int count = parameter.keyframeCount(view);
        for (unsigned int i = 0; i < count; ++i)
            table.add(start + keyframeRow(built, i, view));
        if (count == 0)
            table.add(start + QVector<QVariant>{QVariant(), built.staticValue(view), QStringLiteral("Static")});
    }
}

} // namespace

int listKeyframes(Arguments& arguments) {
    Project::declareWithPatterns(arguments, QStringLiteral("[PATTERN...]"));
    arguments.tableOptions().example(QStringLiteral("prm keys project.prm blur.size"));
    if (!arguments.read(1, -1))
        return Fine;
    Project project(arguments);
    Table table({QStringLiteral("path"), QStringLiteral("view"), QStringLiteral("frame"), QStringLiteral("value"),
                 QStringLiteral("kind"), QStringLiteral("x1"), QStringLiteral("y1"), QStringLiteral("x2"),
                 QStringLiteral("y2")});
    const std::vector<int> nodes = project.parameters(arguments.patterns());
    Progress progress("listing", nodes.size());
    for (const int node : nodes) {
        progress.step();
        addParameter(table, project.built(node), project.text().path(node));
    }
    print(table.written(arguments.tableForm()));
    return Fine;
}

} // namespace Tool
