#include "prm/document/ParameterPatch.h"

#include "prm/SerialisedKeyframe.h"
#include "prm/document/Problem.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Prm::document {

namespace {

/// A keyframe's line with the time of another, unless that is empty, and another value; all else as it was. Empty where
/// they are not found in it.
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
    if (!time.isEmpty())
        line.replace(call + callLength, comma - call - callLength, time);
    return line;
}

class Patch {
public:
    Patch(const ProjectText& text, const FileViews& before, const FileParameter& edited,
          const ProjectFileVersion& version, const OtherLines& others)
        : m_text(text), m_lines(text.node(edited.node()).lines), m_version(version), m_before(before), m_edited(edited),
          m_others(others), m_after(edited.views()), m_path(m_text.reading(m_lines.front()).path),
          m_prefix(toBytes(m_path) + '.') {
        for (const auto& [view, data] : before) {
            for (const FileKeyframe& key : data.keys)
                m_origins.emplace(key.value.line, &key);
        }
    }

    const LineChanges& changes() const { return m_changes; }

    /// Keyframes and values that are as before stay where they are.
    void makeFewest() {
        if (!hasSameViews() && !(m_before.empty() && hasOnlyFirstView()))
            changeViews();
        for (const auto& [view, data] : m_after) {
            const auto former = m_before.find(view);
            changeView(view, former == m_before.end() ? FileView() : former->second, data);
        }
    }

    /// All data anew, as a project would be saved, at the place of the first.
    void makeAllAnew() {
        m_changes.clear();
        for (const int line : m_lines) {
            if (isData(m_text.key(line)) && !isRefused(line))
                drop(line);
        }
        Lines& start = startOfData();
        if (!hasOnlyFirstView() || !m_after.at(0).keys.empty() || m_after.at(0).value.text.isNull())
            start.push_back(viewList());
        for (const auto& [view, data] : m_after) {
            for (const FileKeyframe& key : data.keys)
                start.push_back(keyframeLine(view, key));
        }
        for (const auto& [view, data] : m_after) {
            if (!data.value.text.isNull())
                start.push_back(valueLine(view, data.value));
        }
    }

    /// Whether the lines with these changes are read as what the edit has made, and as this parameter's.
    bool isRight() const {
        Lines changed;
        std::vector<FileLine> lines;
        for (const int line : m_lines) {
            const auto add = [&](const QByteArray& each) {
                changed.push_back(each);
                lines.push_back({line, toView(each)});
            };
            const auto change = m_changes.find(line);
            if (change == m_changes.end())
                lines.push_back({line, m_text.line(line)});
            else
                change->second.forEach(bytes(line), add);
        }
        const auto isOurs = [&](const QByteArray& line) { return readLine(toView(line)).path == m_path; };
        return std::all_of(changed.begin(), changed.end(), isOurs) &&
               isWritten(FileParameter(lines, m_version, m_edited.isUtf8()).views());
    }

private:
    bool hasSameViews() const {
        return std::equal(m_before.begin(), m_before.end(), m_after.begin(), m_after.end(),
                          [](const auto& a, const auto& b) { return a.first == b.first; });
    }
    bool hasOnlyFirstView() const { return m_after.size() == 1 && m_after.begin()->first == 0; }

    bool isRefused(int line) const {
        return std::binary_search(m_edited.refused().begin(), m_edited.refused().end(), line);
    }

    // --- the file's lines --------------------------------------------------------------------------------------------

    QByteArray bytes(int line) const { return toBytes(m_text.line(line)); }
    bool namesView(int line) const { return m_text.reading(line).view.isValid(); }
    void drop(int line) { m_changes[line].own = Lines(); }
    void replace(int line, const QByteArray& bytes) { m_changes[line].own = Lines{bytes}; }

    Lines& startOfData() {
        const auto first =
            std::find_if(m_lines.begin(), m_lines.end(), [&](int line) { return isData(m_text.key(line)); });
        return m_changes[first == m_lines.end() ? m_lines.front() : *first].before;
    }

    Lines& endOfData() {
        const auto last =
            std::find_if(m_lines.rbegin(), m_lines.rend(), [&](int line) { return isData(m_text.key(line)); });
        return last == m_lines.rend() ? startOfData() : m_changes[*last].after;
    }

    std::optional<KeyframeLine> originOf(const FileKeyframe& key) const {
        const auto other = m_others.find(key.value.line);
        if (other != m_others.end())
            return other->second;
        const auto found = m_origins.find(key.value.line);
        if (found == m_origins.end())
            return std::nullopt;
        return KeyframeLine{*found->second, entryWithoutView(m_text, key.value.line)};
    }

    // --- new lines ---------------------------------------------------------------------------------------------------

    static QByteArray prefixOf(quint32 view) { return View(view).toString().toLatin1(); }

    QByteArray viewList() const {
        QByteArray list;
        for (const auto& [view, data] : m_after)
            list += (list.isEmpty() ? "" : ", ") + QByteArray::number(view);
        return m_prefix + "views=[" + list + ']';
    }

    /// In the form of the line that it comes from, as far as it says the same.
    QByteArray keyframeLine(quint32 view, const FileKeyframe& key) const {
        const QByteArray anew =
            m_edited.bytes(m_edited.data().getSerialisedKeyframe({key.time, View(view)})->toString());
        const std::optional<KeyframeLine> origin = originOf(key);
        if (!origin || origin->key.interpolationData != key.interpolationData)
            return m_prefix + anew;
        const QByteArray time = origin->key.time == key.time ? QByteArray() : toBytes(keyframeTimeText(toView(anew)));
        const QByteArray entry = withTimeAndValue(origin->entry, time, m_edited.bytes(origin->key.value.text),
                                                  m_edited.bytes(key.value.text));
        const QByteArray prefix = view == View::defaultViewId() ? QByteArray() : prefixOf(view);
        return m_prefix + (entry.isEmpty() ? anew : prefix + entry);
    }

    QByteArray valueLine(quint32 view, const FileValue& value) const {
        const bool isPlain = hasOnlyFirstView() && m_after.begin()->second.keys.empty();
        return m_prefix + (isPlain ? QByteArray() : prefixOf(view)) + "value=" + m_edited.bytes(value.text);
    }

    // --- changes -----------------------------------------------------------------------------------------------------

    /// A list of views comes first, and a value without a view's prefix would take them back.
    void changeViews() {
        const auto isList = [&](int line) { return m_text.key(line) == Key::Views; };
        const auto list = std::find_if(m_lines.rbegin(), m_lines.rend(), isList);
        if (m_version.streamVersion < StreamVersion::anyViewList)
            return;
        if (list != m_lines.rend())
            return replace(*list, viewList());
        startOfData().push_back(viewList());
        for (const auto& [view, data] : m_before) {
            const int line = data.value.line;
            if (line != FileValue::noLine && !namesView(line))
                replace(line, m_prefix + prefixOf(view) + entryWithoutView(m_text, line));
        }
    }

    void changeView(quint32 view, const FileView& former, const FileView& data) {
        const auto comesFrom = [](const FileKeyframe& a, const FileKeyframe& b) {
            return a.value.line == b.value.line;
        };
        if (std::equal(former.keys.begin(), former.keys.end(), data.keys.begin(), data.keys.end(), comesFrom))
            changeInPlace(view, former.keys, data.keys);
        else
            changeOrder(view, former, data.keys);
        changeValue(view, former.value, data.value);
    }

    void changeInPlace(quint32 view, const std::vector<FileKeyframe>& former, const std::vector<FileKeyframe>& keys) {
        for (std::size_t i = 0; i < keys.size(); ++i) {
            if (former[i] == keys[i])
                continue;
            dropAt(view, former[i]);
            replace(keys[i].value.line, keyframeLine(view, keys[i]));
        }
    }

    /// Keyframes that are as before keep their lines; the others go before the first of these that is later.
    void changeOrder(quint32 view, const FileView& former, const std::vector<FileKeyframe>& keys) {
        std::map<int, Time> kept;
        std::vector<const FileKeyframe*> fresh;
        auto next = former.keys.begin();
        for (const FileKeyframe& key : keys) {
            while (next != former.keys.end() && next->time < key.time)
                dropAt(view, *next++);
            const bool isSame = next != former.keys.end() && *next == key;
            if (isSame)
                kept.emplace(next++->value.line, key.time);
            else
                fresh.push_back(&key);
        }
        while (next != former.keys.end())
            dropAt(view, *next++);
        // For a time, the first line that has a later one: those before it are not later.
        if (fresh.empty())
            return;
        std::vector<std::pair<Time, int>> latest;
        latest.reserve(kept.size());
        for (const auto& [line, time] : kept)
            latest.emplace_back(latest.empty() ? time : std::max(latest.back().first, time), line);
        Lines& end = endOfKeyframes(former);
        for (const FileKeyframe* const key : fresh) {
            const auto later = std::upper_bound(latest.begin(), latest.end(), key->time,
                                                [](Time time, const auto& each) { return time < each.first; });
            Lines& place = later == latest.end() ? end : m_changes[later->second].before;
            place.push_back(keyframeLine(view, *key));
        }
    }

    /// Where a view's keyframes go on: after those that it had, else before its value, else after the keyframes of all
    /// views.
    Lines& endOfKeyframes(const FileView& former) {
        int last = FileValue::noLine;
        for (const FileKeyframe& key : former.keys)
            last = std::max(last, key.value.line);
        const int value = former.value.line;
        if (last == FileValue::noLine && value != FileValue::noLine)
            return namesView(value) ? m_changes[value].before : m_changes[value].after;
        if (last == FileValue::noLine && !m_origins.empty())
            last = m_origins.rbegin()->first;
        return last == FileValue::noLine ? endOfData() : m_changes[last].after;
    }

    void changeValue(quint32 view, const FileValue& former, const FileValue& value) {
        if (former == value)
            return;
        if (value.text.isNull())
            return drop(former.line);
        if (former.line == FileValue::noLine)
            return endOfData().push_back(valueLine(view, value));
        const QByteArray line = m_changes[former.line].own.value_or(Lines{bytes(former.line)}).front();
        replace(former.line, line.left(line.indexOf('=') + 1) + m_edited.bytes(value.text));
    }

    /// With the earlier lines of the same time, which would count again.
    void dropAt(quint32 view, const FileKeyframe& key) {
        if (m_places.empty())
            findPlaces();
        const auto [first, last] = m_places.equal_range({view, static_cast<float>(key.time.toDouble())});
        for (auto each = first; each != last; ++each)
            drop(each->second);
    }

    void findPlaces() {
        for (const int line : m_lines) {
            if (m_text.key(line) != Key::Keyframe || isRefused(line))
                continue;
            const View view = m_text.reading(line).view;
            const quint32 id = view.isValid() ? view.id() : View::defaultViewId();
            m_places.emplace(std::pair(id, keyframeTime(m_text.line(line))), line);
        }
    }

    // --- what is read back -------------------------------------------------------------------------------------------

    /// Shapes are written with six digits.
    static bool isNear(double read, double wanted) {
        constexpr double precision = 1e-5;
        return std::abs(read - wanted) <= precision * std::abs(wanted) + std::numeric_limits<float>::min();
    }

    static bool isWrittenKey(const FileKeyframe& read, const FileKeyframe& wanted) {
        const IType& a = read.interpolationData;
        const IType& b = wanted.interpolationData;
        return (read.time == wanted.time || read.time == writtenTime(wanted.time)) && read.value == wanted.value &&
               a.interpolation == b.interpolation && isNear(a.x1, b.x1) && isNear(a.y1, b.y1) && isNear(a.x2, b.x2) &&
               isNear(a.y2, b.y2);
    }

    bool isWritten(const FileViews& read) const {
        const auto isSame = [](const auto& a, const auto& b) {
            const auto& [keys, value] = a.second;
            const auto& [wantedKeys, wantedValue] = b.second;
            return a.first == b.first && value == wantedValue &&
                   std::equal(keys.begin(), keys.end(), wantedKeys.begin(), wantedKeys.end(), isWrittenKey);
        };
        return std::equal(read.begin(), read.end(), m_after.begin(), m_after.end(), isSame);
    }

    const ProjectText& m_text;
    const std::vector<int>& m_lines;
    const ProjectFileVersion& m_version;
    const FileViews& m_before;
    const FileParameter& m_edited;
    const OtherLines& m_others;
    FileViews m_after;
    std::string_view m_path;
    QByteArray m_prefix;
    std::map<int, const FileKeyframe*> m_origins;
    std::multimap<std::pair<quint32, float>, int> m_places;
    LineChanges m_changes;
};

} // namespace

QByteArray entryWithoutView(const ProjectText& text, int line) {
    const LineReading reading = text.reading(line);
    return toBytes(reading.entry.substr(reading.view.isValid() ? reading.entry.find('.') + 1 : 0));
}

LineChanges changedLines(const ProjectText& text, const FileViews& before, const FileParameter& edited,
                         const ProjectFileVersion& version, const OtherLines& others) {
    Patch patch(text, before, edited, version, others);
    patch.makeFewest();
    if (patch.isRight())
        return patch.changes();
    patch.makeAllAnew();
    if (!patch.isRight())
        throw Problem("%1: project text cannot hold the result, times are written with six digits", edited.path());
    return patch.changes();
}

void changeSetting(const ProjectText& text, int node, Key key, const QByteArray& setting, LineChanges& changes) {
    const std::vector<int>& lines = text.node(node).lines;
    const QByteArray line = toBytes(text.reading(lines.front()).path) + '.' + setting;
    const auto last = std::find_if(lines.rbegin(), lines.rend(), [&](int each) { return text.key(each) == key; });
    if (last == lines.rend())
        changes[lines.back()].after.push_back(line);
    else
        changes[*last].own = Lines{line};
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
        const QByteArray line = toBytes(text.line(i));
        if (i == 0)
            bytes += raw.left(raw.indexOf(line));
        found->second.forEach(line, [&](const QByteArray& each) { bytes += each + end; });
    }
    const bool endsBare = text.lineCount() > 0 && text.raw(text.lineCount() - 1).back() != '\n';
    if (endsBare && bytes.endsWith(end))
        bytes.chop(end.size());
    return bytes;
}

} // namespace Prm::document
