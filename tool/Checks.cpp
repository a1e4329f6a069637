#include "tool/Checks.h"

#include "prm/Interpolation.h"
#include "prm/document/FileParameter.h"
#include "prm/document/Progress.h"
#include "tool/Frames.h"

#include <QLocale>

#include <algorithm>
#include <cmath>
#include <map>
#include <unordered_map>

namespace Tool {

namespace {

/// Collects what is wrong with a text.
class Checking {
public:
    explicit Checking(const ProjectText& text) : m_text(text) {}

    std::vector<Finding> findings() {
        checkHeader();
        checkLines();
        Progress progress("checking", static_cast<std::size_t>(m_text.nodeCount()));
        for (int node = 0; node < m_text.nodeCount(); ++node) {
            progress.step();
            if (!m_text.node(node).isParameter())
                continue;
            checkName(node);
            checkSettings(node);
            checkRepeated(node);
            checkKeyframes(node);
        }
        checkMasters();
        std::stable_sort(m_findings.begin(), m_findings.end(),
                         [](const Finding& a, const Finding& b) { return a.line < b.line; });
        return std::move(m_findings);
    }

private:
    template <class... Parts> void add(int line, const char* pattern, const Parts&... parts) {
        m_findings.push_back({line, message(pattern, parts...)});
    }

    /// What a text was written by, when it is older or newer than its reader.
    void checkHeader() {
        const quint32 version = m_text.version().streamVersion;
        if (!m_text.hasCompleteHeader())
            add(0, "the header is missing or incomplete; prm upgrade writes one");
        else if (version > Prm::StreamVersion::latest)
            add(0, "written in version %1 of the format, newer than %2; a newer prm is needed", version,
                Prm::StreamVersion::latest);
    }

    void checkLines() {
        constexpr std::size_t longest = 60;
        std::unordered_map<int, int> first;
        for (int i = 0; i < m_text.lineCount(); ++i) {
            const std::string_view line = m_text.line(i);
            if (m_text.key(i) == Key::None && !line.empty())
                add(i, "unknown line: %1%2", toText(line.substr(0, longest)), line.size() > longest ? "..." : "");
            if (!isUtf8(line))
                add(i, "not UTF-8, so that an application does not read it");
            if (m_text.key(i) != Key::Name)
                continue;
            const auto [found, isNew] = first.try_emplace(m_text.findNode(m_text.reading(i).path), i);
            if (!isNew)
                add(i, "%1: the group is named again, first in line %2", toText(m_text.reading(i).path),
                    found->second + 1);
        }
    }

    void checkName(int node) {
        const QString name = m_text.nameInGroup(node);
        if (name.contains('.'))
            add(m_text.node(node).lines.front(), "%1: the name '%2' has a dot", m_text.path(node), name);
    }

    void checkSettings(int node) {
        for (const int line : m_text.node(node).lines) {
            const QString value = toText(textAfterEquals(m_text.line(line)));
            const Key key = m_text.key(line);
            Prm::Extrapolation kind{};
            if (key == Key::Views && !(value.startsWith('[') && value.endsWith(']')))
                add(line, "%1: malformed list of views, which is written as [0, 1]", m_text.path(node));
            if ((key == Key::Before || key == Key::After) && !Prm::bStringToExtrapolationType(value, kind))
                add(line, "%1: unknown extrapolation '%2'; prm extrapolation sets one", m_text.path(node), value);
        }
    }

    void checkRepeated(int node) {
        std::map<std::pair<Key, quint32>, int> first;
        for (const int line : m_text.node(node).lines) {
            const Key key = m_text.key(line);
            if (key == Key::Keyframe)
                continue;
            // A value for view 0 may be there with and without its prefix, and these mean different things.
            const auto [found, isNew] = first.try_emplace({key, m_text.reading(line).view.id()}, line);
            if (!isNew)
                add(line, "%1: given again, first in line %2", m_text.path(node), found->second + 1);
        }
    }

    /// The first keyframe of a view that is written at a time: its line, and its time as it is read.
    using FirstKeyframes = std::map<std::pair<quint32, double>, std::pair<int, Prm::Time>>;

    void checkKeyframes(int node) {
        const FileParameter parameter(m_text, node);
        for (const int line : parameter.refused())
            add(line, "%1: malformed keyframe, which is written as Key( 10, 0.5, Linear )", parameter.path());
        FirstKeyframes first;
        for (const int line : m_text.node(node).lines) {
            const bool isRefused = std::binary_search(parameter.refused().begin(), parameter.refused().end(), line);
            if (m_text.key(line) == Key::Keyframe && !isRefused)
                checkKeyframe(parameter.path(), line, first);
        }
    }

    void checkKeyframe(const QString& path, int line, FirstKeyframes& first) {
        const std::string_view bytes = m_text.line(line);
        // Between its first and last comma, a declaration has a value. One comma alone is read as an empty one.
        const std::size_t start = bytes.find("Key(");
        if (bytes.find(',', start) == bytes.rfind(','))
            add(line, "%1: keyframe without a value; prm set gives one", path);
        const QString written = toText(keyframeTimeText(bytes)).trimmed();
        bool isNumber = false;
        const double frame = written.toDouble(&isNumber);
        const float number = written.toFloat();
        const Prm::Time read = std::isinf(number) ? Prm::Time(Prm::Time::INVALID) : Prm::Time::fromFloat(number);
        if (!isNumber || !read.isValid())
            add(line, "%1: '%2' is not a time, which is a number of frames", path, written);
        if (!read.isValid())
            return;
        const double saved = writtenFrame(read);
        const QString shown = QString::number(saved, 'f', QLocale::FloatingPointShortest);
        if (isNumber && saved != frame)
            add(line, "%1: time %2 moves to %3 on saving, as times have six digits", path, written, shown);
        const Prm::View view = m_text.reading(line).view;
        const quint32 id = view.isValid() ? view.id() : Prm::View::defaultViewId();
        const auto [found, isNew] = first.try_emplace({id, saved}, line, read);
        if (isNew)
            return;
        const auto& [firstLine, firstTime] = found->second;
        add(line,
            firstTime == read ? "%1: a second keyframe at %2, as in line %3"
                              : "%1: merges on saving at %2 with line %3",
            path, shown, firstLine + 1);
    }

    /// Each parameter has one master at most, so that every walk ends in a circle or at a parameter without a master.
    /// All that one walk has passed need not be walked again.
    void checkMasters() {
        std::vector<int> walkOf(static_cast<std::size_t>(m_text.nodeCount()), 0);
        for (int start = 0; start < m_text.nodeCount(); ++start) {
            int node = start;
            for (; node >= 0 && walkOf[static_cast<std::size_t>(node)] == 0; node = m_text.masterOf(node))
                walkOf[static_cast<std::size_t>(node)] = start + 1;
            if (node >= 0 && walkOf[static_cast<std::size_t>(node)] == start + 1 && m_text.masterOf(node) >= 0)
                add(m_text.node(node).masterLine, "%1: follows itself in a circle; delete one of its masters",
                    m_text.path(node));
            const int line = m_text.node(start).masterLine;
            if (line >= 0 && m_text.masterOf(start) < 0)
                add(line, "%1: no parameter '%2' to follow", m_text.path(start),
                    toText(textAfterEquals(m_text.line(line))));
        }
    }

    const ProjectText& m_text;
    std::vector<Finding> m_findings;
};

} // namespace

std::vector<Finding> findingsIn(const ProjectText& text) {
    return Checking(text).findings();
}

} // namespace Tool
