#include "prm/track/EasingPieces.h"

#include "prm/track/BezierEasing.h"
#include "prm/track/CubicCoordinate.h"
#include "prm/track/CurveShapes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace Prm::detail {

namespace {

class Cutting {
public:
    explicit Cutting(const IType& shape)
        : m_x{held(shape.x1), held(shape.x2)}, m_y{shape.y1, shape.y2},
          m_height(std::max({1.0, std::abs(shape.y1), std::abs(shape.y2)})) {}

    /// In its middle, the only place within where it can be.
    bool isVertical() const {
        constexpr double least = 0x1p-8;
        return 1.0 - m_x.first + m_x.second < least;
    }

    std::vector<EasingPiece> at(double x) {
        const double s = easingParameter(m_x.first, m_x.second, x);
        addHalf(0.0, s);
        const std::size_t halves = m_pieces.size();
        addHalf(s, 1.0);
        m_pieces[halves - 1].x = x;
        m_pieces.back().x = m_pieces.back().y = 1.0;
        return keepsCurve() ? std::move(m_pieces) : std::vector<EasingPiece>();
    }

private:
    static constexpr double isNothing = 0x1p-44;

    void addHalf(double from, double to) {
        constexpr double mostHeight = 256.0;
        const double rise = std::abs(m_y.at(to) - m_y.at(from));
        const double reach = m_y.reach(from, to);
        double start = from;
        if (reach > isNothing * m_height && reach > mostHeight * rise) {
            for (const double turn : turnsBetween(from, to)) {
                addPiece(start, turn);
                start = turn;
            }
        }
        addPiece(start, to);
    }

    /// Rounded shape numbers show as large errors where the curve is nearly vertical, so it is compared at places that
    /// are dense there.
    bool keepsCurve() const {
        constexpr double most = 5e-13;
        constexpr int places = 64;
        std::size_t number = 0;
        EasingPiece start{0.0, 0.0, Interpolation::Linear};
        for (int i = 1; i < places; ++i) {
            const double s = static_cast<double>(i) / places;
            const double x = m_x.at(s);
            for (; x > m_pieces[number].x; ++number)
                start = m_pieces[number];
            const EasingPiece& piece = m_pieces[number];
            const double y =
                between(start.y, piece.y, segmentProgress(piece.shape, (x - start.x) / (piece.x - start.x)));
            if (!(std::abs(y - m_y.at(s)) <= most * m_height))
                return false;
        }
        return true;
    }

    /// The x of a shape lie in [0,1]. Those of a piece do where time does not change from fast to slow or from slow to
    /// fast.
    void addPiece(double from, double to) {
        constexpr double rounding = 0x1p-44;
        const auto x = m_x.within(from, to);
        const double inflection = (m_x.second - 2.0 * m_x.first) / (3.0 * (m_x.second - m_x.first) - 1.0);
        const bool fits = x[0] >= -rounding && x[0] <= 1.0 + rounding && x[1] >= -rounding && x[1] <= 1.0 + rounding;
        const bool isCut = !fits && inflection > from && inflection < to;
        if (isCut)
            add(from, inflection);
        add(isCut ? inflection : from, to);
    }

    void add(double from, double to) {
        EasingPiece piece{m_x.at(to), m_y.at(to), Interpolation::Linear};
        if (m_y.reach(from, to) > isNothing * m_height) {
            const auto x = m_x.within(from, to);
            const auto y = m_y.within(from, to);
            piece.shape = {Interpolation::Bezier, held(x[0]), y[0], held(x[1]), y[1]};
        }
        m_pieces.push_back(piece);
    }

    /// The roots of a s^2 + 2 b s + c, a third of the derivative of y; those that matter, in ascending order.
    std::vector<double> turnsBetween(double from, double to) const {
        const double a = 3.0 * (m_y.first - m_y.second) + 1.0;
        const double b = m_y.second - 2.0 * m_y.first;
        const double c = m_y.first;
        const double q = -(b + std::copysign(std::sqrt(std::max(0.0, b * b - a * c)), b));
        std::vector<double> turns;
        for (const double turn : {q / a, c / q}) {
            const auto matters = [&](double end) { return m_y.reach(std::min(turn, end), std::max(turn, end)); };
            if (turn > from && turn < to && std::min(matters(from), matters(to)) > isNothing * m_height)
                turns.push_back(turn);
        }
        // Two in one place are an inflection.
        if (turns.size() == 2 && std::abs(turns[0] - turns[1]) < 0x1p-40)
            turns.clear();
        std::sort(turns.begin(), turns.end());
        return turns;
    }

    const CubicCoordinate m_x;
    const CubicCoordinate m_y;
    const double m_height;
    std::vector<EasingPiece> m_pieces;
};

} // namespace

std::vector<EasingPiece> cutEasing(const IType& shape, double x) {
    Cutting cutting(shape);
    return cutting.isVertical() ? std::vector<EasingPiece>() : cutting.at(x);
}

} // namespace Prm::detail
