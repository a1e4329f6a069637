#include "prm/document/FileParameter.h"

#include "prm/CurveParameter.hpp"
#include "prm/document/Problem.h"
#include "prm/document/Progress.h"
#include "prm/document/ValueText.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <stdexcept>

namespace Prm::document {

namespace {

/// Where a line may be among those around it, as a time: that of a keyframe, first what is neither about keyframes nor
/// values, last what sets a static value. None for a line that clears what was read before it.
std::optional<float> placeOf(const LineReading& line, const ProjectFileVersion& version) {
    constexpr float last = HUGE_VALF;
    const bool clears = version.streamVersion >= StreamVersion::anyViewList;
    switch (line.key) {
    case Key::Keyframe: {
        const float time = keyframeTime(line.entry);
        return std::isinf(time) ? last : time;
    }
    case Key::Views:
        return clears ? std::nullopt : std::optional(last);
    case Key::Value:
        return clears && !line.view.isValid() ? std::nullopt : std::optional(last);
    default:
        return -last;
    }
}

struct PlacedLine {
    std::optional<float> place;
    LineReading reading;
    int line = 0;
};

/// The lines in the order in which they are read fastest. Between lines that clear, the order is free, save that the
/// last of equal places counts; in ascending order, no keyframe has to be put before others.
std::vector<PlacedLine> inReadingOrder(const std::vector<FileLine>& lines, const ProjectFileVersion& version) {
    std::vector<PlacedLine> ordered;
    ordered.reserve(lines.size());
    for (const FileLine& line : lines) {
        const LineReading reading = readLine(line.bytes);
        ordered.push_back({placeOf(reading, version), reading, line.line});
    }
    const auto clears = [](const PlacedLine& line) { return !line.place; };
    for (auto run = ordered.begin(); run != ordered.end();) {
        run = std::find_if_not(run, ordered.end(), clears);
        const auto end = std::find_if(run, ordered.end(), clears);
        std::stable_sort(run, end, [](const PlacedLine& a, const PlacedLine& b) { return *a.place < *b.place; });
        run = end;
    }
    return ordered;
}

std::vector<FileLine> linesOf(const ProjectText& text, int node) {
    std::vector<FileLine> lines;
    lines.reserve(text.node(node).lines.size());
    for (const int line : text.node(node).lines)
        lines.push_back({line, text.line(line)});
    return lines;
}

bool areUtf8(const std::vector<FileLine>& lines) {
    return std::all_of(lines.begin(), lines.end(), [](const FileLine& line) { return isUtf8(line.bytes); });
}

/// The library's own names know one custom kind.
template <class Enum> QString numbered(Enum kind, const QString& name) {
    if (kind < Enum::Custom0)
        return name;
    return message("Custom%1", static_cast<quint32>(kind) - static_cast<quint32>(Enum::Custom0));
}

} // namespace

FileParameter::FileParameter(const ProjectText& text, int node)
    : FileParameter(text, node, areUtf8(linesOf(text, node))) {}

FileParameter::FileParameter(const ProjectText& text, int node, bool isUtf8)
    : FileParameter(linesOf(text, node), text.version(), isUtf8) {
    m_node = node;
    m_path = text.path(node);
}

FileParameter::FileParameter(const std::vector<FileLine>& lines, const ProjectFileVersion& version)
    : FileParameter(lines, version, areUtf8(lines)) {}

FileParameter::FileParameter(const std::vector<FileLine>& lines, const ProjectFileVersion& version, bool isUtf8)
    : m_data(std::make_unique<Data>()), m_isUtf8(isUtf8) {
    Progress progress("reading a parameter", lines.size());
    for (const PlacedLine& each : inReadingOrder(lines, version)) {
        progress.step();
        read(each.line, each.reading, version);
    }
    std::sort(m_refused.begin(), m_refused.end());
}

void FileParameter::read(int line, const LineReading& reading, const ProjectFileVersion& version) {
    const bool isByByte = !m_isUtf8 && isData(reading.key);
    const QString entry = isByByte ? QString::fromLatin1(toBytes(reading.entry)) : toText(reading.entry);
    const QString number = QString::number(line) + ' ';
    const auto withLine = [&](const QString& value) {
        const Kind kind = kindOfValue(shown(value));
        m_writtenKind = m_writtenKind ? commonKind(m_writtenKind, kind) : kind;
        return QString(number + value);
    };
    try {
        m_data->streamInValue(entry, version, withLine);
    } catch (const std::runtime_error&) {
        m_refused.push_back(line);
    }
}

FileViews FileParameter::views() const {
    FileViews views;
    for (const View view : m_data->viewList()) {
        FileView& data = views[view.id()];
        data.value = m_data->staticValue(view);
        const unsigned int count = m_data->keyframeCount(view);
        data.keys.reserve(count);
        for (unsigned int i = 0; i < count; ++i)
            data.keys.push_back(m_data->keyframe(i, view));
    }
    return views;
}

FileViews FileParameter::normalisedViews(Kind kind) const {
    FileViews normalised = views();
    const auto normalise = [&](FileValue& value) {
        if (value.line != FileValue::noLine)
            value.text = "" + kind->normalised(shown(value.text));
    };
    for (auto& [view, data] : normalised) {
        normalise(data.value);
        for (FileKeyframe& key : data.keys)
            normalise(key.value);
    }
    return normalised;
}

FileValue FileParameter::newValue(const QString& given) const {
    const QString text = m_kind->written(given, m_path);
    return {m_isUtf8 ? text : QString::fromLatin1(text.toUtf8()), FileValue::noLine};
}

FileValue FileParameter::sum(const FileValue& value, double offset) const {
    const QString text = value.text.trimmed();
    if (!m_kind->isNumeric)
        throw Problem("%1: only numbers have an offset; name them alone", m_path);
    const double sum = finiteNumber(text, m_path) + offset;
    if (!std::isfinite(sum))
        throw Problem("%1: %2 with that offset is too large", m_path, text);
    return {plainText(sum), value.line};
}

QString FileParameter::before() const {
    return kindText(m_data->extrapolationBefore());
}

QString FileParameter::after() const {
    return kindText(m_data->extrapolationAfter());
}

bool isData(Key key) {
    return key == Key::Views || key == Key::Keyframe || key == Key::Value;
}

QString kindText(Interpolation kind) {
    return numbered(kind, qstrInterpolationTypeString(kind));
}

QString kindText(Extrapolation kind) {
    return numbered(kind, qstrExtrapolationTypeString(kind));
}

QString curveText(const IType& shape) {
    QString text = kindText(shape.interpolation);
    if (shape.interpolation == Interpolation::Bezier) {
        for (const double number : {shape.x1, shape.y1, shape.x2, shape.y2})
            text += ' ' + plainText(number);
    }
    return text;
}

QString keyframeText(const FileKeyframe& key) {
    return message("%1 (%2)", key.value.text, curveText(key.interpolationData));
}

} // namespace Prm::document

Prm::document::FileValue Prm::ValueType<Prm::document::FileValue>::read(const QString& text) {
    const int blank = text.indexOf(' ');
    return {text.mid(blank + 1), text.leftRef(blank).toInt()};
}

Prm::document::FileValue Prm::ValueType<Prm::document::FileValue>::fromComponents(const double* components) {
    Prm::document::FileValue value;
    ValueType<double>::write(value.text, *components);
    return value;
}

template class Prm::Parameter<Prm::document::FileValue>;
template class Prm::CurveParameter<Prm::document::FileValue>;
