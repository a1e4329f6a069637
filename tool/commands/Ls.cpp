#include "tool/Commands.h"
#include "tool/Project.h"

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

Summary summarise(const FileParameter& parameter) {
    Summary summary;
    summary.kind = parameter.kind()->name;
    for (const auto& [view, data] : parameter.views()) {
        summary.views.append(static_cast<double>(view));
        summary.keys.append(static_cast<double>(data.keys.size()));
        if (data.keys.empty())
            continue;
        const double first = data.keys.front().time.toDouble();
        const double last = data.keys.back().time.toDouble();
        summary.first = summary.first.isNull() ? first : std::min(summary.first.toDouble(), first);
        summary.last = summary.last.isNull() ? last : std::max(summary.last.toDouble(), last);
    }
    summary.isHidden = parameter.isHidden();
    summary.master = parameter.master();
    return summary;
}

QString remarks(const Summary& summary) {
    QStringList remarks;
    if (summary.isHidden)
        remarks.append("hidden");
    if (!summary.master.isEmpty())
        remarks.append("follows " + summary.master);
    return remarks.join(", ");
}

QString range(const Summary& summary) {
    return summary.first.isNull() ? QString() : plainText(summary.first) + ".." + plainText(summary.last);
}

Table list(Project& project, const std::vector<int>& nodes) {
    Table table({"path", "type", "views", "keys", "first", "last", "hidden", "master"});
    project.forEach(nodes, "listing", [&](const FileParameter& parameter) {
        const Summary summary = summarise(parameter);
        table.add({parameter.path(), summary.kind, summary.views, summary.keys, summary.first, summary.last,
                   summary.isHidden, summary.master});
    });
    return table;
}

/// The tree of the wanted parameters. Each group is listed once, before the first of its parameters.
class Tree {
public:
    explicit Tree(Project& project) : m_project(project), m_text(project.text()) {}

    /// Parameters come in the order of the tree, so that everything of a group is together.
    Table table(const std::vector<int>& nodes) {
        m_isWanted.assign(static_cast<std::size_t>(m_text.nodeCount()), false);
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
        const bool isGroup = m_text.isGroup(node);
        const QString name = m_text.groupName(node);
        if (isGroup)
            m_table.add({indented(node, depth) + (name.isNull() ? name : ' ' + name)});
        if (m_text.node(node).isParameter())
            addParameter(node, depth);
        addChildren(node, isGroup ? depth + 1 : depth);
    }

    void addParameter(int node, int depth) {
        const Summary summary = summarise(m_project.kinds().read(node));
        m_table.add(
            {indented(node, depth), summary.kind, summary.views, summary.keys, range(summary), remarks(summary)});
    }

    QString indented(int node, int depth) const {
        return QString(2 * std::min(depth, deepestIndentation), ' ') + m_text.nameInGroup(node);
    }

    Project& m_project;
    const ProjectText& m_text;
    std::vector<bool> m_isWanted;
    Table m_table{{"name", "type", "views", "keys", "frames", ""}};
};

} // namespace

int listParameters(Arguments& arguments) {
    Project::declareWithPatterns(arguments, "[PATTERN...]");
    arguments.severalFiles()
        .tableOptions()
        .example("prm ls project.prm blur")
        .example("prm ls 'blur.*' --files shots/*.prm");
    if (!arguments.read())
        return Fine;
    const bool isTree = arguments.tableForm() == TableForm::Plain;
    return printTables(arguments, [&](Project& project) {
        const std::vector<int> nodes = project.parameters(arguments.patterns());
        return std::pair(isTree ? Tree(project).table(nodes) : list(project, nodes), Fine);
    });
}

} // namespace Tool
