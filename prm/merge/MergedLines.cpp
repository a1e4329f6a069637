#include "prm/merge/MergedLines.h"

#include <algorithm>
#include <set>
#include <string>

namespace Prm::document {

namespace {

std::string_view nameOf(std::string_view line) {
    return line.substr(0, line.find('='));
}

using Lines3 = std::array<std::vector<int>, 3>;
using Texts = std::array<const ProjectText*, 3>;

std::set<std::string_view> repeatedNames(const Texts& texts, const Lines3& lines) {
    std::set<std::string_view> repeated;
    for (const Revision revision : {Base, Ours, Theirs}) {
        std::set<std::string_view> names;
        for (const int line : lines[revision]) {
            const std::string_view name = nameOf(texts[revision]->line(line));
            if (!names.insert(name).second)
                repeated.insert(name);
        }
    }
    return repeated;
}

} // namespace

std::vector<NamedLine> sameLines(const ProjectText& base, const ProjectText& ours, const ProjectText& theirs,
                                 const Lines3& lines) {
    const Texts texts{&base, &ours, &theirs};
    const std::set<std::string_view> repeated = repeatedNames(texts, lines);
    // By name or bytes, and how many there are of them before.
    std::map<std::pair<std::string_view, int>, Trio> places;
    for (const Revision revision : {Base, Ours, Theirs}) {
        std::map<std::string_view, int> counts;
        for (const int line : lines[revision]) {
            const std::string_view bytes = texts[revision]->line(line);
            const std::string_view name = nameOf(bytes);
            const std::string_view identity = repeated.count(name) > 0 ? bytes : name;
            const auto place = places.emplace(std::pair(identity, counts[identity]++), Trio{none, none, none}).first;
            place->second[revision] = line;
        }
    }
    std::vector<NamedLine> same;
    same.reserve(places.size());
    for (const auto& [identity, trio] : places)
        same.push_back({nameOf(identity.first), trio});
    return same;
}

std::vector<int> linesOf(const ProjectText& text, int node, Key key) {
    std::vector<int> lines = text.node(node).lines;
    lines.erase(std::remove_if(lines.begin(), lines.end(), [&](int line) { return text.key(line) != key; }),
                lines.end());
    return lines;
}

QByteArray bytePath(const ProjectText& text, int node) {
    std::vector<std::string_view> names;
    for (; node != ProjectText::root; node = text.node(node).parent)
        names.push_back(text.node(node).name);
    QByteArray path;
    for (auto name = names.rbegin(); name != names.rend(); ++name)
        path += (name == names.rbegin() ? "" : ".") + toBytes(*name);
    return path;
}

MergedLines::MergedLines(const ProjectText& ours, const ProjectText& theirs)
    : m_ours(ours), m_theirs(theirs), m_isInserted(static_cast<std::size_t>(theirs.lineCount())),
      m_partners(m_isInserted.size(), none) {}

void MergedLines::change(const LineChanges& changes) {
    for (const auto& [line, change] : changes) {
        LineChange& all = m_changes[line];
        all.before.insert(all.before.end(), change.before.begin(), change.before.end());
        if (change.own)
            all.own = change.own;
        all.after.insert(all.after.end(), change.after.begin(), change.after.end());
    }
}

void MergedLines::drop(const std::vector<int>& ours) {
    for (const int line : ours)
        m_changes[line].own = Lines();
}

void MergedLines::insert(const std::vector<int>& theirs) {
    for (const int line : theirs)
        m_isInserted[static_cast<std::size_t>(line)] = true;
}

void MergedLines::restore(const std::vector<int>& ours, const std::vector<int>& theirs) {
    for (const int line : ours)
        m_changes[line].own.reset();
    for (const int line : theirs)
        m_isInserted[static_cast<std::size_t>(line)] = false;
}

void MergedLines::replace(int ours, int theirs) {
    m_changes[ours].own = Lines{bytesOf(theirs)};
}

void MergedLines::take(int ours, int theirs) {
    if (theirs == none)
        drop({ours});
    else if (ours == none)
        insert({theirs});
    else
        replace(ours, theirs);
}

void MergedLines::pairLines(int ours, int theirs) {
    if (ours != none && theirs != none)
        m_partners[static_cast<std::size_t>(theirs)] = ours;
}

void MergedLines::pairNodes(int ours, int theirs) {
    if (ours == none)
        return;
    const ProjectText::Node& node = m_ours.node(ours);
    const ProjectText::Node& other = m_theirs.node(theirs);
    if (other.nameLine >= 0)
        pairLines(node.nameLine, other.nameLine);
    for (const int line : other.lines)
        pairLines(node.lines.empty() ? none : node.lines.back(), line);
}

QByteArray MergedLines::merged() {
    // Lines before the end of the header are not read.
    int header = none;
    for (int i = 0; i < m_ours.lineCount(); ++i)
        header = m_ours.key(i) == Key::Header ? i : header;
    int anchor = header;
    for (int i = 0; i < m_theirs.lineCount(); ++i) {
        const auto place = static_cast<std::size_t>(i);
        if (m_partners[place] != none)
            anchor = std::max(m_partners[place], header);
        if (m_isInserted[place]) {
            Lines& lines = anchor == none ? m_changes[0].before : m_changes[anchor].after;
            lines.push_back(bytesOf(i));
        }
    }
    return bytesWith(m_ours, m_changes);
}

} // namespace Prm::document
