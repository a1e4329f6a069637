#include "prm/merge/Renames.h"

#include "prm/document/ValueText.h"
#include "prm/merge/MergedLines.h"

#include <algorithm>
#include <map>
#include <set>
#include <unordered_map>

namespace Prm::document {

namespace {

/// Of groups around a parameter; those further out are not compared.
constexpr int mostLevels = 16;
/// Of groups with the same parameter, from which pairs of groups to compare are made.
constexpr std::size_t mostAlike = 64;

// --- which groups a side has renamed ---------------------------------------------------------------------------------

/// Equal numbers for parameters with the same names and lines.
using Numbers = std::unordered_map<std::string, int>;

/// The groups of a text that another one does not have, each with the sorted numbers of its parameters.
class MissingGroups {
public:
    MissingGroups(const ProjectText& text, const ProjectText& other, Numbers& numbers)
        : m_text(text), m_isMissing(static_cast<std::size_t>(text.nodeCount()), false),
          m_pathSizes(m_isMissing.size()) {
        const std::vector<int> counterparts = text.counterpartsIn(other);
        for (int node = 1; node < text.nodeCount(); ++node) {
            const ProjectText::Node& each = text.node(node);
            const std::size_t start = each.parent == ProjectText::root ? 0 : m_pathSizes[at(each.parent)] + 1;
            m_pathSizes[at(node)] = start + each.name.size();
            m_isMissing[at(node)] = counterparts[at(node)] < 0 && !each.isParameter();
        }
        for (int node = 1; node < text.nodeCount(); ++node) {
            if (text.node(node).isParameter())
                addParameter(node, numbers);
        }
        for (auto& [group, parameters] : m_parameters)
            std::sort(parameters.begin(), parameters.end());
    }

    const std::map<int, std::vector<int>>& parameters() const { return m_parameters; }
    /// Whether it is below no other missing one.
    bool isOutermost(int group) const { return !m_isMissing[at(m_text.node(group).parent)]; }

    /// For each number, the groups that have such a parameter.
    std::unordered_map<int, std::vector<int>> groupsByParameter() const {
        std::unordered_map<int, std::vector<int>> groups;
        for (const auto& [group, parameters] : m_parameters) {
            for (const int parameter : parameters)
                groups[parameter].push_back(group);
        }
        return groups;
    }

private:
    static std::size_t at(int node) { return static_cast<std::size_t>(node); }

    void addParameter(int node, Numbers& numbers) {
        int group = m_text.node(node).parent;
        for (int level = 0; group != ProjectText::root && level < mostLevels; ++level) {
            if (m_isMissing[at(group)]) {
                const auto number =
                    numbers.emplace(linesBelow(node, m_pathSizes[at(group)]), static_cast<int>(numbers.size()));
                m_parameters[group].push_back(number.first->second);
            }
            group = m_text.node(group).parent;
        }
    }

    /// What a parameter is called below a group, and its lines.
    std::string linesBelow(int node, std::size_t pathSize) const {
        std::string lines;
        for (const int line : m_text.node(node).lines) {
            lines += m_text.line(line).substr(pathSize);
            lines += '\n';
        }
        return lines;
    }

    const ProjectText& m_text;
    std::vector<bool> m_isMissing;
    std::vector<std::size_t> m_pathSizes;
    std::map<int, std::vector<int>> m_parameters;
};

bool shareHalf(const std::vector<int>& a, const std::vector<int>& b) {
    const auto [least, most] = std::minmax({a.size(), b.size()});
    if (2 * least < most)
        return false;
    std::vector<int> shared;
    std::set_intersection(a.begin(), a.end(), b.begin(), b.end(), std::back_inserter(shared));
    return 2 * shared.size() >= most;
}

/// Groups that are gone and groups that are new, with a parameter that few others have.
std::set<std::pair<int, int>> candidates(const MissingGroups& gone, const MissingGroups& fresh) {
    std::set<std::pair<int, int>> pairs;
    const auto freshGroups = fresh.groupsByParameter();
    for (const auto& [parameter, groups] : gone.groupsByParameter()) {
        const auto found = freshGroups.find(parameter);
        if (found == freshGroups.end() || groups.size() > mostAlike || found->second.size() > mostAlike)
            continue;
        for (const int group : groups) {
            for (const int other : found->second)
                pairs.emplace(group, other);
        }
    }
    return pairs;
}

/// The groups of a text, as nodes, that are other nodes of another text.
std::map<int, int> renamesIn(const ProjectText& from, const ProjectText& to) {
    Numbers numbers;
    const MissingGroups gone(from, to, numbers);
    const MissingGroups fresh(to, from, numbers);
    std::map<int, std::vector<int>> likely;
    std::map<int, int> wanted;
    for (const auto& [group, other] : candidates(gone, fresh)) {
        if (!gone.isOutermost(group) || !shareHalf(gone.parameters().at(group), fresh.parameters().at(other)))
            continue;
        likely[group].push_back(other);
        ++wanted[other];
    }
    std::map<int, int> renames;
    for (const auto& [group, others] : likely) {
        if (others.size() == 1 && wanted[others.front()] == 1)
            renames[group] = others.front();
    }
    return renames;
}

// --- texts with other paths ------------------------------------------------------------------------------------------

/// The new paths of groups, by their nodes.
using NewPaths = std::map<int, QByteArray>;

/// The innermost group with a new path counts.
QByteArray renamedPath(const ProjectText& text, std::string_view path, const NewPaths& renames) {
    const QByteArray* start = nullptr;
    std::size_t startSize = 0;
    int node = ProjectText::root;
    for (std::size_t first = 0; first <= path.size();) {
        const std::size_t end = std::min(path.find('.', first), path.size());
        node = text.findChild(node, path.substr(first, end - first));
        if (node < 0)
            break;
        const auto found = renames.find(node);
        if (found != renames.end()) {
            start = &found->second;
            startSize = end;
        }
        first = end + 1;
    }
    return start ? *start + toBytes(path.substr(startSize)) : toBytes(path);
}

QByteArray renamedLine(const ProjectText& text, int index, const NewPaths& renames) {
    const std::string_view raw = text.raw(index);
    const std::string_view line = text.line(index);
    const std::string_view path = text.key(index) == Key::Header ? std::string_view() : text.reading(index).path;
    if (path.empty())
        return toBytes(raw);
    const auto start = static_cast<std::size_t>(line.data() - raw.data());
    std::string_view rest = line.substr(path.size());
    QByteArray changed = toBytes(raw.substr(0, start)) + renamedPath(text, path, renames);
    if (text.key(index) == Key::Master) {
        const std::size_t value = rest.find('=') + 1;
        const std::size_t end = std::min(rest.find('=', value), rest.size());
        changed += toBytes(rest.substr(0, value)) + renamedPath(text, rest.substr(value, end - value), renames);
        rest.remove_prefix(end);
    }
    return changed + toBytes(rest) + toBytes(raw.substr(start + line.size()));
}

/// The text with these groups renamed, in the paths of lines and of masters.
QByteArray renamed(const ProjectText& text, const NewPaths& renames) {
    if (renames.empty())
        return text.bytes();
    QByteArray bytes;
    for (int i = 0; i < text.lineCount(); ++i)
        bytes += renamedLine(text, i, renames);
    return bytes;
}

// --- one path for each group -----------------------------------------------------------------------------------------

QString shown(const QByteArray& path) {
    return toText(toView(path));
}

/// A group of the base: its nodes and paths in three texts.
struct RenamedGroup {
    Trio nodes;
    std::array<QByteArray, 3> paths;
};

class Renaming {
public:
    Renaming(const ProjectText& base, const ProjectText& ours, const ProjectText& theirs, Resolver& resolver)
        : m_texts{&base, &ours, &theirs}, m_resolver(resolver), m_ours(renamesIn(base, ours)),
          m_theirs(renamesIn(base, theirs)) {}

    std::array<QByteArray, 3> texts() {
        std::map<int, int> all = m_ours;
        all.insert(m_theirs.begin(), m_theirs.end());
        for (const auto& [node, other] : all) {
            // Those within a renamed group are new paths below its new one.
            if (!isWithinRenamed(node))
                follow(groupOf(node));
        }
        return {renamed(*m_texts[Base], m_newPaths[Base]), renamed(*m_texts[Ours], m_newPaths[Ours]),
                renamed(*m_texts[Theirs], m_newPaths[Theirs])};
    }

private:
    bool isWithinRenamed(int node) const {
        while (node != ProjectText::root && m_newPaths[Base].count(node) == 0)
            node = m_texts[Base]->node(node).parent;
        return node != ProjectText::root;
    }

    RenamedGroup groupOf(int node) const {
        const QByteArray path = bytePath(*m_texts[Base], node);
        RenamedGroup group{{node, none, none}, {path, path, path}};
        for (const Revision side : {Ours, Theirs}) {
            const std::map<int, int>& renames = side == Ours ? m_ours : m_theirs;
            const auto found = renames.find(node);
            group.nodes[side] = found == renames.end() ? m_texts[side]->findNode(toView(path)) : found->second;
            if (found != renames.end())
                group.paths[side] = bytePath(*m_texts[side], found->second);
        }
        joinNamesake(group, Ours, Theirs);
        joinNamesake(group, Theirs, Ours);
        return group;
    }

    /// A side that has the group by the new name of the other side has renamed it too, and changed more of it.
    void joinNamesake(RenamedGroup& group, Revision side, Revision other) const {
        const QByteArray& path = group.paths[other];
        if (group.nodes[side] >= 0 || path == group.paths[Base] || m_texts[Base]->findNode(toView(path)) >= 0)
            return;
        const int node = m_texts[side]->findNode(toView(path));
        const std::map<int, int>& renames = side == Ours ? m_ours : m_theirs;
        const bool isAnother =
            std::any_of(renames.begin(), renames.end(), [node](const auto& rename) { return rename.second == node; });
        if (node < 0 || isAnother)
            return;
        group.nodes[side] = node;
        group.paths[side] = path;
    }

    /// Whether a group that one side has renamed and the other one has deleted stays deleted.
    bool isDeleted(const RenamedGroup& group) {
        const bool isGoneHere = group.nodes[Ours] < 0;
        const auto& [base, ours, theirs] = group.paths;
        const Resolver::Change deletion{"deleted", {}};
        const Resolver::Change rename{"renamed", shown(isGoneHere ? theirs : ours)};
        const Resolver::Subject subject{shown(base), {}, "group", {}, "the group"};
        const Resolver::Values values{shown(base), isGoneHere ? QVariant() : shown(ours),
                                      isGoneHere ? shown(theirs) : QVariant()};
        const Side side =
            m_resolver.settle(subject, values, isGoneHere ? deletion : rename, isGoneHere ? rename : deletion);
        return (side == Side::Ours) == isGoneHere;
    }

    /// What the group is called in the result.
    QByteArray chosenPath(const RenamedGroup& group) {
        const auto& [base, ours, theirs] = group.paths;
        if (ours == base || theirs == base || ours == theirs)
            return ours == base ? theirs : ours;
        const Resolver::Subject subject{shown(base), {}, "group", {}, "the group", "renamed"};
        const Side side = m_resolver.settle(subject, {shown(base), shown(ours), shown(theirs)},
                                            {"renamed", shown(ours)}, {"renamed", shown(theirs)});
        return side == Side::Ours ? ours : theirs;
    }

    /// Whether no text has that path, save for the group itself.
    bool isFree(const QByteArray& path, const RenamedGroup& group) const {
        const auto isFreeIn = [&](Revision revision) {
            return group.paths[revision] == path || m_texts[revision]->findNode(toView(path)) < 0;
        };
        return isFreeIn(Base) && isFreeIn(Ours) && isFreeIn(Theirs);
    }

    void follow(const RenamedGroup& group) {
        // What is kept is then a group that one side has added.
        const bool isInBoth = group.nodes[Ours] >= 0 && group.nodes[Theirs] >= 0;
        if (!isInBoth && !isDeleted(group))
            return;
        const QByteArray path = chosenPath(group);
        if (!isFree(path, group) || !m_results.insert(path).second) {
            const auto& [base, ours, theirs] = group.paths;
            m_resolver.settle({shown(base), {}, "group", {}, {}}, {shown(base), shown(ours), shown(theirs)},
                              message("the group was renamed to %1, a name that is in use", shown(path)));
            return;
        }
        for (const Revision revision : {Base, Ours, Theirs}) {
            if (group.nodes[revision] >= 0 && group.paths[revision] != path)
                m_newPaths[revision][group.nodes[revision]] = path;
        }
        m_newPaths[Base][group.nodes[Base]] = path;
    }

    const std::array<const ProjectText*, 3> m_texts;
    Resolver& m_resolver;
    /// Of base to ours and theirs.
    const std::map<int, int> m_ours;
    const std::map<int, int> m_theirs;
    std::array<NewPaths, 3> m_newPaths;
    std::set<QByteArray> m_results;
};

} // namespace

std::array<QByteArray, 3> withSamePaths(const ProjectText& base, const ProjectText& ours, const ProjectText& theirs,
                                        Resolver& resolver) {
    return Renaming(base, ours, theirs, resolver).texts();
}

} // namespace Prm::document
