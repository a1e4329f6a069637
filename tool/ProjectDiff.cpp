#include "tool/ProjectDiff.h"

#include "tool/KeyframeDiff.h"
#include "tool/ParameterState.h"
#include "tool/Progress.h"
#include "tool/Table.h"
#include "tool/TextLimit.h"
#include "tool/ValueKind.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>

namespace Tool {

namespace {

using Keyframe = ParameterState::Keyframe;
using ViewData = ParameterState::ViewData;

const QString added = QStringLiteral("added");
const QString removed = QStringLiteral("removed");
const QString changed = QStringLiteral("changed");
const QString moved = QStringLiteral("moved");

QVariant orNull(const QString& text) {
    return text.isEmpty() ? QVariant() : QVariant(text);
}

QString changeOf(const QVariant& from, const QVariant& to) {
    return from.isNull() ? added : to.isNull() ? removed : changed;
}

/// "value 1 changed to 2", "value 2 added", "value 1 removed".
QString sentence(const QString& subject, const QVariant& from, const QVariant& to) {
    const QString first = subject + QLatin1Char(' ') + plainText(from.isNull() ? to : from) + QLatin1Char(' ');
    const QString change = changeOf(from, to);
    return first + (change == changed ? QStringLiteral("changed to ") + plainText(to) : change);
}

QString look(const Keyframe& key) {
    return QStringLiteral("%1 (%2)").arg(key.value, key.curve);
}

QString keyCount(std::size_t count) {
    return count == 1 ? QStringLiteral("1 key") : QStringLiteral("%1 keys").arg(count);
}

QString contentOf(const ViewData& data) {
    if (!data.keys.empty())
        return QStringLiteral(", ") + keyCount(data.keys.size());
    return data.value.isEmpty() ? QString() : QStringLiteral(", value ") + data.value;
}

QString contentOf(const ParameterState& state) {
    if (state.views.size() == 1)
        return contentOf(state.views.begin()->second);
    std::size_t keys = 0;
    for (const auto& [view, data] : state.views)
        keys += data.keys.size();
    return state.views.empty() ? QString()
                               : QStringLiteral(", %1 views, %2").arg(state.views.size()).arg(keyCount(keys));
}

/// Collects what is different about one parameter.
class ParameterComparison {
public:
    ParameterComparison(QString path, std::vector<Difference>& differences)
        : m_path(std::move(path)), m_differences(differences) {}

    void compare(const ParameterState& from, const ParameterState& to) {
        const auto onlyFirst = [](const ParameterState& state) {
            return state.views.size() == 1 && state.views.begin()->first == 0;
        };
        m_namesViews = !onlyFirst(from) || !onlyFirst(to);
        compareViews(from, to);
        compareSettings(from, to);
        compareRefused(from.refused, to.refused);
    }

private:
    void add(const QString& what, const QString& change, const QString& message, const QVariant& from = {},
             const QVariant& to = {}, const QVariant& frame = {}) {
        const QString view =
            m_namesViews && !m_view.isNull() ? QStringLiteral(" view ") + m_view.toString() : QString();
        m_differences.push_back(
            {m_path, m_view, what, change, frame, from, to, m_path + view + QStringLiteral(": ") + message});
    }

    void addChange(const QString& what, const QString& subject, const QVariant& from, const QVariant& to,
                   const QVariant& frame = {}) {
        add(what, changeOf(from, to), sentence(subject, from, to), from, to, frame);
    }

    void compareViews(const ParameterState& from, const ParameterState& to) {
        std::set<quint32> views;
        for (const ParameterState* state : {&from, &to}) {
            for (const auto& [view, data] : state->views)
                views.insert(view);
        }
        for (const quint32 view : views) {
            m_view = view;
            const auto before = from.views.find(view);
            const auto after = to.views.find(view);
            if (before == from.views.end())
                addView(added, after->second);
            else if (after == to.views.end())
                addView(removed, before->second);
            else
                compareData(before->second, after->second);
        }
        m_view.clear();
    }

    void addView(const QString& change, const ViewData& data) {
        const QString message = QStringLiteral("view %1 %2").arg(m_view.toString(), change) + contentOf(data);
        m_limit.add(m_path.size());
        m_differences.push_back(
            {m_path, m_view, QStringLiteral("view"), change, {}, {}, {}, m_path + QStringLiteral(": ") + message});
    }

    void compareData(const ViewData& from, const ViewData& to) {
        if (from.value != to.value)
            addChange(QStringLiteral("value"), QStringLiteral("value"), orNull(from.value), orNull(to.value));
        const std::size_t first = m_differences.size();
        const KeyframeDiff diff = compareKeyframes(from.keys, to.keys);
        const auto keyAt = [](const ViewData& data, int index) -> const Keyframe& {
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
        std::stable_sort(m_differences.begin() + static_cast<std::ptrdiff_t>(first), m_differences.end(),
                         [](const auto& a, const auto& b) { return a.frame.toDouble() < b.frame.toDouble(); });
    }

    void addMoved(const Keyframe& from, const Keyframe& to) {
        add(QStringLiteral("key"), moved,
            QStringLiteral("key at %1 moved to %2").arg(plainText(from.time), plainText(to.time)), from.time, to.time,
            from.time);
    }

    void addKey(const QString& change, const Keyframe& key) {
        const QString message = QStringLiteral("key at %1 %2, %3").arg(plainText(key.time), change, look(key));
        const QVariant text = look(key);
        add(QStringLiteral("key"), change, message, change == removed ? text : QVariant(),
            change == added ? text : QVariant(), key.time);
    }

    void addChanged(const Keyframe& from, const Keyframe& to) {
        const QString subject = QStringLiteral("key at %1:").arg(plainText(from.time));
        if (from.value != to.value)
            addChange(QStringLiteral("key value"), subject + QStringLiteral(" value"), from.value, to.value, from.time);
        if (from.curve != to.curve)
            addChange(QStringLiteral("key interpolation"), subject, from.curve, to.curve, from.time);
    }

    void compareSettings(const ParameterState& from, const ParameterState& to) {
        if (from.before != to.before)
            addChange(QStringLiteral("before"), QStringLiteral("extrapolation before"), from.before, to.before);
        if (from.after != to.after)
            addChange(QStringLiteral("after"), QStringLiteral("extrapolation after"), from.after, to.after);
        if (from.isHidden != to.isHidden)
            add(QStringLiteral("hidden"), changed,
                to.isHidden ? QStringLiteral("hidden") : QStringLiteral("not hidden"), from.isHidden, to.isHidden);
        if (from.master != to.master)
            addChange(QStringLiteral("master"), QStringLiteral("master"), orNull(from.master), orNull(to.master));
    }

    void compareRefused(const QStringList& from, const QStringList& to) {
        const auto addMissing = [this](const QStringList& lines, QStringList others, const QString& change) {
            others.sort();
            for (const QString& line : lines) {
                if (!std::binary_search(others.begin(), others.end(), line))
                    add(QStringLiteral("line"), change, QStringLiteral("malformed line %1: ").arg(change) + line);
            }
        };
        addMissing(from, to, removed);
        addMissing(to, from, added);
    }

    QString m_path;
    QVariant m_view;
    bool m_namesViews = false;
    std::vector<Difference>& m_differences;
    TextLimit m_limit;
};

/// For each node of a text, the node of that path in another one, -1 without one.
std::vector<int> counterparts(const ProjectText& text, const ProjectText& other) {
    std::vector<int> found{ProjectText::root};
    for (int node = 1; node < static_cast<int>(text.nodes().size()); ++node) {
        const int parent = found[static_cast<std::size_t>(text.node(node).parent)];
        found.push_back(parent < 0 ? -1 : other.findChild(parent, text.node(node).name));
    }
    return found;
}

/// Two texts, node by node.
class Comparison {
public:
    Comparison(const ProjectText& from, const ProjectText& to)
        : m_from(from), m_to(to), m_fromKinds(from, KindRules()), m_toKinds(to, KindRules()) {}

    std::vector<Difference> differences() {
        compareHeaders();
        const std::vector<int> after = counterparts(m_from, m_to);
        Progress progress("comparing", after.size());
        for (int node = 1; node < static_cast<int>(after.size()); ++node) {
            progress.step();
            compareNode(node, after);
        }
        const std::vector<int> before = counterparts(m_to, m_from);
        for (int node = 1; node < static_cast<int>(before.size()); ++node)
            addNew(node, before);
        compareUnknownLines();
        return std::move(m_differences);
    }

private:
    static std::map<std::string, QString> header(const ProjectText& text) {
        constexpr std::string_view key = ".value=";
        std::map<std::string, QString> values;
        for (int i = 0; i < text.lineCount() && text.key(i) == Key::Header; ++i) {
            const std::string_view line = text.line(i);
            values[std::string(line.substr(0, line.find(key)))] = toText(textBehindEquals(line)).trimmed();
        }
        return values;
    }

    void compareHeaders() {
        const auto from = header(m_from);
        auto names = header(m_to);
        const auto to = names;
        names.insert(from.begin(), from.end());
        for (const auto& [name, value] : names) {
            const auto valueIn = [&name = name](const auto& values) {
                const auto found = values.find(name);
                return found == values.end() ? QVariant() : QVariant(found->second);
            };
            const QVariant before = valueIn(from);
            const QVariant after = valueIn(to);
            if (before != after)
                add({}, QStringLiteral("header"), changeOf(before, after),
                    QStringLiteral("header: ") + sentence(toText(name), before, after), before, after);
        }
    }

    void compareNode(int node, const std::vector<int>& counterparts) {
        const int other = counterparts[static_cast<std::size_t>(node)];
        const bool stillExists = other >= 0;
        if (isGroup(m_from, node) && !(stillExists && isGroup(m_to, other)))
            addGroup(removed, m_from, node, counterparts);
        else if (isGroup(m_from, node))
            compareNames(node, other);
        if (m_from.node(node).isParameter() && !(stillExists && m_to.node(other).isParameter()))
            addParameter(removed, m_from, node, m_fromKinds.of(node));
        else if (m_from.node(node).isParameter())
            compareParameters(node, other);
    }

    void addNew(int node, const std::vector<int>& counterparts) {
        const int other = counterparts[static_cast<std::size_t>(node)];
        if (isGroup(m_to, node) && !(other >= 0 && isGroup(m_from, other)))
            addGroup(added, m_to, node, counterparts);
        if (m_to.node(node).isParameter() && !(other >= 0 && m_from.node(other).isParameter()))
            addParameter(added, m_to, node, m_toKinds.of(node));
    }

    static bool isGroup(const ProjectText& text, int node) {
        return text.node(node).nameLine >= 0 || !text.node(node).isParameter();
    }

    static QVariant nameOf(const ProjectText& text, int node) {
        const int line = text.node(node).nameLine;
        return line < 0 ? QVariant() : QVariant(toText(textBehindEquals(text.line(line))));
    }

    /// A group that is only a step in the path goes without saying below one that is told of.
    void addGroup(const QString& change, const ProjectText& text, int node, const std::vector<int>& counterparts) {
        const bool isTold = counterparts[static_cast<std::size_t>(text.node(node).parent)] < 0;
        if (isTold && text.node(node).nameLine < 0)
            return;
        const QString path = text.path(node);
        const QVariant name = nameOf(text, node);
        const QString named = name.isNull() ? QString() : QStringLiteral(", ") + name.toString();
        add(path, QStringLiteral("group"), change, QStringLiteral("%1: group %2").arg(path, change) + named);
    }

    void compareNames(int node, int other) {
        const QVariant from = nameOf(m_from, node);
        const QVariant to = nameOf(m_to, other);
        if (from == to)
            return;
        const QString path = m_from.path(node);
        add(path, QStringLiteral("name"), changeOf(from, to),
            path + QStringLiteral(": ") + sentence(QStringLiteral("name"), from, to), from, to);
    }

    void addParameter(const QString& change, const ProjectText& text, int node, ValueKind kind) {
        const QString path = text.path(node);
        add(path, QStringLiteral("parameter"), change,
            QStringLiteral("%1: parameter %2").arg(path, change) + contentOf(stateOf(text, node, kind)));
    }

    void compareParameters(int node, int other) {
        if (sameLines(node, other))
            return;
        const ValueKind kind = commonKind(m_fromKinds.of(node), m_toKinds.of(other));
        ParameterComparison(m_from.path(node), m_differences)
            .compare(stateOf(m_from, node, kind), stateOf(m_to, other, kind));
    }

    /// Most parameters of a large project are left alone: their lines are the same, and then mean the same.
    bool sameLines(int node, int other) const {
        const auto& lines = m_from.node(node).lines;
        const auto& others = m_to.node(other).lines;
        return m_from.version().streamVersion == m_to.version().streamVersion &&
               std::equal(lines.begin(), lines.end(), others.begin(), others.end(),
                          [this](int a, int b) { return m_from.line(a) == m_to.line(b); });
    }

    void compareUnknownLines() {
        const auto from = unknownLines(m_from);
        const auto to = unknownLines(m_to);
        std::vector<std::string_view> gone;
        std::vector<std::string_view> fresh;
        std::set_difference(from.begin(), from.end(), to.begin(), to.end(), std::back_inserter(gone));
        std::set_difference(to.begin(), to.end(), from.begin(), from.end(), std::back_inserter(fresh));
        for (const std::string_view line : gone)
            add({}, QStringLiteral("line"), removed, QStringLiteral("unknown line removed: ") + toText(line));
        for (const std::string_view line : fresh)
            add({}, QStringLiteral("line"), added, QStringLiteral("unknown line added: ") + toText(line));
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

    void add(const QString& path, const QString& what, const QString& change, const QString& message,
             const QVariant& from = {}, const QVariant& to = {}) {
        m_differences.push_back({path, {}, what, change, {}, from, to, message});
    }

    const ProjectText& m_from;
    const ProjectText& m_to;
    Kinds m_fromKinds;
    Kinds m_toKinds;
    std::vector<Difference> m_differences;
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
        return QStringLiteral("the ends of lines");
    std::sort(fromLines.begin(), fromLines.end());
    std::sort(toLines.begin(), toLines.end());
    return fromLines == toLines ? QStringLiteral("the order of lines") : QStringLiteral("how it is written");
}

} // namespace Tool
