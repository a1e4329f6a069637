#include "tool/edit/WrittenParameter.h"

#include "prm/SerialisedKeyframe.h"
#include "tool/ReadingOrder.h"

#include <algorithm>
#include <optional>
#include <stdexcept>

namespace Tool {

WrittenParameter::WrittenParameter(const std::vector<ParameterLine>& lines, const Prm::ProjectFileVersion& version) {
    m_isUtf8 = std::all_of(lines.begin(), lines.end(),
                           [](const ParameterLine& line) { return toText(toView(line.bytes)).toUtf8() == line.bytes; });
    std::vector<std::optional<float>> places;
    places.reserve(lines.size());
    for (const ParameterLine& line : lines)
        places.push_back(readingPlace(readLine(toView(line.bytes)), version));
    for (const std::size_t position : readingOrder(places))
        read(lines[position], version);
    std::sort(m_refused.begin(), m_refused.end());
}

void WrittenParameter::read(const ParameterLine& line, const Prm::ProjectFileVersion& version) {
    const LineReading reading = readLine(toView(line.bytes));
    if (!isData(reading.key))
        return;
    const auto length = static_cast<int>(reading.entry.size());
    const QString entry = m_isUtf8 ? toText(reading.entry) : QString::fromLatin1(reading.entry.data(), length);
    const QString number = QString::number(line.line) + QLatin1Char(' ');
    try {
        m_parameter.streamInValue(entry, version, [&](const QString& value) { return QString(number + value); });
    } catch (const std::runtime_error&) {
        m_refused.push_back(line.line);
    }
}

WrittenState WrittenParameter::state() const {
    WrittenState state;
    for (const Prm::View view : m_parameter.viewList()) {
        WrittenState::ViewData& data = state.views[view.id()];
        data.value = m_parameter.staticValue(view);
        const unsigned int count = m_parameter.keyframeCount(view);
        data.keys.reserve(count);
        for (unsigned int i = 0; i < count; ++i)
            data.keys.push_back({m_parameter.keyframeTime(i, view).time.toDouble(), m_parameter.keyframeValue(i, view),
                                 m_parameter.interpolationData({&m_parameter, view, i})});
    }
    return state;
}

QByteArray WrittenParameter::keyframeLine(Prm::View view, double time) const {
    return bytes(m_parameter.getSerialisedKeyframe({Prm::Time::fromDouble(time), view})->toString());
}

std::vector<ParameterLine> linesOf(const ProjectText& text, int node) {
    std::vector<ParameterLine> lines;
    lines.reserve(text.node(node).lines.size());
    for (const int line : text.node(node).lines)
        lines.push_back({line, toBytes(text.line(line))});
    return lines;
}

bool isData(Key key) {
    return key == Key::Views || key == Key::Keyframe || key == Key::Value;
}

} // namespace Tool
