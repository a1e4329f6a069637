#include "tool/edit/ParameterPatch.h"

#include "tool/Problem.h"
#include "tool/ReadingOrder.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

namespace Tool {

namespace {

using Keyframe = WrittenState::Keyframe;
using ViewData = WrittenState::ViewData;

/// As a keyframe's line gives it.
QString timeText(double time) {
    return QString::number(time, 'g', 6);
}

bool hasSameViews(const WrittenState& a, const WrittenState& b) {
    return std::equal(a.views.begin(), a.views.end(), b.views.begin(), b.views.end(),
                      [](const auto& x, const auto& y) { return x.first == y.first; });
}

QByteArray viewList(const WrittenState& state) {
    QByteArray list;
    for (const auto& [view, data] : state.views)
        list += (list.isEmpty() ? "" : ", ") + QByteArray::number(view);
    return "views=[" + list + ']';
}

/// A keyframe's line with another time or value, all else as it was; empty where they are not found in it.
QByteArray withTimeAndValue(QByteArray line, const QByteArray& time, const QByteArray& formerValue,
                            const QByteArray& value) {
    constexpr int callLength = 4;
    const int call = line.indexOf("Key(");
    const int comma = line.indexOf(',', call);
    if (call < 0 || comma < 0)
        return {};
    int start = comma + 1;
    while (start < line.size() && line.at(start) == ' ')
        ++start;
    if (line.mid(start, formerValue.size()) != formerValue)
        return {};
    line.replace(start, formerValue.size(), value);
    if (!time.isNull())
        line.replace(call + callLength, comma - call - callLength, ' ' + time);
    return line;
}

/// Finds, for a time, the first of some lines that has a later one.
class LaterLine {
public:
    /// In the order of the file.
    void add(int line, double time) {
        m_lines.push_back(line);
        m_latest.push_back(m_latest.empty() ? time : std::max(m_latest.back(), time));
    }
    std::optional<int> after(double time) const {
        const auto found = std::upper_bound(m_latest.begin(), m_latest.end(), time);
        if (found == m_latest.end())
            return {};
        return m_lines[static_cast<std::size_t>(found - m_latest.begin())];
    }

private:
    std::vector<int> m_lines;
    std::vector<double> m_latest;
};

class Patch {
public:
    Patch(const ProjectText& text, int node, const Prm::ProjectFileVersion& version, const WrittenState& before,
          const WrittenParameter& edited)
        : m_text(text), m_lines(text.node(node).lines), m_version(version), m_before(before), m_edited(edited),
          m_after(edited.state()) {
        for (const auto& [view, data] : before.views) {
            for (const Keyframe& key : data.keys)
                m_origins.emplace(key.value.line, &key);
        }
        const auto isOurs = [&](int line) { return isData(m_text.key(line)); };
        const auto last = std::find_if(m_lines.rbegin(), m_lines.rend(), isOurs);
        m_lastData = last == m_lines.rend() ? WrittenValue::noLine : *last;
        m_prefix = toBytes(m_text.reading(m_lines.front()).path) + '.';
    }

    LineChanges fewestChanges() {
        m_slots.clear();
        if (!hasSameViews(m_before, m_after) && !(m_before.views.empty() && hasOnlyFirstView()))
            changeViews();
        for (const auto& [view, data] : m_after.views) {
            const ViewData former = formerData(view);
            changeKeyframes(view, former.keys, data.keys);
            changeValue(view, former.value, data.value);
        }
        return changes();
    }

    /// All data anew, as a project would be saved, at the place of the first.
    LineChanges allAnew() {
        m_slots.clear();
        for (const int line : m_lines) {
            const auto& refused = m_edited.refused();
            if (isData(m_text.key(line)) && !std::binary_search(refused.begin(), refused.end(), line))
                slot(line).isDropped = true;
        }
        auto& start = slot(firstData()).before;
        if (!hasOnlyFirstView() || !m_after.views.at(0).keys.empty())
            start.push_back(m_prefix + viewList(m_after));
        for (const auto& [view, data] : m_after.views) {
            for (const Keyframe& key : data.keys)
                start.push_back(keyframeLine(view, key));
        }
        for (const auto& [view, data] : m_after.views) {
            if (!data.value.text.isNull())
                start.push_back(valueLine(view, data.value));
        }
        return changes();
    }

    /// Whether the lines with these changes are read as what the edit has made, and as this parameter's.
    bool isRightWith(const LineChanges& changes) const {
        const std::string_view path = m_text.reading(m_lines.front()).path;
        std::vector<ParameterLine> lines;
        for (const int line : m_lines) {
            const auto found = changes.find(line);
            if (found == changes.end())
                lines.push_back({line, toBytes(m_text.line(line))});
            else
                for (const QByteArray& bytes : found->second)
                    lines.push_back({line, bytes});
        }
        const auto isOurs = [&](const ParameterLine& line) { return readLine(toView(line.bytes)).path == path; };
        return std::all_of(lines.begin(), lines.end(), isOurs) && isWritten(WrittenParameter(lines, m_version).state());
    }

private:
    struct Slot {
        std::vector<QByteArray> before;
        std::vector<QByteArray> after;
        /// Replaces the line itself.
        std::optional<QByteArray> bytes;
        bool isDropped = false;
    };

    Slot& slot(int line) { return m_slots[line]; }

    LineChanges changes() const {
        LineChanges changes;
        for (const auto& [line, slot] : m_slots) {
            std::vector<QByteArray>& lines = changes[line];
            lines = slot.before;
            if (slot.bytes)
                lines.push_back(*slot.bytes);
            else if (!slot.isDropped)
                lines.push_back(toBytes(m_text.line(line)));
            lines.insert(lines.end(), slot.after.begin(), slot.after.end());
        }
        return changes;
    }

    bool hasOnlyFirstView() const { return m_after.views.size() == 1 && m_after.views.begin()->first == 0; }

    int firstData() const {
        const auto found =
            std::find_if(m_lines.begin(), m_lines.end(), [&](int line) { return isData(m_text.key(line)); });
        return found == m_lines.end() ? m_lines.front() : *found;
    }

    ViewData formerData(quint32 view) const {
        const auto found = m_before.views.find(view);
        return found == m_before.views.end() ? ViewData() : found->second;
    }

    // --- lines -------------------------------------------------------------------------------------------------------

    QByteArray keyframeLine(quint32 view, const Keyframe& key) const {
        const auto found = m_origins.find(key.value.line);
        QByteArray entry;
        if (found != m_origins.end() && found->second->curve == key.curve) {
            const Keyframe& origin = *found->second;
            const QByteArray time = origin.time == key.time ? QByteArray() : timeText(key.time).toLatin1();
            entry = withTimeAndValue(entryOf(key.value.line), time, m_edited.bytes(origin.value.text),
                                     m_edited.bytes(key.value.text));
        }
        const QByteArray prefix = view == Prm::View::defaultViewId() ? QByteArray() : prefixOf(view);
        return m_prefix + (entry.isEmpty() ? m_edited.keyframeLine(Prm::View(view), key.time) : prefix + entry);
    }

    /// What a line says, without its path and view.
    QByteArray entryOf(int line) const {
        const LineReading reading = m_text.reading(line);
        const std::size_t dot = reading.view.isValid() ? reading.entry.find('.') + 1 : 0;
        return toBytes(reading.entry.substr(dot));
    }

    static QByteArray prefixOf(quint32 view) { return Prm::View(view).toString().toLatin1(); }

    QByteArray valueLine(quint32 view, const WrittenValue& value) const {
        const bool isPlain = hasOnlyFirstView() && m_after.views.begin()->second.keys.empty();
        return m_prefix + (isPlain ? QByteArray() : prefixOf(view)) + "value=" + m_edited.bytes(value.text);
    }

    // --- changes -----------------------------------------------------------------------------------------------------

    /// A list of views comes first, and a value without a view's prefix would take them back.
    void changeViews() {
        const auto isList = [&](int line) { return m_text.key(line) == Key::Views; };
        const auto list = std::find_if(m_lines.rbegin(), m_lines.rend(), isList);
        if (m_version.streamVersion < Prm::StreamVersion::anyViewList)
            return;
        if (list != m_lines.rend()) {
            slot(*list).bytes = m_prefix + viewList(m_after);
            return;
        }
        slot(firstData()).before.push_back(m_prefix + viewList(m_after));
        for (const auto& [view, data] : m_before.views) {
            const int line = data.value.line;
            if (line != WrittenValue::noLine && !m_text.reading(line).view.isValid())
                slot(line).bytes = m_prefix + prefixOf(view) + entryOf(line);
        }
    }

    void changeKeyframes(quint32 view, const std::vector<Keyframe>& former, const std::vector<Keyframe>& keys) {
        const auto comesFrom = [](const Keyframe& a, const Keyframe& b) { return a.value.line == b.value.line; };
        if (std::equal(former.begin(), former.end(), keys.begin(), keys.end(), comesFrom))
            changeInPlace(view, former, keys);
        else
            changeOrder(view, former, keys);
    }

    void changeInPlace(quint32 view, const std::vector<Keyframe>& former, const std::vector<Keyframe>& keys) {
        for (std::size_t i = 0; i < keys.size(); ++i) {
            if (former[i] == keys[i])
                continue;
            dropOthersAt(view, former[i]);
            slot(keys[i].value.line).bytes = keyframeLine(view, keys[i]);
        }
    }

    void changeOrder(quint32 view, const std::vector<Keyframe>& former, const std::vector<Keyframe>& keys) {
        std::vector<Keyframe> fresh;
        std::map<int, double> kept;
        std::size_t i = 0;
        const auto drop = [&](const Keyframe& key) {
            dropOthersAt(view, key);
            slot(key.value.line).isDropped = true;
        };
        for (const Keyframe& key : keys) {
            while (i < former.size() && former[i].time < key.time)
                drop(former[i++]);
            const bool isAtSameTime = i < former.size() && former[i].time == key.time;
            if (isAtSameTime && former[i] == key)
                kept.emplace(former[i].value.line, key.time);
            else
                fresh.push_back(key);
            if (isAtSameTime && !(former[i] == key))
                drop(former[i]);
            i += isAtSameTime ? 1 : 0;
        }
        while (i < former.size())
            drop(former[i++]);
        insert(view, former, kept, fresh);
    }

    void insert(quint32 view, const std::vector<Keyframe>& former, const std::map<int, double>& kept,
                const std::vector<Keyframe>& fresh) {
        if (fresh.empty())
            return;
        std::vector<QByteArray>& end = endOfKeyframes(view, former);
        LaterLine later;
        for (const auto& [line, time] : kept)
            later.add(line, time);
        for (const Keyframe& key : fresh) {
            const std::optional<int> next = later.after(key.time);
            (next ? slot(*next).before : end).push_back(keyframeLine(view, key));
        }
    }

    /// Where a view's keyframes go on: behind those that it had, else before its value.
    std::vector<QByteArray>& endOfKeyframes(quint32 view, const std::vector<Keyframe>& former) {
        int last = WrittenValue::noLine;
        for (const Keyframe& key : former)
            last = std::max(last, key.value.line);
        if (last != WrittenValue::noLine)
            return slot(last).after;
        const int value = formerData(view).value.line;
        if (value != WrittenValue::noLine && m_text.reading(value).view.isValid())
            return slot(value).before;
        return value == WrittenValue::noLine ? endOfOthers() : slot(value).after;
    }

    /// Behind the keyframes of all views, else behind all data.
    std::vector<QByteArray>& endOfOthers() {
        const int last = m_origins.empty() ? WrittenValue::noLine : m_origins.rbegin()->first;
        return last == WrittenValue::noLine ? endOfData() : slot(last).after;
    }

    std::vector<QByteArray>& endOfData() {
        return m_lastData == WrittenValue::noLine ? slot(m_lines.front()).before : slot(m_lastData).after;
    }

    void changeValue(quint32 view, const WrittenValue& former, const WrittenValue& value) {
        if (former == value || value.text.isNull())
            return;
        if (former.line == WrittenValue::noLine) {
            endOfData().push_back(valueLine(view, value));
            return;
        }
        const QByteArray line = slot(former.line).bytes.value_or(toBytes(m_text.line(former.line)));
        slot(former.line).bytes = line.left(line.indexOf('=') + 1) + m_edited.bytes(value.text);
    }

    /// Earlier lines of the same time would count again.
    void dropOthersAt(quint32 view, const Keyframe& key) {
        if (m_places.empty())
            findPlaces();
        const auto [first, last] = m_places.equal_range({view, static_cast<float>(key.time)});
        for (auto each = first; each != last; ++each) {
            if (each->second != key.value.line)
                slot(each->second).isDropped = true;
        }
    }

    void findPlaces() {
        const auto& refused = m_edited.refused();
        for (const int line : m_lines) {
            if (m_text.key(line) != Key::Keyframe || std::binary_search(refused.begin(), refused.end(), line))
                continue;
            const Prm::View view = m_text.reading(line).view;
            const quint32 id = view.isValid() ? view.id() : Prm::View::defaultViewId();
            m_places.emplace(std::pair(id, keyframeTime(m_text.line(line))), line);
        }
    }

    // --- what is read back -------------------------------------------------------------------------------------------

    /// Times and curves are written with six digits.
    static bool isNear(double read, double wanted) {
        constexpr double precision = 1e-5;
        return std::abs(read - wanted) <= precision * std::abs(wanted) + std::numeric_limits<float>::min();
    }

    static bool isWritten(const Keyframe& read, const Keyframe& wanted) {
        return isNear(read.time, wanted.time) && read.value == wanted.value &&
               read.curve.interpolation == wanted.curve.interpolation && isNear(read.curve.x1, wanted.curve.x1) &&
               isNear(read.curve.y1, wanted.curve.y1) && isNear(read.curve.x2, wanted.curve.x2) &&
               isNear(read.curve.y2, wanted.curve.y2);
    }

    bool isWritten(const WrittenState& read) const {
        if (!hasSameViews(read, m_after))
            return false;
        return std::equal(read.views.begin(), read.views.end(), m_after.views.begin(),
                          [](const auto& a, const auto& b) {
                              const auto& [keys, value] = a.second;
                              const auto& [wantedKeys, wantedValue] = b.second;
                              return value == wantedValue &&
                                     std::equal(keys.begin(), keys.end(), wantedKeys.begin(), wantedKeys.end(),
                                                [](const Keyframe& x, const Keyframe& y) { return isWritten(x, y); });
                          });
    }

    const ProjectText& m_text;
    const std::vector<int>& m_lines;
    const Prm::ProjectFileVersion& m_version;
    const WrittenState& m_before;
    const WrittenParameter& m_edited;
    WrittenState m_after;
    QByteArray m_prefix;
    int m_lastData = WrittenValue::noLine;
    std::map<int, const Keyframe*> m_origins;
    std::multimap<std::pair<quint32, float>, int> m_places;
    std::map<int, Slot> m_slots;
};

} // namespace

LineChanges changedLines(const ProjectText& text, int node, const WrittenState& before,
                         const WrittenParameter& edited) {
    Patch patch(text, node, text.version(), before, edited);
    LineChanges changes = patch.fewestChanges();
    return patch.isRightWith(changes) ? changes : allLines(text, node, before, edited, text.version());
}

LineChanges allLines(const ProjectText& text, int node, const WrittenState& before, const WrittenParameter& edited,
                     const Prm::ProjectFileVersion& version) {
    Patch patch(text, node, version, before, edited);
    LineChanges changes = patch.allAnew();
    if (!patch.isRightWith(changes))
        throw Problem(QStringLiteral("%1: project text cannot hold the result, times are written with six digits")
                          .arg(text.path(node)));
    return changes;
}

QByteArray bytesWith(const ProjectText& text, const LineChanges& changes) {
    QByteArray bytes;
    QByteArray end = "\n";
    for (int i = 0; i < text.lineCount(); ++i) {
        const QByteArray raw = toBytes(text.raw(i));
        if (raw.endsWith('\n'))
            end = raw.endsWith("\r\n") ? "\r\n" : "\n";
        const auto found = changes.find(i);
        if (found == changes.end()) {
            bytes += raw;
            continue;
        }
        if (i == 0)
            bytes += raw.left(raw.indexOf(toBytes(text.line(i))));
        for (const QByteArray& line : found->second)
            bytes += line + end;
    }
    const bool endsBare = text.lineCount() > 0 && text.raw(text.lineCount() - 1).back() != '\n';
    if (endsBare && bytes.endsWith(end))
        bytes.chop(end.size());
    return bytes;
}

} // namespace Tool
