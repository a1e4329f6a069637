#include "tool/PlotCurves.h"

#include "prm/ParameterWithoutType.h"
#include "tool/Streams.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Tool {

namespace {

/// A thousand curves with the longest of names would still be a picture.
constexpr int longestName = 200;
constexpr PlotRange framesOfStaticValues{0, 100};

/// A parameter in a view.
struct Source {
    QString path;
    Prm::View view;
    /// Its own keyframes; what it shows may be another's.
    std::vector<FileKeyframe> keys;
    QVector<QVariant> keyValues;
    TypedParameter shown;
    bool isGhost = false;
};

/// The end of a name says more than its beginning.
QString shortened(const QString& name) {
    return name.size() <= longestName ? name : QChar(0x2026) + name.right(longestName);
}

QVector<double> components(const QVariant& value) {
    if (value.userType() == QMetaType::QPointF)
        return {value.toPointF().x(), value.toPointF().y()};
    return {value.toDouble()};
}

PlotRange framesOf(const std::vector<Source>& sources) {
    double first = std::numeric_limits<double>::infinity();
    double last = -first;
    for (const Source& source : sources) {
        if (!source.keys.empty()) {
            first = std::min(first, source.keys.front().time.toDouble());
            last = std::max(last, source.keys.back().time.toDouble());
        }
    }
    return first <= last ? withMargin(first, last) : framesOfStaticValues;
}

/// Besides the samples each keyframe, and the last moment before it, where a held value still holds.
QVector<Prm::Time> timesOf(const std::vector<FileKeyframe>& keys, const PlotRange& frames, int samples) {
    QVector<double> times;
    for (int i = 0; i <= samples; ++i)
        times.append(frames.first + frames.length() * i / samples);
    for (const FileKeyframe& key : keys) {
        const double time = key.time.toDouble();
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
        : m_source(source), m_frames(frames), m_times(timesOf(source.keys, frames, samples)),
          m_values(source.shown.sample(m_times, source.view)) {}

    /// The first curve of a source that is no ghost is the first of a new parameter.
    void addTo(std::vector<PlotCurve>& curves, const QString& name) const {
        const int count = components(m_values.first()).size();
        const QStringList ends = count == 1 ? QStringList("") : QStringList{" x", " y"};
        const int last = curves.empty() ? -1 : curves.back().subject;
        for (int i = 0; i < count; ++i) {
            curves.push_back(curve(name + ends[i], i));
            curves.back().subject = last + 1 + i - (m_source.isGhost ? count : 0);
            curves.back().isGhost = m_source.isGhost;
        }
    }

private:
    PlotCurve curve(const QString& name, int component) const {
        PlotCurve curve;
        curve.name = name;
        curve.keyed = keyedFrames();
        for (int i = 0; i < m_times.size(); ++i)
            curve.points.append({m_times[i].toDouble(), components(m_values[i])[component]});
        const int count = static_cast<int>(m_source.keys.size());
        for (int i = 0; i < count; ++i) {
            const QPointF place = keyframe(i, component);
            if (m_frames.holds(place.x()))
                curve.keyframes.append(place);
            if (i + 1 < count)
                addHandles(curve, m_source.keys[static_cast<std::size_t>(i)].interpolationData, place,
                           keyframe(i + 1, component));
        }
        return curve;
    }

    PlotRange keyedFrames() const {
        const Prm::ParameterWithoutType& parameter = *m_source.shown.parameter;
        const unsigned int count = parameter.keyframeCount(m_source.view);
        if (count == 0)
            return m_frames;
        return {parameter.keyframeTime(0, m_source.view).time.toDouble(),
                parameter.keyframeTime(count - 1, m_source.view).time.toDouble()};
    }

    QPointF keyframe(int index, int component) const {
        return {m_source.keys[static_cast<std::size_t>(index)].time.toDouble(),
                components(m_source.keyValues[index])[component]};
    }

    void addHandles(PlotCurve& curve, const Prm::IType& shape, QPointF from, QPointF to) const {
        const bool isStraight = shape.x1 == 0 && shape.y1 == 0 && shape.x2 == 0 && shape.y2 == 0;
        if (shape.interpolation != Prm::Interpolation::Bezier || isStraight)
            return;
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

void addSources(std::vector<Source>& sources, Project& project, int node, const std::vector<Prm::View>& wanted) {
    const FileParameter parameter = project.kinds().read(node);
    if (!parameter.kind()->canBeDrawn)
        return tell("%1: not drawn, it has no numbers", project.place(parameter));
    const TypedParameter shown = project.kinds().shown(parameter);
    const std::size_t first = sources.size();
    FileViews views = parameter.views();
    for (const Prm::View view : wanted.empty() ? parameter.data().viewList() : wanted) {
        Source source{parameter.path(), view, std::move(views[view.id()].keys), {}, shown, sources.size() > first};
        for (const FileKeyframe& key : source.keys)
            source.keyValues.append(parameter.meaning(key.value));
        sources.push_back(std::move(source));
    }
}

std::vector<Source> sourcesOf(Project& project, const PlotRequest& request) {
    std::vector<Source> sources;
    for (const int node : request.parameters) {
        addSources(sources, project, node, request.views);
        if (sources.size() > Most::curves)
            throw Problem("%1: more than %2 curves; name fewer parameters or views", inputName(project.file()),
                          Most::curves);
    }
    if (sources.empty())
        throw Problem("%1: there is nothing to draw; prm ls shows which parameters have numbers",
                      inputName(project.file()));
    return sources;
}

} // namespace

Plot plotOf(Project& project, const PlotRequest& request) {
    const std::vector<Source> sources = sourcesOf(project, request);
    const bool namesViews =
        std::any_of(sources.begin(), sources.end(), [](const Source& source) { return source.view != Prm::View(); });
    Plot plot;
    plot.frames = request.frames.value_or(framesOf(sources));
    for (const Source& source : sources) {
        const QString view = namesViews ? message(" view %1", source.view.id()) : QString();
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
