#include "prm/Extent.h"

#include "prm/BasicParameter.h"

#include <algorithm>
#include <utility>

namespace Prm {

namespace {

bool covers(const detail::Reach& reach, const Context& context) {
    return std::any_of(reach.begin(), reach.end(), [&](const detail::ViewTimes& one) {
        return one.views.contains(context.view) && one.times.contains(context.time);
    });
}

void addIn(View view, const detail::Reach& reach, TimeSpans& times) {
    for (const detail::ViewTimes& one : reach) {
        if (one.views.contains(view))
            times |= one.times;
    }
}

/// Whether that makes a difference.
bool unite(detail::Reach& reach, const detail::ViewTimes& added) {
    const auto isAll = [](const detail::ViewTimes& one) {
        return one.views.isAll() && one.times == TimeSpans(TimeSpan::all());
    };
    if (reach.size() == 1 && isAll(*reach.begin()))
        return false;
    if (isAll(added)) {
        reach = detail::everywhere();
        return true;
    }
    const auto same =
        std::find_if(reach.begin(), reach.end(), [&](const auto& one) { return one.views == added.views; });
    if (same == reach.end()) {
        reach.append(added);
        return true;
    }
    TimeSpans united = same->times;
    united |= added.times;
    if (united == same->times)
        return false;
    const auto place = static_cast<int>(same - reach.begin());
    reach.replace(place, place + 1, {same->views, std::move(united)});
    return true;
}

} // namespace

int Extent::placeOf(const BasicParameter* parameter) const {
    if (!m_places.isEmpty())
        return m_places.value(parameter, -1);
    const auto found = std::find_if(m_parameters.begin(), m_parameters.end(),
                                    [=](const Reached& one) { return one.parameter == parameter; });
    return found == m_parameters.end() ? -1 : static_cast<int>(found - m_parameters.begin());
}

const detail::Reach* Extent::reachOf(const BasicParameter* parameter) const {
    const int place = placeOf(parameter);
    return place < 0 ? nullptr : &m_parameters[static_cast<std::size_t>(place)].reach;
}

/// Returns whether the extent has become larger.
bool Extent::add(const BasicParameter* parameter, detail::Reach&& reach) {
    constexpr std::size_t few = 8;
    if (reach.isEmpty())
        return false;
    const int place = placeOf(parameter);
    if (place < 0) {
        m_parameters.emplace_back(parameter, std::move(reach));
        if (m_parameters.size() > few) {
            for (auto i = static_cast<std::size_t>(m_places.size()); i < m_parameters.size(); ++i)
                m_places.insert(m_parameters[i].parameter, static_cast<int>(i));
        }
        return true;
    }
    bool isLarger = false;
    for (const detail::ViewTimes& one : reach)
        isLarger = unite(m_parameters[static_cast<std::size_t>(place)].reach, one) || isLarger;
    return isLarger;
}

Extent& Extent::operator|=(const Extent& other) {
    if (this == &other)
        return *this;
    for (const Reached& one : other.m_parameters)
        add(one.parameter, detail::Reach(one.reach));
    m_came += other.m_came;
    m_went += other.m_went;
    m_renamed += other.m_renamed;
    return *this;
}

bool Extent::touches(const Context& context) const {
    return std::any_of(m_parameters.begin(), m_parameters.end(),
                       [&](const Reached& one) { return covers(one.reach, context); });
}

bool Extent::touches(const BasicParameter* parameter, const Context& context) const {
    const detail::Reach* const reach = reachOf(parameter);
    return reach && covers(*reach, context);
}

TimeSpans Extent::in(View view) const {
    TimeSpans times;
    for (const Reached& one : m_parameters)
        addIn(view, one.reach, times);
    return times;
}

TimeSpans Extent::in(const BasicParameter* parameter, View view) const {
    TimeSpans times;
    if (const detail::Reach* const reach = reachOf(parameter))
        addIn(view, *reach, times);
    return times;
}

QVector<const BasicParameter*> Extent::parameters() const {
    QVector<const BasicParameter*> all;
    all.reserve(static_cast<int>(m_parameters.size()));
    for (const Reached& one : m_parameters)
        all.append(one.parameter);
    return all;
}

} // namespace Prm
