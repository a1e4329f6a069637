#include "tool/Commands.h"
#include "tool/Problem.h"
#include "tool/Progress.h"
#include "tool/Project.h"
#include "tool/Streams.h"

#include <algorithm>

namespace Tool {

namespace {

constexpr int deepestIndentation = 20;

struct Summary {
    QString kind;
    QVariantList views;
    QVariantList keys;
    QVariant first;
    QVariant last;
    bool isHidden = false;
    QString master;
};

Summary summarise(Project& project, int node) {
    Summary summary;
    const ProjectText& text = project.text();
    summary.kind = kindName(project.kindOf(node));
    const auto parameter = buildRaw(text, node);
    for (const Prm::View view : parameter->viewList()) {
        const unsigned int count = parameter->keyframeCount(view);
        summary.views.append(static_cast<double>(view.id()));
        summary.keys.append(static_cast<double>(count));
        if (count == 0)
            continue;
        const double first = parameter->keyframeTime(0, view).time.toDouble();
        const double last = parameter->keyframeTime(count - 1, view).time.toDouble();
        summary.first = summary.first.isNull() ? first : std::min(summary.first.toDouble(), first);
        summary.last = summary.last.isNull() ? last : std::max(summary.last.toDouble(), last);
    }
    summary.isHidden = parameter->isHidden();
    summary.master = parameter->pendingMasterParameterId();
    return summary;
}

QString remarks(const Summary& summary) {
    QStringList remarks;
    if (summary.isHidden)
        remarks.append(QStringLiteral("hidden"));
    if (!summary.master.isEmpty())
        remarks.append(QStringLiteral("follows ") + summary.master);
    return remarks.join(QLatin1String(", "));
}

QVariant range(const Summary& summary) {
    return summary.first.isNull() ? QString()
                                  : plainText(summary.first) + QLatin1String("..") + plainText(summary.last);
}

Table list(Project& project, const std::vector<int>& nodes) {
    Table table({QStringLiteral("path"), QStringLiteral("type"), QStringLiteral("views"), QStringLiteral("keys"),
                 QStringLiteral("first"), QStringLiteral("last"), QStringLiteral("hidden"), QStringLiteral("master")});
    Progress progress("listing", nodes.size());
    for (const int node : nodes) {
        progress.step();
        const Summary summary = summarise(project, node);
        table.add({project.text().path(node), summary.kind, summary.views, summary.keys, summary.first, summary.last,
                   summary.isHidden, summary.master});
    }
    return table;
}

/// The tree of the wanted parameters. Each group is listed once, before the first of its parameters.
class Tree {
public:
    explicit Tree(Project& project) : m_project(project), m_text(project.text()) {}

    /// Parameters come in the order of the tree, so that everything of a group stands together.
    Table table(const std::vector<int>& nodes) {
        m_isWanted.assign(m_text.nodes().size(), false);
        for (const int node : nodes) {
            for (int i = node; !m_isWanted[static_cast<std::size_t>(i)]; i = m_text.node(i).parent)
                m_isWanted[static_cast<std::size_t>(i)] = true;
        }
        addChildren(ProjectText::root, 0);
        return m_table;
    }

private:
    void addChildren(int node, int depth) {
        for (const int child : m_text.node(node).children) {
            if (m_isWanted[static_cast<std::size_t>(child)])
                addNode(child, depth);
        }
    }

    void addNode(int node, int depth) {
        const bool isGroup = m_text.node(node).nameLine >= 0 || !m_text.node(node).isParameter();
        if (isGroup)
            addGroup(node, depth);
        if (m_text.node(node).isParameter())
            addParameter(node, depth);
        addChildren(node, isGroup ? depth + 1 : depth);
    }

    void addGroup(int node, int depth) {
        const int line = m_text.node(node).nameLine;
        QString text = indented(node, depth);
        if (line >= 0)
            text += QLatin1Char(' ') + toText(textBehindEquals(m_text.line(line)));
        m_table.add({text});
    }

    void addParameter(int node, int depth) {
        const Summary summary = summarise(m_project, node);
        m_table.add(
            {indented(node, depth), summary.kind, summary.views, summary.keys, range(summary), remarks(summary)});
    }

    QString indented(int node, int depth) const {
        return QString(2 * std::min(depth, deepestIndentation), QLatin1Char(' ')) + m_text.nameInGroup(node);
    }

    Project& m_project;
    const ProjectText& m_text;
    std::vector<bool> m_isWanted;
    Table m_table{{QStringLiteral("name"), QStringLiteral("type"), QStringLiteral("views"), QStringLiteral("keys"),
                   QStringLiteral("frames"), QString()}};
};

} // namespace

int listParameters(Arguments& arguments) {
    Project::declareWithPatterns(arguments, QStringLiteral("[PATTERN...]"));
    arguments.tableOptions().example(QStringLiteral("prm ls project.prm blur"));
    if (!arguments.read(1, -1))
        return Fine;
    Project project(arguments);
    const std::vector<int> nodes = project.parameters(arguments.patterns());
    const TableForm form = arguments.tableForm();
    print((form == TableForm::Plain ? Tree(project).table(nodes) : list(project, nodes)).written(form));
    return Fine;
}

} // namespace Tool
