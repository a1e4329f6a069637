#include "tool/merge/Renames.h"

#include "tool/Table.h"

#include <algorithm>
#include <set>

namespace Tool {

namespace {

/// Of groups around a parameter; those further out are not compared.
constexpr int mostLevels = 16;
/// Of groups with the same parameter, which do not show where one of them went.
constexpr std::size_t mostAlike = 64;

/// What a parameter is called below a group, and its lines.
QByteArray looksBelow(const ProjectText& text, int node, int pathSize) {
    QByteArray looks;
    for (const int line : text.node(node).lines)
        looks += toBytes(text.line(line).substr(static_cast<std::size_t>(pathSize))) + '\n';
    return looks;
}

class Groups {
public:
    /// The groups of a text that another one does not have, each with its parameters.
    Groups(const ProjectText& text, const ProjectText& other) : m_text(text) {
        for (int node = 1; node < text.nodeCount(); ++node) {
            const int above = text.node(node).parent;
            const bool isMissing = m_missing.count(above) > 0 || other.findNode(pathOf(node).toStdString()) < 0;
            if (isMissing && !text.node(node).isParameter())
                m_missing.insert({node, m_missing.count(above) == 0});
        }
        for (int node = 1; node < text.nodeCount(); ++node) {
            if (text.node(node).isParameter())
                addParameter(node);
        }
    }

    QByteArray pathOf(int node) const { return m_text.path(node).toUtf8(); }
    /// Those below no other missing one.
    bool isOutermost(int group) const { return m_missing.at(group); }
    int sizeOf(int group) const { return m_sizes.at(group); }
    /// The groups that have such a parameter.
    const std::map<QByteArray, std::vector<int>>& parameters() const { return m_parameters; }

private:
    void addParameter(int node) {
        int group = m_text.node(node).parent;
        for (int level = 0; group != ProjectText::root && level < mostLevels; ++level) {
            if (m_missing.count(group) > 0) {
                const int pathSize = pathOf(group).size();
                m_parameters[looksBelow(m_text, node, pathSize)].push_back(group);
                ++m_sizes[group];
            }
            group = m_text.node(group).parent;
        }
    }

    const ProjectText& m_text;
    std::map<int, bool> m_missing;
    std::map<int, int> m_sizes;
    std::map<QByteArray, std::vector<int>> m_parameters;
};

using Pair = std::pair<int, int>;

/// How many parameters two groups share.
std::map<Pair, int> sharedParameters(const Groups& gone, const Groups& fresh) {
    std::map<Pair, int> shared;
    for (const auto& [looks, groups] : gone.parameters()) {
        const auto found = fresh.parameters().find(looks);
        if (found == fresh.parameters().end() || groups.size() > mostAlike || found->second.size() > mostAlike)
            continue;
        for (const int group : groups) {
            for (const int other : found->second)
                ++shared[{group, other}];
        }
    }
    return shared;
}

/// Where a path leads: the innermost renamed group around it counts.
QByteArray renamedPath(const QByteArray& path, const Renames& renames) {
    for (int end = path.size(); end > 0; end = path.lastIndexOf('.', end - path.size() - 1)) {
        const auto found = renames.find(path.left(end));
        if (found != renames.end())
            return found->second + path.mid(end);
    }
    return path;
}

QByteArray renamedLine(const ProjectText& text, int index, const Renames& renames) {
    QByteArray raw = toBytes(text.raw(index));
    const std::string_view line = text.line(index);
    const std::string_view path = text.key(index) == Key::Header ? std::string_view() : text.reading(index).path;
    if (path.empty())
        return raw;
    const int start = raw.indexOf(toBytes(line));
    QByteArray changed = toBytes(line);
    if (text.key(index) == Key::Master) {
        const int value = changed.indexOf('=') + 1;
        const int end = changed.indexOf('=', value);
        const int size = (end < 0 ? changed.size() : end) - value;
        changed.replace(value, size, renamedPath(changed.mid(value, size), renames));
    }
    changed.replace(0, static_cast<int>(path.size()), renamedPath(toBytes(path), renames));
    return raw.left(start) + changed + raw.mid(start + static_cast<int>(line.size()));
}

QVariant find(const Renames& renames, const QByteArray& path) {
    const auto found = renames.find(path);
    return found == renames.end() ? QVariant() : QVariant(QString::fromUtf8(found->second));
}

/// What a group of the base is called in the result, from what each side calls it now, if it has renamed it.
QByteArray pathInResult(const QByteArray& path, const QVariant& ours, const QVariant& theirs, Judge& judge) {
    Side side = ours.isNull() ? Side::Theirs : Side::Ours;
    if (!ours.isNull() && !theirs.isNull() && ours != theirs) {
        const Judge::Subject subject{QString::fromUtf8(path), {}, "group", {}, "the group", "renamed"};
        side = judge.settle(subject, {subject.path, ours, theirs}, {"renamed", ours.toString()},
                            {"renamed", theirs.toString()});
    }
    return (side == Side::Ours ? ours : theirs).toString().toUtf8();
}

QByteArray orPath(const QVariant& renamed, const QByteArray& path) {
    return renamed.isNull() ? path : renamed.toString().toUtf8();
}

/// Whether a text has nothing of that path, save the group itself.
bool isFreeIn(const ProjectText& text, const QByteArray& path, const QByteArray& own) {
    return path == own || text.findNode(toView(path)) < 0;
}

void addRename(Renames& renames, const QByteArray& from, const QByteArray& to) {
    if (from != to)
        renames[from] = to;
}

} // namespace

Renames renamesIn(const ProjectText& from, const ProjectText& to) {
    const Groups gone(from, to);
    const Groups fresh(to, from);
    std::map<int, std::vector<int>> candidates;
    std::map<int, int> wanted;
    for (const auto& [pair, count] : sharedParameters(gone, fresh)) {
        const auto& [group, other] = pair;
        const int most = std::max(gone.sizeOf(group), fresh.sizeOf(other));
        if (!gone.isOutermost(group) || 2 * count < most)
            continue;
        candidates[group].push_back(other);
        ++wanted[other];
    }
    Renames renames;
    for (const auto& [group, others] : candidates) {
        if (others.size() == 1 && wanted[others.front()] == 1)
            renames[gone.pathOf(group)] = fresh.pathOf(others.front());
    }
    return renames;
}

QByteArray renamed(const ProjectText& text, const Renames& renames) {
    QByteArray bytes;
    for (int i = 0; i < text.lineCount(); ++i)
        bytes += renamedLine(text, i, renames);
    return bytes;
}

std::array<QByteArray, 3> withSamePaths(const ProjectText& base, const ProjectText& ours, const ProjectText& theirs,
                                        Judge& judge) {
    const Renames oursRenames = renamesIn(base, ours);
    const Renames theirsRenames = renamesIn(base, theirs);
    Renames all = oursRenames;
    all.insert(theirsRenames.begin(), theirsRenames.end());
    std::array<Renames, 3> followed;
    std::set<QByteArray> results;
    for (const auto& entry : all) {
        const QByteArray& path = entry.first;
        // Those within a renamed group are new paths below its new one.
        if (renamedPath(path, followed[0]) != path)
            continue;
        const QVariant oursPath = find(oursRenames, path);
        const QVariant theirsPath = find(theirsRenames, path);
        const QByteArray result = pathInResult(path, oursPath, theirsPath, judge);
        const bool isFree = isFreeIn(base, result, path) && isFreeIn(ours, result, orPath(oursPath, path)) &&
                            isFreeIn(theirs, result, orPath(theirsPath, path));
        if (!isFree || !results.insert(result).second) {
            const Judge::Subject subject{QString::fromUtf8(path), {}, "group", {}, {}};
            judge.settle(subject, {subject.path, oursPath, theirsPath},
                         message("the group was renamed to %1, a name that is in use", QString::fromUtf8(result)));
            continue;
        }
        followed[0][path] = result;
        addRename(followed[1], orPath(oursPath, path), result);
        addRename(followed[2], orPath(theirsPath, path), result);
    }
    return {renamed(base, followed[0]), renamed(ours, followed[1]), renamed(theirs, followed[2])};
}

} // namespace Tool
