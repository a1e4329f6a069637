#include "tool/edit/CurveError.h"

#include "prm/Answers.h"
#include "prm/Extent.h"
#include "prm/NumericParameter.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace Tool {

namespace {

/// The times in spans at which a curve bends, and those just before them, where steps begin.
template <class T>
QVector<Prm::Time> decisiveTimes(const Prm::Parameter<T>& curve, const Prm::View& view, const Prm::TimeSpans& spans,
                                 double tolerance) {
    QVector<Prm::Time> times;
    for (const Prm::TimeSpan& span : spans) {
        for (const Prm::CurvePoint<T>& point : Prm::polyline(curve, view, span, tolerance)) {
            times.append(Prm::Time::fromDouble(std::nextafter(point.first.toDouble(), -HUGE_VAL)));
            times.append(point.first);
        }
    }
    return times;
}

template <class T> double difference(const T& a, const T& b) {
    double most = 0.0;
    for (int i = 0; i < Prm::ValueType<T>::componentCount; ++i)
        most = std::max(most, std::abs(Prm::ValueType<T>::component(a, i) - Prm::ValueType<T>::component(b, i)));
    return most;
}

/// Less than 0 if they are not of this type.
template <class T>
double greatest(const Prm::ParameterWithoutType& a, const Prm::ParameterWithoutType& b, const Prm::View& view,
                double tolerance) {
    const auto* const first = dynamic_cast<const Prm::Parameter<T>*>(&a);
    const auto* const second = dynamic_cast<const Prm::Parameter<T>*>(&b);
    if (!first || !second)
        return -1.0;
    const Prm::TimeSpans spans = Prm::differenceOf(a, b).in(view);
    const QVector<Prm::Time> ofFirst = decisiveTimes(*first, view, spans, tolerance);
    const QVector<Prm::Time> ofSecond = decisiveTimes(*second, view, spans, tolerance);
    QVector<Prm::Time> times(ofFirst.size() + ofSecond.size());
    std::merge(ofFirst.begin(), ofFirst.end(), ofSecond.begin(), ofSecond.end(), times.begin());
    QVector<T> before(times.size());
    QVector<T> after(times.size());
    first->sampleValues(times.constData(), times.size(), view, before.data());
    second->sampleValues(times.constData(), times.size(), view, after.data());
    return std::inner_product(
        before.begin(), before.end(), after.begin(), 0.0, [](double x, double y) { return std::max(x, y); },
        difference<T>);
}

} // namespace

double greatestDifference(const Prm::ParameterWithoutType& a, const Prm::ParameterWithoutType& b, const Prm::View& view,
                          double tolerance) {
    return std::max({0.0, greatest<double>(a, b, view, tolerance), greatest<QPointF>(a, b, view, tolerance)});
}

} // namespace Tool
