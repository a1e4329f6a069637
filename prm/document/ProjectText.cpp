#include "prm/document/ProjectText.h"

#include "prm/KeyframeClipboard.h"
#include "prm/ParameterSet.h"
#include "prm/document/Budget.h"
#include "prm/document/Progress.h"

#include <QStringList>

#include <algorithm>
#include <cstring>

namespace Prm::document {

namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
constexpr int longestIndentation = 1000;

/// Calls the function with every name of a path.
template <class Visit> void forEachName(std::string_view path, const Visit& visit) {
    for (std::size_t start = 0; start <= path.size();) {
        const std::size_t end = std::min(path.find('.', start), path.size());
        visit(path.substr(start, end - start));
        start = end + 1;
    }
}

} // namespace

ProjectText::ProjectText(const QByteArray& text) : m_text(text), m_nodes(1) {
    splitLines();
    readLines(readHeader());
}

bool ProjectText::isProject() const {
    const auto isKnown = [](const Line& line) { return line.key != Key::None; };
    return !KeyframeClipboard::isClipboardText(QString::fromUtf8(m_text.left(longestIndentation))) &&
           std::any_of(m_lines.begin(), m_lines.end(), isKnown);
}

void ProjectText::splitLines() {
    const char* const begin = m_text.constData();
    const char* const end = begin + m_text.size();
    for (const char* start = begin; start != end;) {
        m_lines.push_back({static_cast<int>(start - begin), Key::None});
        const void* const feed = std::memchr(start, '\n', static_cast<std::size_t>(end - start));
        start = feed ? static_cast<const char*>(feed) + 1 : end;
    }
}

std::string_view ProjectText::raw(int index) const {
    const int start = m_lines[static_cast<std::size_t>(index)].start;
    const int end = index + 1 < lineCount() ? m_lines[static_cast<std::size_t>(index) + 1].start : m_text.size();
    return {m_text.constData() + start, static_cast<std::size_t>(end - start)};
}

std::string_view ProjectText::line(int index) const {
    std::string_view line = raw(index);
    for (const char end : {'\n', '\r'}) {
        if (!line.empty() && line.back() == end)
            line.remove_suffix(1);
    }
    if (index == 0 && line.compare(0, byteOrderMark.size(), byteOrderMark) == 0)
        line.remove_prefix(byteOrderMark.size());
    return line;
}

QByteArray ProjectText::bytes() const {
    QByteArray text;
    text.reserve(m_text.size());
    for (int i = 0; i < lineCount(); ++i)
        text += toBytes(raw(i));
    return text;
}

/// Gives lines to the header until it is complete, marks those that it took, and returns whether it is complete.
bool ProjectText::takeHeaderLines(int count, ProjectFileVersion& version) {
    ParameterSet properties;
    version.initialiseProperties(properties);
    for (int i = 0; i < count && !version.atEnd(); ++i) {
        if (!line(i).empty() && properties.bStreamIn(toText(line(i)), version))
            m_lines[static_cast<std::size_t>(i)].key = Key::Header;
    }
    return version.atEnd();
}

/// Marks the lines of the header and returns where the rest begins. The time of writing directly after it belongs to
/// it. Of a header that is never complete, only the lines at the beginning count.
int ProjectText::readHeader() {
    m_hasCompleteHeader = takeHeaderLines(lineCount(), m_version);
    int end = 0;
    const auto isHeader = [&](int i) { return i < lineCount() && key(i) == Key::Header; };
    if (!m_hasCompleteHeader) {
        while (isHeader(end))
            ++end;
        for (int i = end; i < lineCount(); ++i)
            m_lines[static_cast<std::size_t>(i)].key = Key::None;
        m_version.streamVersion = StreamVersion::latest;
        return end;
    }
    for (int i = 0; i < lineCount(); ++i)
        end = isHeader(i) ? i + 1 : end;
    constexpr std::string_view timestamp = "FileTimestamp.value=";
    if (end < lineCount() && line(end).compare(0, timestamp.size(), timestamp) == 0)
        m_lines[static_cast<std::size_t>(end++)].key = Key::Header;
    return end;
}

void ProjectText::readLines(int first) {
    Progress progress("reading", m_lines.size());
    for (int i = first; i < lineCount(); ++i) {
        progress.step();
        const LineReading reading = this->reading(i);
        if (reading.key == Key::None || std::count(reading.path.begin(), reading.path.end(), '.') >= Most::levels)
            continue;
        m_lines[static_cast<std::size_t>(i)].key = reading.key;
        Node& node = m_nodes[static_cast<std::size_t>(makeNode(reading.path))];
        if (reading.key == Key::Name)
            node.nameLine = i;
        else
            node.lines.push_back(i);
        if (reading.key == Key::Master)
            node.masterLine = i;
    }
}

/// The node of a path, made where it is missing, like those above it.
int ProjectText::makeNode(std::string_view path) {
    int node = root;
    forEachName(path, [&](std::string_view name) {
        const auto [found, isNew] = m_places.try_emplace({node, name}, nodeCount());
        if (isNew) {
            m_nodes[static_cast<std::size_t>(node)].children.push_back(found->second);
            Node child;
            child.parent = node;
            child.name = name;
            m_nodes.push_back(std::move(child));
        }
        node = found->second;
    });
    return node;
}

/// The names from below an ancestor down to the node.
QString ProjectText::pathFrom(int ancestor, int node) const {
    QStringList names;
    for (int i = node; i != ancestor; i = this->node(i).parent)
        names.prepend(toText(this->node(i).name));
    return names.join('.');
}

int ProjectText::findNode(std::string_view path) const {
    int node = root;
    forEachName(path, [&](std::string_view name) { node = findChild(node, name); });
    return node;
}

int ProjectText::findChild(int parent, std::string_view name) const {
    const auto found = m_places.find({parent, name});
    return found == m_places.end() ? -1 : found->second;
}

std::vector<int> ProjectText::counterpartsIn(const ProjectText& other) const {
    std::vector<int> found{root};
    for (int node = 1; node < nodeCount(); ++node) {
        const int above = found[static_cast<std::size_t>(this->node(node).parent)];
        found.push_back(above < 0 ? -1 : other.findChild(above, this->node(node).name));
    }
    return found;
}

std::string_view ProjectText::masterPath(int node) const {
    const int line = this->node(node).masterLine;
    if (line < 0)
        return {};
    std::string_view path = textAfterEquals(this->line(line));
    path = path.substr(0, path.find('='));
    return path.substr(!path.empty() && path.front() == '.' ? 1 : 0);
}

int ProjectText::masterOf(int node) const {
    const std::string_view path = masterPath(node);
    const int master = path.empty() ? -1 : findNode(path);
    return master >= 0 && this->node(master).isParameter() ? master : -1;
}

QString ProjectText::groupName(int node) const {
    const int line = this->node(node).nameLine;
    return line < 0 ? QString() : toText(textAfterEquals(this->line(line)));
}

int ProjectText::groupOf(int node) const {
    int group = this->node(node).parent;
    while (group != root && !isGroup(group))
        group = this->node(group).parent;
    return group;
}

} // namespace Prm::document
