#include "tool/Checks.h"

#include "prm/Interpolation.h"
#include "tool/BuiltParameter.h"
#include "tool/Progress.h"

#include <QLocale>

#include <algorithm>
#include <cmath>
#include <map>
#include <unordered_map>

namespace Tool {

namespace {

using Findings = std::vector<Finding>;

/// What a text was written by, when it is older or newer than its reader.
void checkHeader(const ProjectText& text, Findings& findings) {
    if (!text.hasCompleteHeader())
        findings.push_back({0, QStringLiteral("the header is missing or incomplete")});
    else if (text.version().streamVersion > Prm::StreamVersion::latest)
        findings.push_back({0, QStringLiteral("written in version %1 of the format, newer than %2")
                                   .arg(text.version().streamVersion)
                                   .arg(Prm::StreamVersion::latest)});
}

QString shown(std::string_view line) {
    constexpr std::size_t longest = 60;
    const QString text = toText(line.substr(0, longest));
    return line.size() > longest ? text + QStringLiteral("...") : text;
}

void checkUnknown(const ProjectText& text, Findings& findings) {
    for (int i = 0; i < text.lineCount(); ++i) {
        if (text.key(i) == Key::None && !text.line(i).empty())
            findings.push_back({i, QStringLiteral("unknown line: ") + shown(text.line(i))});
    }
}

void checkSettings(const ProjectText& text, int node, Findings& findings) {
    for (const int line : text.node(node).lines) {
        const QString value = toText(textBehindEquals(text.line(line)));
        const Key key = text.key(line);
        Prm::Extrapolation kind{};
        if (key == Key::Views && !(value.startsWith(QLatin1Char('[')) && value.endsWith(QLatin1Char(']'))))
            findings.push_back({line, QStringLiteral("malformed list of views")});
        if ((key == Key::Before || key == Key::After) && !Prm::bStringToExtrapolationType(value, kind))
            findings.push_back({line, QStringLiteral("unknown extrapolation '%1'").arg(value)});
    }
}

void checkGroupNames(const ProjectText& text, Findings& findings) {
    std::unordered_map<int, int> first;
    for (int i = 0; i < text.lineCount(); ++i) {
        if (text.key(i) != Key::Name)
            continue;
        const auto [found, isNew] = first.try_emplace(text.findNode(text.reading(i).path), i);
        if (!isNew)
            findings.push_back(
                {i, QStringLiteral("the group is named again, first in line %1").arg(found->second + 1)});
    }
}

void checkRepeated(const ProjectText& text, int node, Findings& findings) {
    std::map<std::pair<Key, quint32>, int> first;
    for (const int line : text.node(node).lines) {
        const Key key = text.key(line);
        if (key == Key::Keyframe)
            continue;
        // A value for view 0 may stand with and without its prefix, and these mean different things.
        const auto [found, isNew] = first.try_emplace({key, text.reading(line).view.id()}, line);
        if (!isNew)
            findings.push_back(
                {line,
                 QStringLiteral("'%1' is given again, first in line %2").arg(text.path(node)).arg(found->second + 1)});
    }
}

/// A keyframe's time as written, as read, and as it will be written.
struct WrittenTime {
    explicit WrittenTime(const QString& text)
        : asWritten(text.toDouble(&isNumber)), asRead(text.toFloat()),
          asSaved(QString::number(static_cast<double>(asRead), 'g', 6)) {
        isNumber = isNumber && !std::isnan(asWritten);
    }

    bool isNumber = false;
    double asWritten;
    float asRead;
    QString asSaved;

    QString shownAsSaved() const { return QString::number(asSaved.toDouble(), 'f', QLocale::FloatingPointShortest); }
};

/// A view's keyframes whose times are one after saving. Those that are one already are told apart from these.
class SavedTimes {
public:
    explicit SavedTimes(Findings& findings) : m_findings(findings) {}

    void add(int line, quint32 view, const WrittenTime& time) {
        const auto [found, isNew] = m_first.try_emplace({view, time.asSaved}, line, time.asRead);
        if (isNew)
            return;
        const auto& [firstLine, firstTime] = found->second;
        const QString message = firstTime == time.asRead ? QStringLiteral("a second keyframe at %1, as in line %2")
                                                         : QStringLiteral("merges on saving at %1 with line %2");
        m_findings.push_back({line, message.arg(time.shownAsSaved()).arg(firstLine + 1)});
    }

private:
    Findings& m_findings;
    std::map<std::pair<quint32, QString>, std::pair<int, float>> m_first;
};

void checkTime(int line, const QString& written, const WrittenTime& time, Findings& findings) {
    if (!time.isNumber)
        findings.push_back({line, QStringLiteral("'%1' is not a time").arg(written)});
    else if (time.asSaved.toDouble() != time.asWritten)
        findings.push_back({line, QStringLiteral("time %1 moves to %2 on saving").arg(written, time.shownAsSaved())});
}

/// Between its first and last comma, a declaration has a value. One comma alone is read as an empty one.
bool hasValue(std::string_view line) {
    const std::size_t start = line.find("Key(");
    return line.find(',', start) != line.rfind(',');
}

void checkKeyframes(const ProjectText& text, int node, Findings& findings) {
    Prm::Parameter<QString> parameter;
    const std::vector<int> malformed = readInto(parameter, text, node);
    for (const int line : malformed)
        findings.push_back({line, QStringLiteral("malformed keyframe")});
    SavedTimes times(findings);
    for (const int line : text.node(node).lines) {
        if (text.key(line) != Key::Keyframe || std::binary_search(malformed.begin(), malformed.end(), line))
            continue;
        const QString written = toText(keyframeTimeText(text.line(line))).trimmed();
        if (!hasValue(text.line(line)))
            findings.push_back({line, QStringLiteral("keyframe without a value")});
        const Prm::View view = text.reading(line).view;
        const WrittenTime time(written);
        checkTime(line, written, time, findings);
        times.add(line, view.isValid() ? view.id() : Prm::View::defaultViewId(), time);
    }
}

/// Each parameter has one master at most, so that every walk ends in a circle or at a parameter without a master. All
/// that one walk has passed need not be walked again.
void checkMasters(const ProjectText& text, Findings& findings) {
    std::vector<int> walkOf(text.nodes().size(), 0);
    for (int start = 0; start < static_cast<int>(text.nodes().size()); ++start) {
        int node = start;
        for (; node >= 0 && walkOf[static_cast<std::size_t>(node)] == 0; node = masterOf(text, node))
            walkOf[static_cast<std::size_t>(node)] = start + 1;
        if (node >= 0 && walkOf[static_cast<std::size_t>(node)] == start + 1 && masterOf(text, node) >= 0)
            findings.push_back(
                {text.node(node).masterLine, QStringLiteral("'%1' follows itself in a circle").arg(text.path(node))});
        const int line = text.node(start).masterLine;
        if (line >= 0 && masterOf(text, start) < 0)
            findings.push_back(
                {line, QStringLiteral("no parameter '%1' to follow").arg(toText(textBehindEquals(text.line(line))))});
    }
}

void checkName(const ProjectText& text, int node, Findings& findings) {
    const QString name = text.nameInGroup(node);
    if (name.contains(QLatin1Char('.')))
        findings.push_back({text.node(node).lines.front(), QStringLiteral("the name '%1' has a dot").arg(name)});
}

} // namespace

std::vector<Finding> findingsIn(const ProjectText& text) {
    Findings findings;
    checkHeader(text, findings);
    checkUnknown(text, findings);
    checkGroupNames(text, findings);
    Progress progress("checking", text.nodes().size());
    for (int node = 0; node < static_cast<int>(text.nodes().size()); ++node) {
        progress.step();
        if (!text.node(node).isParameter())
            continue;
        checkName(text, node, findings);
        checkSettings(text, node, findings);
        checkRepeated(text, node, findings);
        checkKeyframes(text, node, findings);
    }
    checkMasters(text, findings);
    std::stable_sort(findings.begin(), findings.end(),
                     [](const Finding& a, const Finding& b) { return a.line < b.line; });
    return findings;
}

} // namespace Tool
