#include "tool/BuiltParameter.h"

#include "prm/NumericParameter.h"
#include "tool/Problem.h"
#include "tool/ReadingOrder.h"

#include <algorithm>
#include <optional>
#include <stdexcept>

namespace Tool {

namespace {

std::unique_ptr<Prm::ParameterWithoutType> newParameter(ValueKind kind) {
    switch (kind) {
    case ValueKind::Number:
    case ValueKind::NumberOrSwitch:
        return std::make_unique<Prm::NumericParameter<double>>();
    case ValueKind::Point:
        return std::make_unique<Prm::PointParameter>();
    case ValueKind::Switch:
        return std::make_unique<Prm::Parameter<bool>>();
    case ValueKind::Opaque:
    case ValueKind::Text:
        break;
    }
    return std::make_unique<Prm::Parameter<QString>>();
}

template <class T> const Prm::Parameter<T>& as(const Prm::ParameterWithoutType& parameter) {
    return dynamic_cast<const Prm::Parameter<T>&>(parameter);
}

template <class T>
QVector<QVariant> samplesOf(const Prm::Parameter<T>& parameter, const QVector<Prm::Time>& times, Prm::View view) {
    QVector<T> values(times.size());
    parameter.sampleValues(times.constData(), times.size(), view, values.data());
    QVector<QVariant> variants;
    variants.reserve(times.size());
    for (const T& value : values)
        variants.append(QVariant::fromValue(value));
    return variants;
}

std::unique_ptr<Prm::ParameterWithoutType> build(const ProjectText& text, int node, ValueKind kind) {
    std::unique_ptr<Prm::ParameterWithoutType> parameter = newParameter(kind);
    readInto(*parameter, text, node);
    return parameter;
}

/// Where the chain of masters ends, the node itself without one.
int lastMaster(const ProjectText& text, int node) {
    std::vector<int> chain{node};
    for (int master = masterOf(text, node); master >= 0; master = masterOf(text, master)) {
        if (std::find(chain.begin(), chain.end(), master) != chain.end())
            break;
        if (chain.size() > BuiltParameter::longestChain)
            throw Problem(QStringLiteral("%1: follows more than %2 others")
                              .arg(text.path(node))
                              .arg(BuiltParameter::longestChain));
        chain.push_back(master);
    }
    return chain.back();
}

} // namespace

std::vector<int> readInto(Prm::ParameterWithoutType& parameter, const ProjectText& text, int node,
                          const Prm::ParameterWithoutType::TextConversion& convert) {
    const std::vector<int>& lines = text.node(node).lines;
    std::vector<std::optional<float>> places;
    places.reserve(lines.size());
    for (const int line : lines)
        places.push_back(readingPlace(text.reading(line), text.version()));
    std::vector<int> refused;
    for (const std::size_t position : readingOrder(places)) {
        const int line = lines[position];
        try {
            parameter.streamInValue(toText(text.reading(line).entry), text.version(), convert);
        } catch (const std::runtime_error&) {
            refused.push_back(line);
        }
    }
    std::sort(refused.begin(), refused.end());
    return refused;
}

std::unique_ptr<Prm::Parameter<QString>> buildRaw(const ProjectText& text, int node,
                                                  const Prm::ParameterWithoutType::TextConversion& convert) {
    auto parameter = std::make_unique<Prm::Parameter<QString>>();
    readInto(*parameter, text, node, convert);
    return parameter;
}

BuiltParameter::BuiltParameter(const ProjectText& text, int node, ValueKind kind)
    : m_node(node), m_kind(kind), m_parameter(build(text, node, kind)) {}

void BuiltParameter::followMasters(const ProjectText& text, Masters& masters) {
    const int last = lastMaster(text, m_node);
    if (last == m_node)
        return;
    m_master = masters[{last, m_kind}];
    if (!m_master)
        m_master = masters[{last, m_kind}] = build(text, last, m_kind);
    m_master->bAddConstrainedParameter(m_parameter.get());
}

template <class Ask> auto BuiltParameter::ask(const Ask& ask) const {
    switch (m_kind) {
    case ValueKind::Number:
    case ValueKind::NumberOrSwitch:
        return ask(as<double>(parameter()));
    case ValueKind::Point:
        return ask(as<QPointF>(parameter()));
    case ValueKind::Switch:
        return ask(as<bool>(parameter()));
    case ValueKind::Opaque:
    case ValueKind::Text:
        break;
    }
    return ask(as<QString>(parameter()));
}

QVector<QVariant> BuiltParameter::sample(const QVector<Prm::Time>& times, Prm::View view) const {
    if (m_kind == ValueKind::Opaque)
        return QVector<QVariant>(times.size());
    return ask([&](const auto& parameter) { return samplesOf(parameter, times, view); });
}

QVariant BuiltParameter::keyframeValue(unsigned int index, Prm::View view) const {
    return ask([&](const auto& parameter) { return QVariant::fromValue(parameter.keyframeValue(index, view)); });
}

QVariant BuiltParameter::staticValue(Prm::View view) const {
    return ask([&](const auto& parameter) { return QVariant::fromValue(parameter.staticValue(view)); });
}

int masterOf(const ProjectText& text, int node) {
    const int line = text.node(node).masterLine;
    if (line < 0)
        return -1;
    const std::string_view path = textBehindEquals(text.line(line));
    const int master = text.findNode(path.substr(0, path.find('=')));
    return master >= 0 && text.node(master).isParameter() ? master : -1;
}

} // namespace Tool
