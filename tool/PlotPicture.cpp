#include "tool/PlotPicture.h"

#include "tool/Problem.h"

#include <QRectF>
#include <QSet>
#include <QXmlStreamWriter>

#include <algorithm>
#include <array>
#include <cmath>

namespace Tool {

namespace {

constexpr std::array<const char*, 8> colours{"#0072b2", "#d55e00", "#009e73", "#cc79a7",
                                             "#e69f00", "#56b4e9", "#8c564b", "#555555"};
constexpr int legendRow = 20;
constexpr int characterWidth = 7;
constexpr int margin = 20;
constexpr int belowPlot = 44;
constexpr int pixelsPerFrameTick = 90;
constexpr int pixelsPerValueTick = 50;

QString text(double number) {
    QString text = QString::number(number, 'f', 2);
    while (text.endsWith('0'))
        text.chop(1);
    if (text.endsWith('.'))
        text.chop(1);
    return text;
}

QString colour(std::size_t curve) {
    return colours[curve % colours.size()];
}

/// Of the points that fall on one pixel's width, only as many as show: the outer ones, in their order.
QVector<QPointF> thinned(const QVector<QPointF>& points) {
    QVector<QPointF> kept;
    for (auto start = points.begin(); start != points.end();) {
        const auto end = std::find_if(start, points.end(),
                                      [&](const QPointF& p) { return std::floor(p.x()) != std::floor(start->x()); });
        const auto [least, greatest] =
            std::minmax_element(start, end, [](const QPointF& a, const QPointF& b) { return a.y() < b.y(); });
        std::array<QVector<QPointF>::const_iterator, 4> outer{start, least, greatest, end - 1};
        std::sort(outer.begin(), outer.end());
        for (auto each = outer.begin(); each != std::unique(outer.begin(), outer.end()); ++each)
            kept.append(**each);
        start = end;
    }
    return kept;
}

class Picture {
public:
    Picture(const Plot& plot, int width, int height)
        : m_plot(plot), m_size(width, height + legendRow * static_cast<int>(plot.curves.size())),
          m_valueTicks(ticks(plot.values, std::max(2, height / pixelsPerValueTick))), m_writer(&m_bytes) {
        int labelWidth = 0;
        for (const PlotTick& tick : m_valueTicks)
            labelWidth = std::max(labelWidth, tick.label.size() * characterWidth);
        const int left = labelWidth + margin;
        m_area = QRectF(left, margin, width - left - margin, height - margin - belowPlot);
    }

    QByteArray bytes() {
        m_writer.setAutoFormatting(true);
        m_writer.setAutoFormattingIndent(1);
        m_writer.writeStartDocument();
        startPicture();
        drawAxes();
        for (std::size_t i = 0; i < m_plot.curves.size(); ++i)
            drawCurve(m_plot.curves[i], i);
        drawLegend();
        m_writer.writeEndDocument();
        return m_bytes;
    }

private:
    using Attributes = std::initializer_list<std::pair<const char*, QString>>;

    void start(const char* name, const Attributes& attributes) {
        m_writer.writeStartElement(name);
        for (const auto& [key, value] : attributes)
            m_writer.writeAttribute(key, value);
    }

    void element(const char* name, const Attributes& attributes) {
        start(name, attributes);
        m_writer.writeEndElement();
    }

    void line(QPointF from, QPointF to, const Attributes& attributes = {}) {
        start("line", {{"x1", text(from.x())}, {"y1", text(from.y())}, {"x2", text(to.x())}, {"y2", text(to.y())}});
        for (const auto& [key, value] : attributes)
            m_writer.writeAttribute(key, value);
        m_writer.writeEndElement();
    }

    void dot(QPointF place, const char* radius, const QString& fill) {
        element("circle", {{"cx", text(place.x())}, {"cy", text(place.y())}, {"r", radius}, {"fill", fill}});
    }

    void write(QPointF place, const char* anchor, const QString& words) {
        start("text", {{"x", text(place.x())}, {"y", text(place.y())}, {"text-anchor", anchor}});
        m_writer.writeCharacters(words);
        m_writer.writeEndElement();
    }

    QPointF place(QPointF point) const {
        return {m_area.left() + m_plot.frames.part(point.x()) * m_area.width(),
                m_area.bottom() - m_plot.values.part(point.y()) * m_area.height()};
    }

    void startPicture() {
        const QString width = text(m_size.width());
        const QString height = text(m_size.height());
        start("svg", {{"xmlns", "http://www.w3.org/2000/svg"},
                      {"width", width},
                      {"height", height},
                      {"viewBox", message("0 0 %1 %2", width, height)},
                      {"font-family", "sans-serif"},
                      {"font-size", "12"}});
        element("rect", {{"width", width}, {"height", height}, {"fill", "#ffffff"}});
    }

    void drawAxes() {
        start("g", {{"stroke", "#dddddd"}});
        const auto frameTicks =
            ticks(m_plot.frames, std::max(2, static_cast<int>(m_area.width()) / pixelsPerFrameTick));
        const auto x = [this](const PlotTick& tick) { return place({tick.number, 0}).x(); };
        const auto y = [this](const PlotTick& tick) { return place({0, tick.number}).y(); };
        for (const PlotTick& tick : frameTicks)
            line({x(tick), m_area.top()}, {x(tick), m_area.bottom()});
        for (const PlotTick& tick : m_valueTicks)
            line({m_area.left(), y(tick)}, {m_area.right(), y(tick)});
        m_writer.writeEndElement();
        start("g", {{"stroke", "#333333"}});
        line(m_area.bottomLeft(), m_area.bottomRight());
        line(m_area.topLeft(), m_area.bottomLeft());
        m_writer.writeEndElement();
        start("g", {{"fill", "#333333"}});
        for (const PlotTick& tick : frameTicks)
            write({x(tick), m_area.bottom() + 16}, "middle", tick.label);
        for (const PlotTick& tick : m_valueTicks)
            write({m_area.left() - 6, y(tick) + 4}, "end", tick.label);
        write({m_area.right(), m_area.bottom() + 32}, "end", "frames");
        m_writer.writeEndElement();
    }

    void drawCurve(const PlotCurve& curve, std::size_t index) {
        start("g", {{"fill", "none"}, {"stroke", colour(index)}, {"stroke-width", "2"}, {"stroke-linejoin", "round"}});
        QVector<QPointF> run;
        for (const QPointF& point : curve.points) {
            if (isDrawable(point.y()))
                run.append(place(point));
            else
                drawRun(run);
        }
        drawRun(run);
        m_writer.writeEndElement();
        drawHandles(curve, index);
        drawKeyframes(curve, index);
    }

    void drawRun(QVector<QPointF>& run) {
        QStringList words;
        for (const QPointF& point : thinned(run))
            words.append(text(point.x()) + ',' + text(point.y()));
        if (!words.isEmpty())
            element("polyline", {{"points", words.join(' ')}});
        run.clear();
    }

    void drawHandles(const PlotCurve& curve, std::size_t index) {
        if (curve.handles.isEmpty())
            return;
        start("g",
              {{"class", "handles"}, {"stroke", colour(index)}, {"stroke-width", "0.75"}, {"stroke-opacity", "0.7"}});
        QSet<QPair<int, int>> drawn;
        for (const PlotCurve::Handle& handle : curve.handles) {
            if (!isNew(drawn, place(handle.end)))
                continue;
            line(place(handle.keyframe), place(handle.end));
            if (handle.endIsShown)
                dot(place(handle.end), "2.5", "#ffffff");
        }
        m_writer.writeEndElement();
    }

    void drawKeyframes(const PlotCurve& curve, std::size_t index) {
        start("g", {{"class", "keyframes"}});
        QSet<QPair<int, int>> drawn;
        for (const QPointF& keyframe : curve.keyframes) {
            if (isDrawable(keyframe.y()) && isNew(drawn, place(keyframe)))
                dot(place(keyframe), "4", colour(index));
        }
        m_writer.writeEndElement();
    }

    /// False for what would be hidden by another one.
    static bool isNew(QSet<QPair<int, int>>& drawn, QPointF place) {
        const QPair<int, int> pixel(qRound(place.x()), qRound(place.y()));
        const bool isNew = !drawn.contains(pixel);
        drawn.insert(pixel);
        return isNew;
    }

    void drawLegend() {
        const double bottom = m_area.bottom() + belowPlot;
        for (std::size_t i = 0; i < m_plot.curves.size(); ++i) {
            const double y = bottom + legendRow * static_cast<double>(i);
            const double x = m_area.left();
            line({x, y}, {x + 24, y}, {{"stroke", colour(i)}, {"stroke-width", "2"}});
            dot({x + 12, y}, "4", colour(i));
            write({x + 32, y + 4}, "start", m_plot.curves[i].name);
        }
    }

    const Plot& m_plot;
    QSize m_size;
    QVector<PlotTick> m_valueTicks;
    QRectF m_area;
    QByteArray m_bytes;
    QXmlStreamWriter m_writer;
};

} // namespace

QByteArray plotPicture(const Plot& plot, int width, int height) {
    return Picture(plot, width, height).bytes();
}

} // namespace Tool
