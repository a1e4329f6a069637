#include "tool/PlotText.h"

#include "tool/BrailleCanvas.h"
#include "tool/Problem.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace Tool {

namespace {

constexpr int rowsPerTick = 4;
constexpr int columnsPerTick = 12;
constexpr int leastColumns = 10;

/// Distinguished by signs without colours.
constexpr std::array<ushort, 6> signs{0x25CF, 0x25C6, 0x25A0, 0x25B2, 0x25C7, 0x25A1};
constexpr ushort handleEnd = 0x25E6;
/// As terminals number them: cyan, yellow, magenta, green, red, blue.
constexpr std::array<int, 6> colours{36, 33, 35, 32, 31, 34};

class TextPlot {
public:
    TextPlot(const Plot& plot, const TextSize& size)
        : m_plot(plot), m_size(size), m_valueTicks(ticks(plot.values, std::max(2, size.rows / rowsPerTick))),
          m_labelWidth(widest(m_valueTicks)), m_columns(std::max(leastColumns, size.columns - m_labelWidth - 3)),
          m_canvas(m_columns, size.rows) {
        // Keyframes are drawn over all lines.
        for (std::size_t i = 0; i < plot.curves.size(); ++i)
            drawLines(plot.curves[i], static_cast<int>(i));
        for (std::size_t i = 0; i < plot.curves.size(); ++i)
            drawSigns(plot.curves[i], static_cast<int>(i));
    }

    QString text() const {
        QString text;
        for (int row = 0; row < m_size.rows; ++row)
            text += valueLabel(row) + canvasRow(row) + '\n';
        text += frameAxis();
        for (int i = 0; i < static_cast<int>(m_plot.curves.size()); ++i) {
            text += QString(m_labelWidth + 2, ' ') + coloured(sign(i), i) + ' ' +
                    m_plot.curves[static_cast<std::size_t>(i)].name + '\n';
        }
        return text;
    }

private:
    static int widest(const QVector<PlotTick>& ticks) {
        int width = 0;
        for (const PlotTick& tick : ticks)
            width = std::max(width, tick.label.size());
        return width;
    }

    static QChar sign(int curve) { return {signs[static_cast<std::size_t>(curve) % signs.size()]}; }

    /// In dots.
    double across(double frame) const {
        return m_plot.frames.part(frame) * (m_columns * BrailleCanvas::dotsAcross - 1);
    }
    double down(double value) const {
        return (1 - m_plot.values.part(value)) * (m_size.rows * BrailleCanvas::dotsDown - 1);
    }
    QPointF dot(QPointF point) const { return {across(point.x()), down(point.y())}; }

    void drawLines(const PlotCurve& curve, int index) {
        for (const PlotCurve::Handle& handle : curve.handles)
            m_canvas.addLine(dot(handle.keyframe), dot(handle.end), index, 3);
        for (int i = 1; i < curve.points.size(); ++i) {
            const QPointF from = curve.points[i - 1];
            const QPointF to = curve.points[i];
            const bool isExtrapolated = to.x() <= curve.keyed.first || from.x() >= curve.keyed.last;
            const bool isGap = isExtrapolated && qRound(across(to.x())) % 4 < 2;
            if (isDrawable(from.y()) && isDrawable(to.y()) && !isGap)
                m_canvas.addLine(dot(from), dot(to), index);
        }
    }

    void drawSigns(const PlotCurve& curve, int index) {
        for (const PlotCurve::Handle& handle : curve.handles) {
            if (handle.endIsShown)
                m_canvas.addSign(dot(handle.end), handleEnd, index);
        }
        for (const QPointF& keyframe : curve.keyframes) {
            if (isDrawable(keyframe.y()))
                m_canvas.addSign(dot(keyframe), sign(index), index);
        }
    }

    QString valueLabel(int row) const {
        const auto tick = std::find_if(m_valueTicks.begin(), m_valueTicks.end(), [&](const PlotTick& each) {
            return qRound(down(each.number)) / BrailleCanvas::dotsDown == row;
        });
        const bool isTick = tick != m_valueTicks.end();
        return (isTick ? tick->label : QString()).rightJustified(m_labelWidth) + ' ' + QChar(isTick ? 0x2524 : 0x2502);
    }

    QString canvasRow(int row) const {
        QString text;
        int last = m_columns;
        while (last > 0 && m_canvas.character(last - 1, row) == ' ')
            --last;
        for (int column = 0; column < last; ++column)
            text += coloured(m_canvas.character(column, row), m_canvas.colour(column, row));
        return text;
    }

    QString coloured(QChar character, int curve) const {
        if (!m_size.hasColours || curve == BrailleCanvas::none)
            return character;
        const PlotCurve& drawn = m_plot.curves[static_cast<std::size_t>(curve)];
        return message("\x1b[%1%2m%3\x1b[0m", drawn.isGhost ? "2;" : "",
                       colours[static_cast<std::size_t>(drawn.subject) % colours.size()], character);
    }

    QString frameAxis() const {
        QString axis(m_columns, QChar(0x2500));
        QString labels(m_labelWidth + 2 + m_columns, ' ');
        int free = 0;
        for (const PlotTick& tick : ticks(m_plot.frames, std::max(2, m_columns / columnsPerTick))) {
            const int column = qRound(across(tick.number)) / BrailleCanvas::dotsAcross;
            axis[std::min(std::max(column, 0), m_columns - 1)] = QChar(0x252C);
            const int start = std::max(0, m_labelWidth + 2 + column - tick.label.size() / 2);
            if (start < free || start + tick.label.size() > labels.size())
                continue;
            labels.replace(start, tick.label.size(), tick.label);
            free = start + tick.label.size() + 1;
        }
        while (labels.endsWith(' '))
            labels.chop(1);
        return QString(m_labelWidth + 1, ' ') + QChar(0x2514) + axis + '\n' + labels + '\n';
    }

    const Plot& m_plot;
    TextSize m_size;
    QVector<PlotTick> m_valueTicks;
    int m_labelWidth;
    int m_columns;
    BrailleCanvas m_canvas;
};

} // namespace

QByteArray plotText(const Plot& plot, const TextSize& size) {
    return TextPlot(plot, size).text().toUtf8();
}

} // namespace Tool
