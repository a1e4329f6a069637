#include "prm/document/ProjectDiff.h"

#include "prm/document/Budget.h"
#include "prm/document/ConflictMarkers.h"
#include "prm/document/Document.h"
#include "prm/document/KeyframeDiff.h"
#include "prm/document/Problem.h"
#include "prm/document/Progress.h"
#include "prm/document/ValueText.h"

#include <algorithm>
#include <set>
#include <string>

namespace Prm::document {

namespace {

const QString added = "added";
const QString removed = "removed";
const QString changed = "changed";
const QString moved = "moved";

const QString& changeOf(const QVariant& from, const QVariant& to) {
    return from.isNull() ? added : to.isNull() ? removed : changed;
}

/// What was added has no text before, what was removed none after.
QVariant onlyIf(const QString& change, const QString& wanted, const QString& text) {
    return change == wanted ? QVariant(text) : QVariant();
}

QString contentOf(const FileView& data) {
    if (!data.keys.empty())
        return ", " + counted(static_cast<qint64>(data.keys.size()), "key");
    return data.value.text.isEmpty() ? QString() : ", value " + data.value.text;
}

QString contentOf(const FileViews& views) {
    if (views.size() == 1)
        return contentOf(views.begin()->second);
    std::size_t keys = 0;
    for (const auto& [view, data] : views)
        keys += data.keys.size();
    return views.empty() ? QString()
                         : message(", %1 views, %2", views.size(), counted(static_cast<qint64>(keys), "key"));
}

bool hasOnlyFirst(const FileViews& views) {
    return views.size() == 1 && views.begin()->first == 0;
}

/// Two texts, node by node.
class Comparison {
public:
    Comparison(const ProjectText& from, const ProjectText& to)
        : m_from(from), m_to(to), m_fromKinds(from), m_toKinds(to) {}

    std::vector<Difference> differences() {
        compareHeaders();
        const std::vector<int> after = m_from.counterpartsIn(m_to);
        Progress progress("comparing", after.size());
        for (int node = 1; node < m_from.nodeCount(); ++node) {
            progress.step();
            compareNode(node, after);
        }
        const std::vector<int> before = m_to.counterpartsIn(m_from);
        for (int node = 1; node < m_to.nodeCount(); ++node)
            addNew(node, before);
        compareUnknownLines();
        return std::move(m_differences);
    }

private:
    // --- what is found -----------------------------------------------------------------------------------------------

    /// At the present path and view.
    void add(const QString& what, const QString& change, const QString& text, const QVariant& from = {},
             const QVariant& to = {}, const QVariant& frame = {}) {
        const QString view = m_namesViews && !m_view.isNull() ? " view " + m_view.toString() : QString();
        m_differences.push_back({m_path, m_view, what, change, frame, from, to, m_path + view + ": " + text});
    }

    /// "value 1 changed to 2", "value 2 added", "value 1 removed".
    void addChange(const QString& what, const QString& subject, const QVariant& from, const QVariant& to,
                   const QVariant& frame = {}) {
        if (from == to)
            return;
        const QString& change = changeOf(from, to);
        const QString text = message("%1 %2 %3", subject, plainText(from.isNull() ? to : from), change);
        add(what, change, change == changed ? text + " to " + plainText(to) : text, from, to, frame);
    }

    // --- the header and other lines ----------------------------------------------------------------------------------

    static std::map<std::string, QString> header(const ProjectText& text) {
        std::map<std::string, QString> values;
        for (int i = 0; i < text.lineCount() && text.key(i) == Key::Header; ++i) {
            const std::string_view line = text.line(i);
            values[std::string(line.substr(0, line.find(".value=")))] = toText(textAfterEquals(line)).trimmed();
        }
        return values;
    }

    void compareHeaders() {
        const auto from = header(m_from);
        const auto to = header(m_to);
        auto names = to;
        names.insert(from.begin(), from.end());
        for (const auto& [name, value] : names) {
            const auto valueIn = [&name = name](const auto& values) {
                const auto found = values.find(name);
                return found == values.end() ? QVariant() : QVariant(found->second);
            };
            m_path = "header";
            const std::size_t count = m_differences.size();
            addChange("header", toText(name), valueIn(from), valueIn(to));
            if (m_differences.size() > count)
                m_differences.back().path = toText(name);
        }
    }

    void compareUnknownLines() {
        const auto from = unknownLines(m_from);
        const auto to = unknownLines(m_to);
        const auto addMissing = [&](const auto& lines, const auto& others, const QString& change) {
            std::vector<std::string_view> missing;
            std::set_difference(lines.begin(), lines.end(), others.begin(), others.end(), std::back_inserter(missing));
            for (const std::string_view line : missing)
                m_differences.push_back({{},
                                         {},
                                         "line",
                                         change,
                                         {},
                                         onlyIf(change, removed, toText(line)),
                                         onlyIf(change, added, toText(line)),
                                         message("unknown line %1: %2", change, toText(line))});
        };
        addMissing(from, to, removed);
        addMissing(to, from, added);
    }

    static std::vector<std::string_view> unknownLines(const ProjectText& text) {
        std::vector<std::string_view> lines;
        for (int i = 0; i < text.lineCount(); ++i) {
            if (text.key(i) == Key::None && !text.line(i).empty())
                lines.push_back(text.line(i));
        }
        std::sort(lines.begin(), lines.end());
        return lines;
    }

    // --- groups ------------------------------------------------------------------------------------------------------

    void compareNode(int node, const std::vector<int>& counterparts) {
        const int other = counterparts[static_cast<std::size_t>(node)];
        const bool stillExists = other >= 0;
        m_path = m_from.path(node);
        if (m_from.isGroup(node) && !(stillExists && m_to.isGroup(other)))
            addGroup(removed, m_from, node, counterparts);
        else if (m_from.isGroup(node))
            addChange("name", "name", orNull(m_from.groupName(node)), orNull(m_to.groupName(other)));
        if (m_from.node(node).isParameter() && !(stillExists && m_to.node(other).isParameter()))
            addParameter(removed, node, m_fromKinds);
        else if (m_from.node(node).isParameter() && !haveSameLines(node, other))
            compareParameters(m_fromKinds.read(node), m_toKinds.read(other));
    }

    void addNew(int node, const std::vector<int>& counterparts) {
        const int other = counterparts[static_cast<std::size_t>(node)];
        m_path = m_to.path(node);
        if (m_to.isGroup(node) && !(other >= 0 && m_from.isGroup(other)))
            addGroup(added, m_to, node, counterparts);
        if (m_to.node(node).isParameter() && !(other >= 0 && m_from.node(other).isParameter()))
            addParameter(added, node, m_toKinds);
    }

    /// A group that is only a step in the path goes without saying below one that is reported.
    void addGroup(const QString& change, const ProjectText& text, int node, const std::vector<int>& counterparts) {
        const bool isReported = counterparts[static_cast<std::size_t>(text.node(node).parent)] < 0;
        const QString name = text.groupName(node);
        if (!isReported || !name.isNull())
            add("group", change, "group " + change + (name.isNull() ? name : ", " + name));
    }

    // --- parameters --------------------------------------------------------------------------------------------------

    void addParameter(const QString& change, int node, Kinds& kinds) {
        const FileParameter parameter = kinds.read(node);
        add("parameter", change, "parameter " + change + contentOf(parameter.normalisedViews(parameter.kind())));
    }

    /// Most parameters of a large project are left alone: their lines are the same, and then mean the same.
    bool haveSameLines(int node, int other) const {
        const auto& lines = m_from.node(node).lines;
        const auto& others = m_to.node(other).lines;
        return m_from.version().streamVersion == m_to.version().streamVersion &&
               std::equal(lines.begin(), lines.end(), others.begin(), others.end(),
                          [this](int a, int b) { return m_from.line(a) == m_to.line(b); });
    }

    void compareParameters(const FileParameter& from, const FileParameter& to) {
        const Kind kind = commonKind(from.kind(), to.kind());
        compareViews(from.normalisedViews(kind), to.normalisedViews(kind));
        addChange("before", "extrapolation before", from.before(), to.before());
        addChange("after", "extrapolation after", from.after(), to.after());
        if (from.isHidden() != to.isHidden())
            add("hidden", changed, to.isHidden() ? "hidden" : "not hidden", from.isHidden(), to.isHidden());
        addChange("master", "master", orNull(from.master()), orNull(to.master()));
        compareRefused(from, to);
    }

    void compareRefused(const FileParameter& from, const FileParameter& to) {
        const auto linesOf = [](const ProjectText& text, const FileParameter& parameter) {
            QStringList lines;
            for (const int line : parameter.refused())
                lines.append(toText(text.line(line)));
            return lines;
        };
        const auto addMissing = [this](const QStringList& lines, QStringList others, const QString& change) {
            others.sort();
            for (const QString& line : lines) {
                if (!std::binary_search(others.begin(), others.end(), line))
                    add("line", change, message("malformed line %1: %2", change, line), onlyIf(change, removed, line),
                        onlyIf(change, added, line));
            }
        };
        addMissing(linesOf(m_from, from), linesOf(m_to, to), removed);
        addMissing(linesOf(m_to, to), linesOf(m_from, from), added);
    }

    void compareViews(const FileViews& from, const FileViews& to) {
        std::set<quint32> views;
        for (const FileViews* const each : {&from, &to}) {
            for (const auto& [view, data] : *each)
                views.insert(view);
        }
        for (const quint32 view : views) {
            m_view = view;
            const auto before = from.find(view);
            const auto after = to.find(view);
            m_namesViews = false;
            if (before == from.end())
                addView(added, after->second);
            else if (after == to.end())
                addView(removed, before->second);
            m_namesViews = !hasOnlyFirst(from) || !hasOnlyFirst(to);
            if (before != from.end() && after != to.end())
                compareData(before->second, after->second);
        }
        m_view.clear();
    }

    void addView(const QString& change, const FileView& data) {
        m_budget.spend(m_path.size());
        add("view", change, message("view %1 %2", m_view.toString(), change) + contentOf(data));
    }

    void compareData(const FileView& from, const FileView& to) {
        addChange("value", "value", orNull(from.value.text), orNull(to.value.text));
        const auto first = static_cast<std::ptrdiff_t>(m_differences.size());
        const KeyframeDiff diff = compareKeyframes(from.keys, to.keys);
        const auto keyAt = [](const FileView& data, int index) -> const FileKeyframe& {
            return data.keys[static_cast<std::size_t>(index)];
        };
        for (const auto& [a, b] : diff.moved)
            addMoved(keyAt(from, a), keyAt(to, b));
        for (const auto& [a, b] : diff.changed)
            addChanged(keyAt(from, a), keyAt(to, b));
        for (const int a : diff.removed)
            addKey(removed, keyAt(from, a));
        for (const int b : diff.added)
            addKey(added, keyAt(to, b));
        std::stable_sort(m_differences.begin() + first, m_differences.end(),
                         [](const auto& a, const auto& b) { return a.frame.toDouble() < b.frame.toDouble(); });
    }

    void addMoved(const FileKeyframe& from, const FileKeyframe& to) {
        const double start = from.time.toDouble();
        const double end = to.time.toDouble();
        add("key", moved, message("key at %1 moved to %2", frameText(start), frameText(end)), start, end, start);
    }

    void addKey(const QString& change, const FileKeyframe& key) {
        const double time = key.time.toDouble();
        const QString text = keyframeText(key);
        add("key", change, message("key at %1 %2, %3", frameText(time), change, text), onlyIf(change, removed, text),
            onlyIf(change, added, text), time);
    }

    void addChanged(const FileKeyframe& from, const FileKeyframe& to) {
        const double time = from.time.toDouble();
        const QString subject = message("key at %1:", frameText(time));
        addChange("key value", subject + " value", from.value.text, to.value.text, time);
        addChange("key interpolation", subject, curveText(from.interpolationData), curveText(to.interpolationData),
                  time);
    }

    const ProjectText& m_from;
    const ProjectText& m_to;
    Kinds m_fromKinds;
    Kinds m_toKinds;
    QString m_path;
    QVariant m_view;
    bool m_namesViews = false;
    std::vector<Difference> m_differences;
    TextBudget m_budget;
};

} // namespace

std::vector<Difference> differences(const ProjectText& from, const ProjectText& to) {
    return Comparison(from, to).differences();
}

QString differenceInBytes(const ProjectText& from, const ProjectText& to) {
    if (from.bytes() == to.bytes())
        return {};
    const auto linesOf = [](const ProjectText& text) {
        std::vector<std::string_view> lines;
        lines.reserve(static_cast<std::size_t>(text.lineCount()));
        for (int i = 0; i < text.lineCount(); ++i)
            lines.push_back(text.line(i));
        return lines;
    };
    auto fromLines = linesOf(from);
    auto toLines = linesOf(to);
    if (fromLines == toLines)
        return "the ends of lines";
    std::sort(fromLines.begin(), fromLines.end());
    std::sort(toLines.begin(), toLines.end());
    return fromLines == toLines ? "the order of lines" : "how it is written";
}

} // namespace Prm::document

std::vector<Prm::ProjectDifference> Prm::projectDifferences(const QByteArray& from, const QByteArray& to) {
    document::refuseConflicts(from, "from");
    document::refuseConflicts(to, "to");
    return document::differences(document::ProjectText(from), document::ProjectText(to));
}
