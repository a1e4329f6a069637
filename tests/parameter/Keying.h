#pragma once

#include "prm/Parameter.h"

#include <initializer_list>
#include <utility>

/// The context of a time in a view.
inline Prm::Context at(double time, quint32 view = 0) {
    return {Prm::Time::fromDouble(time), Prm::View(view)};
}

/// The context of the static value of a view.
inline Prm::Context still(quint32 view = 0) {
    return {Prm::Time::INVALID, Prm::View(view)};
}

/// Sets a value at each time.
template <class T>
void key(Prm::Parameter<T>& parameter, std::initializer_list<std::pair<double, T>> keyframes, quint32 view = 0) {
    for (const auto& [time, value] : keyframes)
        parameter.vSetValue(value, at(time, view));
}
