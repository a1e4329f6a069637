#include "prm/exchange/LottieSource.h"

#include "prm/ParameterWithoutType.h"
#include "prm/document/Problem.h"
#include "prm/exchange/HeldShapes.h"

#include <QPointF>

#include <algorithm>
#include <cmath>

namespace Prm::document {

namespace {

std::vector<double> components(const QVariant& value) {
    if (value.userType() == QMetaType::QPointF)
        return {value.toPointF().x(), value.toPointF().y()};
    return {value.toDouble()};
}

bool isFinite(const LottieCurve& curve) {
    const auto isOne = [](const auto& key) { return std::isfinite(key.value); };
    return std::isfinite(curve.value) && std::all_of(curve.keyframes.begin(), curve.keyframes.end(), isOne);
}

/// Whether there is a value that keyframes replace, and that is another one than theirs at the start.
bool hasHiddenValue(const FileParameter& parameter, View view) {
    const FileViews views = parameter.views();
    const auto found = views.find(view.id());
    if (found == views.end() || found->second.keys.empty() || found->second.value.text.isNull())
        return false;
    return parameter.meaning(found->second.value) != parameter.meaning(found->second.keys.front().value);
}

} // namespace

LottieSource::LottieSource(Document& document, const std::vector<int>& nodes, View view)
    : m_document(document), m_view(view) {
    const auto count = static_cast<std::size_t>(text().nodeCount());
    m_isWritten.resize(count);
    m_isSwitch.resize(count);
    m_curves.resize(count);
    include(nodes);
    document.forEach(nodes, "reading", [this](const FileParameter& parameter) { read(parameter); });
}

void LottieSource::include(const std::vector<int>& nodes) {
    int parameters = 0;
    for (int i = 0; i < text().nodeCount(); ++i)
        parameters += text().node(i).isParameter() ? 1 : 0;
    m_isIncluded.assign(m_curves.size(), parameters == static_cast<int>(nodes.size()));
    for (const int node : nodes) {
        for (int i = node; !isIncluded(i); i = text().node(i).parent) {
            m_isIncluded[static_cast<std::size_t>(i)] = true;
            if (i == ProjectText::root)
                break;
        }
    }
}

void LottieSource::read(const FileParameter& parameter) {
    if (parameter.kind() == &ValueKind::text) {
        m_texts.push_back(parameter.node());
        return;
    }
    // In an animation, 0 and 1 are numbers unless the user says otherwise.
    if (parameter.kind() != &ValueKind::numberOrSwitch)
        note(evaluability(parameter));
    const TypedParameter shown = m_document.kinds.shown(parameter);
    if (!shown.parameter)
        return;
    lose(parameter.node(), settingsLost(parameter, shown));
    readCurves(parameter.node(), shown);
}

void LottieSource::note(const Evaluability& found) {
    m_isComplete = m_isComplete && found.isGiven;
    if (!found.note.isEmpty())
        m_notes.push_back(found);
}

void LottieSource::readCurves(int node, const TypedParameter& shown) {
    const ParameterWithoutType& parameter = *shown.parameter;
    const View view = shown.viewWithData(m_view);
    QVector<Time> times;
    for (unsigned int i = 0; i < parameter.keyframeCount(view); ++i)
        times.append(parameter.keyframeTime(i, view).time);
    const QVector<QVariant> values = shown.sample(times.isEmpty() ? QVector<Time>{Time::fromInt(0)} : times, view);
    m_isSwitch[static_cast<std::size_t>(node)] = values.front().userType() == QMetaType::Bool;
    std::vector<LottieCurve> curves(components(values.front()).size());
    HeldShapes shapes;
    for (int i = 0; i < values.size(); ++i) {
        const IType given = parameter.interpolationData({&parameter, view, static_cast<quint32>(i)});
        const IType shape = isSwitch(node) ? IType(Interpolation::Constant) : shapes.held(given);
        const std::vector<double> numbers = components(values[i]);
        for (std::size_t c = 0; c < curves.size(); ++c) {
            curves[c].value = i == 0 ? numbers[c] : curves[c].value;
            if (!times.isEmpty())
                curves[c].keyframes.append({times[i], numbers[c], shape});
        }
    }
    if (!std::all_of(curves.begin(), curves.end(), isFinite))
        return lose(node, {"left out, because JSON holds no infinite values"});
    lose(node, shapes.losses());
    m_curves[static_cast<std::size_t>(node)] = std::move(curves);
}

QStringList LottieSource::settingsLost(const FileParameter& parameter, const TypedParameter& shown) {
    const ParameterWithoutType& typed = *shown.parameter;
    const View written = shown.viewWithData(m_view);
    QStringList lost;
    int otherViews = 0;
    for (const View view : typed.viewList())
        otherViews += view == written ? 0 : 1;
    if (otherViews > 0)
        lost += message("one view is written, without %1", counted(otherViews, "other"));
    if (m_document.kinds.masters(parameter.node()).size() > 1)
        lost += message("the values of %1 are written instead of the tie to it", parameter.master());
    const auto isConstant = [](Extrapolation kind) { return kind == Extrapolation::Constant; };
    const unsigned int count = typed.keyframeCount(written);
    if (count > 0 && (!isConstant(typed.extrapolationBefore()) || !isConstant(typed.extrapolationAfter())))
        lost += "it is held before and after its keyframes";
    if (hasHiddenValue(parameter, written))
        lost += "its value without keyframes is left out";
    if (parameter.isHidden())
        lost += "it is hidden, which is left out";
    return lost;
}

QVariant LottieSource::number(int parent, const char* name) {
    const int node = text().findChild(parent, name);
    if (node < 0 || !text().node(node).isParameter())
        return {};
    if (!isIncluded(node) && curves(node).empty())
        read(m_document.kinds.read(node));
    if (curves(node).size() != 1)
        return {};
    setWritten(node);
    if (!curves(node).front().keyframes.isEmpty())
        lose(node, {"a setting of a layer has no keyframes: its first value counts"});
    return curves(node).front().value;
}

QString LottieSource::textOf(int parent, const char* name) {
    const int node = text().findChild(parent, name);
    if (node < 0 || !text().node(node).isParameter())
        return {};
    const FileParameter parameter = m_document.kinds.read(node);
    if (parameter.kind() != &ValueKind::text)
        return {};
    setWritten(node);
    return m_document.kinds.shown(parameter).sample({Time::fromInt(0)}, m_view).front().toString();
}

void LottieSource::lose(int node, const QStringList& what) {
    if (!what.isEmpty())
        m_losses[node] += what;
}

QStringList LottieSource::losses() const {
    std::map<int, QStringList> all = m_losses;
    for (const int node : m_texts) {
        if (!m_isWritten[static_cast<std::size_t>(node)])
            all[node] += "texts are left out";
    }
    QStringList lines;
    for (const auto& [node, what] : all)
        lines += message("%1: %2", text().path(node), what.join("; "));
    return lines;
}

} // namespace Prm::document
