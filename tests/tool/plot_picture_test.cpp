// What is left out of a picture is not to be seen: each point of a curve is within half a pixel of what is drawn.

#include "tool/PlotPicture.h"

#include <QRegularExpression>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>

using namespace Tool;

namespace {

constexpr int width = 960;
constexpr int height = 540;

/// The numbers of all matches of a pattern.
std::vector<double> numbersIn(const QString& text, const char* pattern) {
    std::vector<double> numbers;
    for (auto matches = QRegularExpression(pattern).globalMatch(text); matches.hasNext();)
        numbers.push_back(matches.next().captured(1).toDouble());
    return numbers;
}

/// The corners of the line, in pixels.
std::vector<QPointF> drawnLine(const QString& svg) {
    const QString path = QRegularExpression("<path d=\"M([^\"]*)\"").match(svg).captured(1);
    const std::vector<double> numbers = numbersIn(path, "(-?\\d+)");
    std::vector<QPointF> corners;
    QPointF at;
    for (std::size_t i = 0; i + 1 < numbers.size(); i += 2)
        corners.push_back(at += QPointF(numbers[i], numbers[i + 1]) * 0.4);
    return corners;
}

double distance(QPointF point, QPointF a, QPointF b) {
    const QPointF way = b - a;
    const double length = QPointF::dotProduct(way, way);
    const double part = length > 0 ? QPointF::dotProduct(point - a, way) / length : 0;
    const QPointF off = point - a - way * std::min(1.0, std::max(0.0, part));
    return std::hypot(off.x(), off.y());
}

struct Row {
    const char* name;
    int points;
    double (*value)(double x);
    std::size_t mostCorners;
};

class PlotPicture : public testing::TestWithParam<Row> {};

TEST_P(PlotPicture, LinesComeWithinHalfAPixel) {
    const Row row = GetParam();
    Plot plot;
    plot.frames = {0, 1};
    plot.values = {-1, 1};
    plot.curves.resize(1);
    plot.curves[0].keyed = plot.frames;
    for (int i = 0; i <= row.points; ++i)
        plot.curves[0].points.append({double(i) / row.points, row.value(double(i) / row.points)});
    const QString svg = QString::fromUtf8(plotPicture(plot, width, height));
    const std::vector<QPointF> line = drawnLine(svg);
    EXPECT_LE(line.size(), row.mostCorners);
    // The axes are the first two lines of their group.
    const QString axes = svg.mid(svg.indexOf("<g stroke=\"#333333\">"));
    const double left = numbersIn(axes, "x1=\"([^\"]*)\"").at(0);
    const double right = numbersIn(axes, "x2=\"([^\"]*)\"").at(0);
    const double bottom = numbersIn(axes, "y1=\"([^\"]*)\"").at(0);
    const double top = numbersIn(axes, "y1=\"([^\"]*)\"").at(1);
    double worst = 0;
    for (const QPointF& point : plot.curves[0].points) {
        const QPointF place(left + point.x() * (right - left), bottom - (point.y() + 1) / 2 * (bottom - top));
        double nearest = width;
        for (std::size_t i = 1; i < line.size(); ++i)
            nearest = std::min(nearest, distance(place, line[i - 1], line[i]));
        worst = std::max(worst, nearest);
    }
    EXPECT_LT(worst, 0.5);
}

INSTANTIATE_TEST_SUITE_P(Curves, PlotPicture,
                         testing::Values(Row{"Straight", 2000, [](double x) { return x - 0.5; }, 2},
                                         Row{"Wave", 5000, [](double x) { return std::sin(20 * x); }, 250},
                                         Row{"Steps", 3000,
                                             [](double x) { return std::fmod(std::floor(x * 40), 2) - 0.5; }, 120},
                                         Row{"Noise", 3000, [](double x) { return std::sin(1e7 * x * x); }, 4000}),
                         [](const auto& row) { return std::string(row.param.name); });

} // namespace
