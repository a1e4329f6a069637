#include "prm/track/HandleCurve.h"

#include "prm/track/BezierEasing.h"
#include "prm/track/CubicCoordinate.h"
#include "prm/track/CurveShapes.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Prm::detail {

namespace {

/// Cuts a curve into pieces that shapes say. A piece of a curve whose time runs steeply can have control points outside
/// of its time; its halves are less steep.
class Cutting {
public:
    Cutting(const CubicCoordinate& x, const CubicCoordinate& y, double turn) : m_x(x), m_y(y), m_turn(turn) {}

    struct Piece {
        double from;
        IType shape;
    };
    std::vector<Piece> take() {
        add(0.0, m_turn, mostHalvings);
        add(m_turn, 1.0, mostHalvings);
        return std::move(m_pieces);
    }

private:
    static constexpr int mostHalvings = 12;

    static double part(const CubicCoordinate& cubic, double from, double to, double near, double far) {
        return (cubic.at(near, near, far) - cubic.at(from)) / (cubic.at(to) - cubic.at(from));
    }
    void add(double from, double to, int halvings) {
        constexpr double rounding = 0x1p-40;
        const double x1 = part(m_x, from, to, from, to);
        const double x2 = part(m_x, from, to, to, from);
        if (halvings > 0 && (std::min(x1, x2) < -rounding || std::max(x1, x2) > 1.0 + rounding)) {
            const double middle = between(from, to, 0.5);
            add(from, middle, halvings - 1);
            add(middle, to, halvings - 1);
            return;
        }
        const double y1 = from == m_turn ? 0.0 : part(m_y, from, to, from, to);
        const double y2 = to == m_turn ? 1.0 : part(m_y, from, to, to, from);
        m_pieces.push_back({from, {Interpolation::Bezier, held(x1), y1, held(x2), y2}});
    }

    const CubicCoordinate m_x;
    const CubicCoordinate m_y;
    const double m_turn;
    std::vector<Piece> m_pieces;
};

} // namespace

HandleCurve::HandleCurve(End start, End end, const IType& shape)
    : m_start(start), m_end(end), m_shape(shape),
      m_hasHandles(!holds(shape) && !isCustom(shape) && end.time > start.time) {
    if (!m_hasHandles)
        return;
    const bool isLine = shape.interpolation == Interpolation::Linear || shape == IType(Interpolation::Bezier);
    if (isLine)
        m_shape = {Interpolation::Bezier, 1.0 / 3.0, 1.0 / 3.0, 2.0 / 3.0, 2.0 / 3.0};
}

double HandleCurve::valueAt(double part) const {
    return isBetweenEqualValues() ? m_start.value : mix(m_start.value, m_end.value, part);
}

std::optional<HandlePoint> HandleCurve::out() const {
    if (!m_hasHandles)
        return {};
    return HandlePoint{mix(m_start.time, m_end.time, held(m_shape.x1)), valueAt(m_shape.y1) + m_outHeight};
}

std::optional<HandlePoint> HandleCurve::in() const {
    if (!m_hasHandles)
        return {};
    return HandlePoint{mix(m_start.time, m_end.time, held(m_shape.x2)), valueAt(m_shape.y2) + m_inHeight};
}

void HandleCurve::setOutPart(double x, double y) {
    m_isChanged = true;
    m_shape.x1 = held(x);
    m_shape.y1 = y;
}

void HandleCurve::setInPart(double x, double y) {
    m_isChanged = true;
    m_shape.x2 = held(x);
    m_shape.y2 = y;
}

void HandleCurve::setOut(HandlePoint point) {
    const double height = point.value - m_start.value;
    setOutPart((point.time - m_start.time) / duration(), isBetweenEqualValues() ? 0.0 : height / change());
    m_outHeight = isBetweenEqualValues() ? height : 0.0;
}

void HandleCurve::setIn(HandlePoint point) {
    const double height = point.value - m_end.value;
    setInPart((point.time - m_start.time) / duration(), isBetweenEqualValues() ? 1.0 : 1.0 + height / change());
    m_inHeight = isBetweenEqualValues() ? height : 0.0;
}

bool HandleCurve::isShape() const {
    return m_outHeight == 0.0 && m_inHeight == 0.0;
}

std::vector<HandleCurve::Piece> HandleCurve::pieces() const {
    const CubicCoordinate x{held(m_shape.x1), held(m_shape.x2), 1.0};
    const CubicCoordinate y{m_outHeight, m_inHeight, 0.0};
    std::vector<Piece> pieces;
    for (const Cutting::Piece& piece : Cutting(x, y, m_outHeight != 0.0 ? 1.0 / 3.0 : 2.0 / 3.0).take()) {
        const double time = mix(m_start.time, m_end.time, x.at(piece.from));
        pieces.push_back({time, m_start.value + y.at(piece.from), piece.shape});
    }
    return pieces;
}

} // namespace Prm::detail
