#pragma once

#include "prm/Export.h"
#include "prm/ProjectFileVersion.h"
#include "prm/document/LineReading.h"

#include <unordered_map>
#include <utility>
#include <vector>

namespace Prm::document {

/// The project text of any application: its lines with all their bytes, and what they say of groups and parameters.
/// What a line says is only a reading of it; `bytes()` gives back what was read, whatever that was.
///
/// Paths deeper than `Most::levels` are not followed; such lines are unknown, like others that nothing takes.
class PRM_EXPORT ProjectText {
public:
    static constexpr int root = 0;

    /// A group or a parameter. Both look the same from outside: a parameter has lines of its own.
    struct Node {
        int parent = root;
        std::string_view name;
        /// The line of the group's display name, -1 without one.
        int nameLine = -1;
        /// The last line that names a master, -1 without one.
        int masterLine = -1;
        /// The lines of the parameter, in the order of the file.
        std::vector<int> lines;
        std::vector<int> children;

        bool isParameter() const { return !lines.empty(); }
    };

    explicit ProjectText(const QByteArray& text);
    ProjectText(ProjectText&&) = default;
    ProjectText(const ProjectText&) = delete;
    ProjectText& operator=(const ProjectText&) = delete;

    /// Whether any line belongs to a header, a group or a parameter, and the text is none of copied keyframes.
    bool isProject() const;

    /// The whole text, put together from the lines.
    QByteArray bytes() const;

    int lineCount() const { return static_cast<int>(m_lines.size()); }
    /// All bytes of a line, with its end.
    std::string_view raw(int index) const;
    /// Without its end, and without a byte order mark before the first one.
    std::string_view line(int index) const;
    Key key(int index) const { return m_lines[static_cast<std::size_t>(index)].key; }
    LineReading reading(int index) const { return readLine(line(index)); }

    /// The newest version where the text does not say.
    const ProjectFileVersion& version() const { return m_version; }
    bool hasCompleteHeader() const { return m_hasCompleteHeader; }

    /// The first node is the root; the others follow in the order of the file, parents before their children.
    int nodeCount() const { return static_cast<int>(m_nodes.size()); }
    const Node& node(int index) const { return m_nodes[static_cast<std::size_t>(index)]; }
    QString path(int node) const { return pathFrom(root, node); }
    /// -1 when there is none.
    int findNode(std::string_view path) const;
    /// -1 when there is none, or no parent.
    int findChild(int parent, std::string_view name) const;
    /// For each node, the node of that path in another text, -1 without one.
    std::vector<int> counterpartsIn(const ProjectText& other) const;
    /// The path in the last master line of a node, empty without one. Members of a root without a name are written with
    /// a dot before theirs, which is left out.
    std::string_view masterPath(int node) const;
    /// The parameter that the last master line of a node names, -1 without such a line or parameter.
    int masterOf(int node) const;

    /// Whether the node is named as a group, or only a step of paths.
    bool isGroup(int node) const { return this->node(node).nameLine >= 0 || !this->node(node).isParameter(); }
    /// What a group is called, with its quotes; null without a name.
    QString groupName(int node) const;
    /// The deepest group that holds the node. What is a parameter, and not named as a group, holds nothing: what seems
    /// to be below it is a neighbour whose name has a dot.
    int groupOf(int node) const;
    /// The name within the group.
    QString nameInGroup(int node) const { return pathFrom(groupOf(node), node); }

private:
    struct Line {
        int start = 0;
        Key key = Key::None;
    };

    /// A node by its parent and name.
    using Place = std::pair<int, std::string_view>;
    struct Hash {
        std::size_t operator()(const Place& place) const {
            return std::hash<std::string_view>()(place.second) ^
                   (static_cast<std::size_t>(place.first) * 0x9E3779B97F4A7C15u);
        }
    };

    void splitLines();
    int readHeader();
    bool takeHeaderLines(int count, ProjectFileVersion& version);
    void readLines(int first);
    int makeNode(std::string_view path);
    QString pathFrom(int ancestor, int node) const;

    QByteArray m_text;
    std::vector<Line> m_lines;
    std::vector<Node> m_nodes;
    ProjectFileVersion m_version;
    bool m_hasCompleteHeader = false;
    std::unordered_map<Place, int, Hash> m_places;
};

} // namespace Prm::document
