#pragma once

#include <QChar>
#include <QPointF>
#include <QString>

#include <vector>

namespace Tool {

/// Characters to draw on, each with two by four dots, a colour and perhaps a sign that hides its dots. Coordinates
/// are dots, from the upper left corner; what is drawn outside is not to be seen.
class BrailleCanvas {
public:
    static constexpr int dotsAcross = 2;
    static constexpr int dotsDown = 4;
    /// The colour of a character on which nothing has been drawn.
    static constexpr int none = -1;

    BrailleCanvas(int columns, int rows);

    /// Every `step`-th dot of a straight line.
    void addLine(QPointF from, QPointF to, int colour, int step = 1);
    void addSign(QPointF place, QChar sign, int colour);

    QChar character(int column, int row) const;
    int colour(int column, int row) const;

private:
    struct Cell {
        quint8 dots = 0;
        QChar sign;
        int colour = none;
    };

    std::size_t indexOf(int column, int row) const;
    Cell* cellAt(int x, int y);
    const Cell& cell(int column, int row) const;

    int m_columns;
    int m_rows;
    std::vector<Cell> m_cells;
};

} // namespace Tool
