#include "tool/BrailleCanvas.h"

#include <algorithm>
#include <cmath>

namespace Tool {

namespace {

/// The bits of the dots in a braille character, by column and row.
constexpr quint8 dotBits[BrailleCanvas::dotsAcross][BrailleCanvas::dotsDown] = {{0x01, 0x02, 0x04, 0x40},
                                                                                {0x08, 0x10, 0x20, 0x80}};
constexpr ushort emptyBraille = 0x2800;

} // namespace

BrailleCanvas::BrailleCanvas(int columns, int rows)
    : m_columns(columns), m_rows(rows), m_cells(static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows)) {}

void BrailleCanvas::addLine(QPointF from, QPointF to, int colour, int step) {
    const QPointF way = to - from;
    const int count = static_cast<int>(std::ceil(std::max(std::abs(way.x()), std::abs(way.y()))));
    for (int i = 0; i <= count; i += step) {
        const QPointF place = count == 0 ? from : from + way * i / count;
        const int x = qRound(place.x());
        const int y = qRound(place.y());
        Cell* const cell = cellAt(x, y);
        if (!cell)
            continue;
        cell->dots |= dotBits[x % dotsAcross][y % dotsDown];
        cell->colour = colour;
    }
}

void BrailleCanvas::addSign(QPointF place, QChar sign, int colour) {
    if (Cell* const cell = cellAt(qRound(place.x()), qRound(place.y()))) {
        cell->sign = sign;
        cell->colour = colour;
    }
}

QChar BrailleCanvas::character(int column, int row) const {
    const Cell& cell = this->cell(column, row);
    if (!cell.sign.isNull())
        return cell.sign;
    return cell.dots == 0 ? ' ' : QChar(static_cast<ushort>(emptyBraille + cell.dots));
}

int BrailleCanvas::colour(int column, int row) const {
    return cell(column, row).colour;
}

std::size_t BrailleCanvas::indexOf(int column, int row) const {
    return static_cast<std::size_t>(row) * static_cast<std::size_t>(m_columns) + static_cast<std::size_t>(column);
}

BrailleCanvas::Cell* BrailleCanvas::cellAt(int x, int y) {
    if (x < 0 || y < 0 || x >= m_columns * dotsAcross || y >= m_rows * dotsDown)
        return nullptr;
    return &m_cells[indexOf(x / dotsAcross, y / dotsDown)];
}

const BrailleCanvas::Cell& BrailleCanvas::cell(int column, int row) const {
    return m_cells[indexOf(column, row)];
}

} // namespace Tool
