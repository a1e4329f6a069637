#include "tool/ProjectText.h"

#include "prm/ParameterSet.h"
#include "tool/Problem.h"
#include "tool/Progress.h"
#include "tool/Streams.h"

#include <QStringList>

#include <algorithm>
#include <cstring>
#include <unordered_map>

namespace Tool {

namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
constexpr int longestIndentation = 1000;

/// Calls the function with every name of a path, until it answers false.
template <class Visit> void forEachName(std::string_view path, const Visit& visit) {
    std::size_t start = 0;
    while (start <= path.size()) {
        const std::size_t end = std::min(path.find('.', start), path.size());
        if (!visit(path.substr(start, end - start)))
            return;
        start = end + 1;
    }
}

} // namespace

/// Finds nodes by parent and name.
class ProjectText::Index {
public:
    explicit Index(std::vector<Node>& nodes) : m_nodes(nodes) {}

    int nodeOf(std::string_view path) {
        int node = root;
        forEachName(path, [&](std::string_view name) {
            node = childOf(node, name);
            return true;
        });
        return node;
    }

    int find(std::string_view path) const {
        int node = root;
        forEachName(path, [&](std::string_view name) {
            node = findChild(node, name);
            return node >= 0;
        });
        return node;
    }

    int findChild(int parent, std::string_view name) const {
        const auto found = m_places.find({parent, name});
        return found == m_places.end() ? -1 : found->second;
    }

private:
    struct Place {
        int parent;
        std::string_view name;
        bool operator==(const Place& other) const { return parent == other.parent && name == other.name; }
    };
    struct Hash {
        std::size_t operator()(const Place& place) const {
            return std::hash<std::string_view>()(place.name) ^
                   (static_cast<std::size_t>(place.parent) * 0x9E3779B97F4A7C15u);
        }
    };

    int childOf(int parent, std::string_view name) {
        const auto [found, isNew] = m_places.try_emplace({parent, name}, static_cast<int>(m_nodes.size()));
        if (isNew) {
            m_nodes[static_cast<std::size_t>(parent)].children.push_back(found->second);
            Node node;
            node.parent = parent;
            node.name = name;
            m_nodes.push_back(std::move(node));
        }
        return found->second;
    }

    std::vector<Node>& m_nodes;
    std::unordered_map<Place, int, Hash> m_places;
};

ProjectText::ProjectText(const QByteArray& text) : m_text(text), m_nodes(1), m_index(std::make_unique<Index>(m_nodes)) {
    splitLines();
    readLines(readHeader());
}

ProjectText::ProjectText(const QString& file) : ProjectText(readInput(file)) {
    const auto isKnown = [](const Line& line) { return line.key != Key::None; };
    if (std::any_of(m_lines.begin(), m_lines.end(), isKnown))
        return;
    const QByteArray start = m_text.left(longestIndentation).trimmed();
    const QString hint = start.startsWith('{') ? QStringLiteral("; prm import reads animations (JSON)")
                         : m_text.isEmpty()    ? QStringLiteral(", it is empty")
                                               : QString();
    throw Problem(QStringLiteral("%1: not a project text").arg(inputName(file)) + hint);
}

ProjectText::~ProjectText() = default;

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
        text.append(raw(i).data(), static_cast<int>(raw(i).size()));
    return text;
}

/// Gives lines to the header until it is complete, marks those that it took, and returns whether it is complete.
bool ProjectText::takeHeaderLines(int count, Prm::ProjectFileVersion& version) {
    Prm::ParameterSet properties;
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
        m_version.streamVersion = Prm::StreamVersion::latest;
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
        if (reading.key == Key::None || std::count(reading.path.begin(), reading.path.end(), '.') >= deepest)
            continue;
        m_lines[static_cast<std::size_t>(i)].key = reading.key;
        Node& node = m_nodes[static_cast<std::size_t>(m_index->nodeOf(reading.path))];
        if (reading.key == Key::Name)
            node.nameLine = i;
        else
            node.lines.push_back(i);
        if (reading.key == Key::Master)
            node.masterLine = i;
    }
}

/// The names from below an ancestor down to the node.
QString ProjectText::pathFrom(int ancestor, int node) const {
    QStringList names;
    for (int i = node; i != ancestor; i = this->node(i).parent)
        names.prepend(toText(this->node(i).name));
    return names.join(QLatin1Char('.'));
}

int ProjectText::findNode(std::string_view path) const {
    return m_index->find(path);
}

int ProjectText::findChild(int parent, std::string_view name) const {
    return m_index->findChild(parent, name);
}

int ProjectText::groupOf(int node) const {
    int group = this->node(node).parent;
    while (group != root && this->node(group).isParameter() && this->node(group).nameLine < 0)
        group = this->node(group).parent;
    return group;
}

} // namespace Tool
