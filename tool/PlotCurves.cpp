#include "tool/PlotCurves.h"

#include "tool/Problem.h"
#include "tool/Streams.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Tool {

namespace {

constexpr std::size_t mostCurves = 1000;
/// A thousand curves with the longest of names would still be a picture.
constexpr int longestName = 200;
constexpr PlotRange framesOfStaticValues{0, 100};

/// A parameter in a view.
struct Source {
    const BuiltParameter* built;
    QString path;
    Prm::View view;
};

/// The end of a name says more than its beginning.
QString shortened(const QString& name) {
    return name.size() <= longestName ? name : QChar(0x2026) + name.right(longestName);
}

bool hasNumbers(ValueKind kind) {
    return kind != ValueKind::Opaque && kind != ValueKind::Text;
}

QVector<double> components(const QVariant& value) {
    if (value.userType() == QMetaType::QPointF)
        return {value.toPointF().x(), value.toPointF().y()};
    return {value.toDouble()};
}

QVector<double> keyframeTimes(const Source& source) {
    const Prm::ParameterWithoutType& parameter = source.built->parameter();
    const unsigned int count = parameter.keyframeCount(source.view);
    QVector<double> times;
    times.reserve(static_cast<int>(count));
    for (unsigned int i = 0; i < count; ++i)
        times.append(parameter.keyframeTime(i, source.view).time.toDouble());
    return times;
}

PlotRange framesOf(const std::vector<Source>& sources) {
    double first = std::numeric_limits<double>::infinity();
    double last = -first;
    for (const Source& source : sources) {
        const QVector<double> times = keyframeTimes(source);
        if (!times.isEmpty()) {
            first = std::min(first, times.first());
            last = std::max(last, times.last());
        }
    }
    return first <= last ? withMargin(first, last) : framesOfStaticValues;
}

/// Besides the samples each keyframe, and the last moment before it, where a held value still holds.
QVector<Prm::Time> timesOf(const QVector<double>& keyframes, const PlotRange& frames, int samples) {
    QVector<double> times;
    for (int i = 0; i <= samples; ++i)
        times.append(frames.first + frames.length() * i / samples);
    for (const double time : keyframes) {
        if (frames.holds(time))
            times << std::nextafter(time, -std::numeric_limits<double>::infinity()) << time;
    }
    std::sort(times.begin(), times.end());
    QVector<Prm::Time> result;
    result.reserve(times.size());
    for (const double time : times)
        result.append(Prm::Time::fromDouble(time));
    return result;
}

/// As much of a line as lies within the frames.
PlotCurve::Handle clipped(QPointF keyframe, QPointF end, const PlotRange& frames) {
    const double x = std::min(std::max(end.x(), frames.first), frames.last);
    if (x == end.x())
        return {keyframe, end, true};
    const double part = (x - keyframe.x()) / (end.x() - keyframe.x());
    return {keyframe, {x, keyframe.y() + part * (end.y() - keyframe.y())}, false};
}

/// The curves of one source, which differ in the component that they show.
class Sampling {
public:
    Sampling(const Source& source, const PlotRange& frames, int samples)
        : m_source(source), m_frames(frames), m_keyframes(keyframeTimes(source)) {
        m_times = timesOf(m_keyframes, frames, samples);
        m_values = source.built->sample(m_times, source.view);
        for (int i = 0; i < m_keyframes.size(); ++i)
            m_keyframeValues.append(source.built->keyframeValue(static_cast<unsigned int>(i), source.view));
    }

    void addTo(std::vector<PlotCurve>& curves, const QString& name) const {
        const int count = components(m_values.first()).size();
        const QStringList ends =
            count == 1 ? QStringList{QString()} : QStringList{QStringLiteral(" x"), QStringLiteral(" y")};
        for (int i = 0; i < count; ++i)
            curves.push_back(curve(name + ends[i], i));
    }

private:
    PlotCurve curve(const QString& name, int component) const {
        PlotCurve curve;
        curve.name = name;
        for (int i = 0; i < m_times.size(); ++i)
            curve.points.append({m_times[i].toDouble(), components(m_values[i])[component]});
        for (int i = 0; i < m_keyframes.size(); ++i) {
            if (m_frames.holds(m_keyframes[i]))
                curve.keyframes.append(keyframe(i, component));
            if (i + 1 < m_keyframes.size())
                addHandles(curve, i, component);
        }
        return curve;
    }

    QPointF keyframe(int index, int component) const {
        return {m_keyframes[index], components(m_keyframeValues[index])[component]};
    }

    void addHandles(PlotCurve& curve, int index, int component) const {
        const Prm::IType shape = m_source.built->parameter().interpolationData(
            {&m_source.built->parameter(), m_source.view, static_cast<unsigned int>(index)});
        const bool isStraight = shape.x1 == 0 && shape.y1 == 0 && shape.x2 == 0 && shape.y2 == 0;
        if (shape.interpolation != Prm::Interpolation::Bezier || isStraight)
            return;
        const QPointF from = keyframe(index, component);
        const QPointF to = keyframe(index + 1, component);
        const QPointF way = to - from;
        addHandle(curve, from, {from.x() + shape.x1 * way.x(), from.y() + shape.y1 * way.y()});
        addHandle(curve, to, {from.x() + shape.x2 * way.x(), from.y() + shape.y2 * way.y()});
    }

    void addHandle(PlotCurve& curve, QPointF keyframe, QPointF end) const {
        if (m_frames.holds(keyframe.x()) && end != keyframe && isDrawable(keyframe.y()) && isDrawable(end.y()))
            curve.handles.append(clipped(keyframe, end, m_frames));
    }

    const Source& m_source;
    PlotRange m_frames;
    QVector<double> m_keyframes;
    QVector<QVariant> m_keyframeValues;
    QVector<Prm::Time> m_times;
    QVector<QVariant> m_values;
};

PlotRange valuesOf(const std::vector<PlotCurve>& curves) {
    double least = std::numeric_limits<double>::infinity();
    double greatest = -least;
    const auto add = [&](double value) {
        if (isDrawable(value)) {
            least = std::min(least, value);
            greatest = std::max(greatest, value);
        }
    };
    for (const PlotCurve& curve : curves) {
        for (const QVector<QPointF>& points : {curve.points, curve.keyframes}) {
            for (const QPointF& point : points)
                add(point.y());
        }
        for (const PlotCurve::Handle& handle : curve.handles)
            add(handle.end.y());
    }
    return least <= greatest ? withMargin(least, greatest) : PlotRange();
}

std::vector<BuiltParameter> builtParameters(Project& project, std::vector<int>& nodes) {
    std::vector<BuiltParameter> built;
    std::vector<int> drawn;
    for (const int node : nodes) {
        if (!hasNumbers(project.kindOf(node))) {
            tell(QStringLiteral("%1: not drawn, it has no numbers").arg(project.text().path(node)));
            continue;
        }
        if (built.size() == mostCurves)
            throw Problem(QStringLiteral("more than %1 curves").arg(mostCurves));
        built.push_back(project.shown(node));
        drawn.push_back(node);
    }
    nodes.swap(drawn);
    return built;
}

std::vector<Source> sourcesOf(Project& project, const std::vector<BuiltParameter>& built, const std::vector<int>& nodes,
                              const std::vector<Prm::View>& wanted) {
    std::vector<Source> sources;
    for (std::size_t i = 0; i < built.size(); ++i) {
        for (const Prm::View view : wanted.empty() ? built[i].parameter().viewList() : wanted)
            sources.push_back({&built[i], project.text().path(nodes[i]), view});
    }
    if (sources.empty())
        throw Problem(QStringLiteral("there is nothing to draw"));
    if (sources.size() > mostCurves)
        throw Problem(QStringLiteral("more than %1 curves").arg(mostCurves));
    return sources;
}

} // namespace

Plot plotOf(Project& project, const PlotRequest& request) {
    std::vector<int> nodes = request.parameters;
    const std::vector<BuiltParameter> built = builtParameters(project, nodes);
    const std::vector<Source> sources = sourcesOf(project, built, nodes, request.views);
    const bool namesViews =
        std::any_of(sources.begin(), sources.end(), [](const Source& source) { return source.view != Prm::View(); });
    Plot plot;
    plot.frames = request.frames.value_or(framesOf(sources));
    for (const Source& source : sources) {
        const QString view = namesViews ? QStringLiteral(" view %1").arg(source.view.id()) : QString();
        Sampling(source, plot.frames, request.samples).addTo(plot.curves, printable(shortened(source.path) + view));
    }
    plot.values = valuesOf(plot.curves);
    return plot;
}

bool isDrawable(double value) {
    constexpr double largest = 1e300;
    return std::abs(value) <= largest;
}

} // namespace Tool
