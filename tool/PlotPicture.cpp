#include "tool/PlotPicture.h"

#include "tool/Problem.h"

#include <QLineF>
#include <QRectF>
#include <QSet>
#include <QXmlStreamWriter>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace Tool {

namespace {

constexpr std::array<const char*, 12> colours{"#0072b2", "#d55e00", "#009e73", "#cc79a7", "#e69f00", "#56b4e9",
                                              "#8c564b", "#555555", "#8a2be2", "#101060", "#5c0011", "#7f7f00"};
/// Curves are written in whole numbers of this many pixels, which is twice as short as with decimals.
constexpr double unit = 0.4;
/// Around a keyframe, in units, as relative commands of a path.
constexpr std::array<const char*, 7> marks{"m-10 0a10 10 0 1 0 20 0a10 10 0 1 0-20 0",
                                           "m0-13 13 13-13 13-13-13z",
                                           "m-10-10h20v20h-20z",
                                           "m0-13 13 22h-26z",
                                           "m0 13 13-22h-26z",
                                           "m-13-4h9v-9h8v9h9v8h-9v9h-8v-9h-9z",
                                           "m-13 0 8-12h10l8 12-8 12h-10z"};
constexpr std::array<const char*, 8> dashes{"",         "35 10", "20 8",         "35 8 10 8",
                                            "20 8 5 8", "50 10", "35 8 5 8 5 8", "13 5"};
constexpr const char* extrapolatedDash = "7 9";
/// Of more in one picture, none is seen.
constexpr int mostHandles = 400;
/// Of more in one picture, only some marks are drawn, to tell the curves apart.
constexpr int mostKeyframes = 2000;
/// In pixels, of the marks of one curve.
constexpr double leastDistance = 9;
constexpr double wideDistance = 48;
/// The columns of pixels of which two points are kept, the outer ones. A line moves by less than the first of them, and
/// by less than half a pixel in all; only those of a picture with more points than that are wider.
constexpr std::array<double, 4> columns{0.2, 1, 2, 4};
constexpr int mostPoints = 30000;
/// By how much a line may move in height besides, in pixels.
constexpr double tolerance = 0.15;
constexpr int legendRow = 20;
constexpr double legendLine = 46;
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

/// What distinguishes a curve from others, with colours and without: 56 differ in their marks and dashes.
struct Style {
    Style(const PlotCurve& curve, std::size_t index)
        : colour(colours[static_cast<std::size_t>(curve.subject) % colours.size()]), mark(marks[index % marks.size()]),
          dash(dashes[index / marks.size() % dashes.size()]), opacity(curve.isGhost ? "0.45" : "") {}

    const char* colour;
    const char* mark;
    const char* dash;
    const char* opacity;
};

/// Of the points that fall on one column, only as many as show: the outer ones, in their order.
QVector<QPointF> thinned(const QVector<QPointF>& points, double column) {
    const auto columnOf = [=](const QPointF& point) { return std::floor(point.x() / column); };
    QVector<QPointF> kept;
    for (auto start = points.begin(); start != points.end();) {
        const auto end =
            std::find_if(start, points.end(), [&](const QPointF& p) { return columnOf(p) != columnOf(*start); });
        const auto [least, greatest] =
            std::minmax_element(start, end, [](const QPointF& a, const QPointF& b) { return a.y() < b.y(); });
        kept.append(*std::min(least, greatest));
        if (least != greatest)
            kept.append(*std::max(least, greatest));
        start = end;
    }
    return kept;
}

/// Leaves out points as long as straight lines from the last one kept come near enough to all: they are in a cone.
QVector<QPointF> simplified(const QVector<QPointF>& points) {
    constexpr double infinite = std::numeric_limits<double>::infinity();
    QVector<QPointF> kept{points.first()};
    double least = -infinite;
    double greatest = infinite;
    for (int i = 1; i < points.size(); ++i) {
        const QPointF way = points[i] - kept.last();
        const double slope = way.y() / way.x();
        if (i > 1 && !(slope >= least && slope <= greatest)) {
            kept.append(points[i - 1]);
            least = -infinite;
            greatest = infinite;
        }
        const QPointF next = points[i] - kept.last();
        least = std::max(least, (next.y() - tolerance) / next.x());
        greatest = std::min(greatest, (next.y() + tolerance) / next.x());
    }
    kept.append(points.last());
    return kept;
}

/// The commands of a path in units, each number relative to the last.
class PathText {
public:
    void moveTo(QPointF place) {
        m_text += 'M';
        m_last = {};
        add(place);
        m_isLine = false;
    }
    void lineTo(QPointF place) {
        m_text += m_isLine ? ' ' : 'l';
        add(place);
        m_isLine = true;
    }
    void append(const char* commands) { m_text += QLatin1String(commands); }
    const QString& text() const { return m_text; }

private:
    void add(QPointF place) {
        const QPoint now(qRound(place.x() / unit), qRound(place.y() / unit));
        const QPoint way = now - m_last;
        if (way.x() < 0 && m_text.endsWith(' '))
            m_text.chop(1);
        m_text += QString::number(way.x()) + (way.y() < 0 ? "" : " ") + QString::number(way.y());
        m_last = now;
    }

    QString m_text;
    QPoint m_last;
    bool m_isLine = false;
};

/// The lines of a curve, in pixels.
struct Lines {
    QVector<QVector<QPointF>> before;
    QVector<QVector<QPointF>> between;
    QVector<QVector<QPointF>> after;

    int pointCount() const {
        int count = 0;
        for (const auto* const lines : {&before, &between, &after}) {
            for (const QVector<QPointF>& line : *lines)
                count += line.size();
        }
        return count;
    }
};

class Picture {
public:
    Picture(const Plot& plot, int width, int height)
        : m_plot(plot), m_legend(legendSize(plot, width)), m_size(width, height + legendRow * m_legend.height()),
          m_valueTicks(ticks(plot.values, std::max(2, height / pixelsPerValueTick))), m_writer(&m_bytes) {
        int labelWidth = 0;
        for (const PlotTick& tick : m_valueTicks)
            labelWidth = std::max(labelWidth, tick.label.size() * characterWidth);
        const int left = labelWidth + margin;
        int handles = 0;
        int keyframes = 0;
        for (const PlotCurve& curve : plot.curves) {
            handles += curve.handles.size();
            keyframes += curve.keyframes.size();
        }
        m_hasHandles = handles <= mostHandles;
        m_isCrowded = keyframes > mostKeyframes;
        m_area = QRectF(left, margin, width - left - margin, height - margin - belowPlot);
    }

    QByteArray bytes() {
        m_writer.setAutoFormatting(true);
        m_writer.setAutoFormattingIndent(1);
        m_writer.writeStartDocument();
        startPicture();
        drawAxes();
        drawCurves();
        drawLegend();
        m_writer.writeEndDocument();
        return m_bytes;
    }

private:
    using Attributes = std::initializer_list<std::pair<const char*, QString>>;

    void start(const char* name, const Attributes& attributes) {
        m_writer.writeStartElement(name);
        for (const auto& [key, value] : attributes) {
            if (!value.isEmpty())
                m_writer.writeAttribute(key, value);
        }
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

    void drawCurves() {
        std::vector<Lines> lines;
        for (const double column : columns) {
            lines.clear();
            int points = 0;
            for (const PlotCurve& curve : m_plot.curves) {
                lines.push_back(linesOf(curve, column));
                points += lines.back().pointCount();
            }
            if (points <= mostPoints)
                break;
        }
        startUnits();
        for (std::size_t i = 0; i < lines.size(); ++i)
            drawCurve(m_plot.curves[i], lines[i], Style(m_plot.curves[i], i));
        m_writer.writeEndElement();
    }

    /// Numbers are of units, and lines two pixels wide.
    void startUnits() {
        start("g", {{"transform", message("scale(%1)", unit)},
                    {"fill", "none"},
                    {"stroke-width", text(2 / unit)},
                    {"stroke-linejoin", "round"}});
    }

    void drawCurve(const PlotCurve& curve, const Lines& lines, const Style& style) {
        start("g", {{"stroke", style.colour}, {"opacity", style.opacity}});
        drawLines(lines.before, {{"class", "extrapolated"}, {"stroke-dasharray", extrapolatedDash}});
        drawLines(lines.between, {{"stroke-dasharray", style.dash}});
        drawLines(lines.after, {{"class", "extrapolated"}, {"stroke-dasharray", extrapolatedDash}});
        if (m_hasHandles)
            drawHandles(curve);
        drawMarks(curve, style);
        m_writer.writeEndElement();
    }

    Lines linesOf(const PlotCurve& curve, double column) const {
        const auto& [first, last] = curve.keyed;
        return {linesIn(curve, {m_plot.frames.first, first}, column), linesIn(curve, {first, last}, column),
                linesIn(curve, {last, m_plot.frames.last}, column)};
    }

    /// As much of a curve as lies within some frames.
    QVector<QVector<QPointF>> linesIn(const PlotCurve& curve, const PlotRange& frames, double column) const {
        QVector<QVector<QPointF>> lines;
        QVector<QPointF> run;
        const auto end = [&] {
            if (run.size() > 1)
                lines.append(simplified(thinned(run, column)));
            run.clear();
        };
        for (const QPointF& point : curve.points) {
            if (!frames.holds(point.x()))
                continue;
            if (isDrawable(point.y()))
                run.append(place(point));
            else
                end();
        }
        end();
        return lines;
    }

    void drawLines(const QVector<QVector<QPointF>>& lines, const Attributes& attributes) {
        PathText path;
        for (const QVector<QPointF>& line : lines) {
            path.moveTo(line.first());
            for (int i = 1; i < line.size(); ++i)
                path.lineTo(line[i]);
        }
        drawPath(path, attributes);
    }

    void drawPath(const PathText& path, const Attributes& attributes) {
        if (path.text().isEmpty())
            return;
        start("path", attributes);
        m_writer.writeAttribute("d", path.text());
        m_writer.writeEndElement();
    }

    void drawHandles(const PlotCurve& curve) {
        PathText lines;
        PathText ends;
        QSet<QPair<int, int>> drawn;
        for (const PlotCurve::Handle& handle : curve.handles) {
            if (!isNew(drawn, place(handle.end)))
                continue;
            lines.moveTo(place(handle.keyframe));
            lines.lineTo(place(handle.end));
            if (!handle.endIsShown)
                continue;
            ends.moveTo(place(handle.end));
            ends.append("m-6 0a6 6 0 1 0 12 0a6 6 0 1 0-12 0");
        }
        if (drawn.isEmpty())
            return;
        start("g", {{"class", "handles"},
                    {"fill", "#ffffff"},
                    {"stroke-width", text(0.75 / unit)},
                    {"stroke-opacity", "0.7"}});
        drawPath(lines, {});
        drawPath(ends, {});
        m_writer.writeEndElement();
    }

    /// Keyframes are filled, and small where they are close. Hollow marks name a curve that has none.
    void drawMarks(const PlotCurve& curve, const Style& style) {
        const bool isKeyed = !curve.keyframes.isEmpty();
        PathText large;
        PathText small;
        QPointF last(-wideDistance, 0);
        for (const QPointF& point : isKeyed ? curve.keyframes : namingPoints(curve)) {
            if (!isDrawable(point.y()))
                continue;
            const QPointF here = place(point);
            const bool isClose = QLineF(last, here).length() < (m_isCrowded ? wideDistance : leastDistance);
            if (isClose && m_isCrowded)
                continue;
            PathText& path = isClose ? small : large;
            path.moveTo(here);
            path.append(isClose ? "h0" : style.mark);
            last = isClose ? last : here;
        }
        drawPath(large, {{"class", isKeyed ? "keyframes" : "marks"},
                         {"fill", isKeyed ? style.colour : "#ffffff"},
                         {"stroke", isKeyed ? "none" : style.colour}});
        drawPath(small, {{"class", "keyframes"}, {"stroke-linecap", "round"}, {"stroke-width", text(4 / unit)}});
    }

    static QVector<QPointF> namingPoints(const PlotCurve& curve) {
        constexpr int parts = 8;
        QVector<QPointF> points;
        for (int i = 1; i < parts; i += 2)
            points.append(curve.points[curve.points.size() * i / parts]);
        return points;
    }

    /// False for what would be hidden by another one.
    static bool isNew(QSet<QPair<int, int>>& drawn, QPointF place) {
        const QPair<int, int> pixel(qRound(place.x()), qRound(place.y()));
        const bool isNew = !drawn.contains(pixel);
        drawn.insert(pixel);
        return isNew;
    }

    void drawLegend() {
        startUnits();
        for (std::size_t i = 0; i < m_plot.curves.size(); ++i) {
            const Style style(m_plot.curves[i], i);
            const QPointF at = legendPlace(i);
            PathText line;
            line.moveTo(at);
            line.lineTo(at + QPointF(legendLine, 0));
            PathText mark;
            mark.moveTo(at + QPointF(legendLine / 2, 0));
            mark.append(style.mark);
            start("g", {{"stroke", style.colour}, {"opacity", style.opacity}});
            drawPath(line, {{"stroke-dasharray", style.dash}});
            drawPath(mark, {{"fill", m_plot.curves[i].keyframes.isEmpty() ? "#ffffff" : style.colour}});
            m_writer.writeEndElement();
        }
        m_writer.writeEndElement();
        for (std::size_t i = 0; i < m_plot.curves.size(); ++i)
            write(legendPlace(i) + QPointF(legendLine + 8, 4), "start", m_plot.curves[i].name);
    }

    QPointF legendPlace(std::size_t index) const {
        const int i = static_cast<int>(index);
        const double width = m_area.width() / m_legend.width();
        const int column = i / m_legend.height();
        return {m_area.left() + width * column, m_area.bottom() + belowPlot + legendRow * (i % m_legend.height())};
    }

    /// The columns and rows of the legend.
    static QSize legendSize(const Plot& plot, int width) {
        constexpr int mostRowsAlone = 8;
        int widest = 0;
        for (const PlotCurve& curve : plot.curves)
            widest = std::max(widest, curve.name.size());
        const int count = static_cast<int>(plot.curves.size());
        const int room = static_cast<int>(legendLine) + margin + widest * characterWidth;
        const int across = count > mostRowsAlone ? std::max(1, (width - 2 * margin) / room) : 1;
        return {across, (count + across - 1) / across};
    }

    const Plot& m_plot;
    QSize m_legend;
    QSize m_size;
    QVector<PlotTick> m_valueTicks;
    QRectF m_area;
    bool m_hasHandles = true;
    bool m_isCrowded = false;
    QByteArray m_bytes;
    QXmlStreamWriter m_writer;
};

} // namespace

QByteArray plotPicture(const Plot& plot, int width, int height) {
    return Picture(plot, width, height).bytes();
}

} // namespace Tool
