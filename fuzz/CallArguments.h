#pragma once

// What the fuzzed calls are made with.

#include "fuzz/Fuzz.h"
#include "prm/Context.h"
#include "prm/Interpolation.h"
#include "prm/ParameterEdits.h"

#include <algorithm>

namespace Fuzz {

using namespace Prm;

inline View viewFrom(Choices& choose) {
    static const quint32 views[] = {0, 0, 0, 1, 1, 2, 5, 2147483646, ~0u};
    return {views[choose.below(9)]};
}

inline Time timeFrom(Choices& choose) {
    const int number = choose.below(40);
    return number > 36 ? Time(Time::INVALID) : Time::fromDouble((number - 8) / 4.);
}

/// Drawn at once and in this order: compilers differ in that of a call's arguments.
struct Arguments {
    explicit Arguments(Choices& choose)
        : view(viewFrom(choose)), at(timeFrom(choose), view), to(timeFrom(choose), viewFrom(choose)),
          value(choose.below(12) / 2.), number(choose.below(9)), yes(choose.yes()), kind(1 + choose.below(4)) {}

    IType shape() const { return yes ? IType(interpolation()) : IType(interpolation(), 0.25, number, 0.5, 1); }
    Interpolation interpolation() const { return static_cast<Interpolation>(kind); }
    Extrapolation extrapolation() const { return static_cast<Extrapolation>(std::min(kind, 3)); }
    unsigned int index() const { return static_cast<unsigned int>(number % 4); }
    Retiming retiming() const {
        const Retiming whole = yes ? Retiming::shifted(number - 4) : Retiming::scaled(number / 4.);
        return kind > 2 ? whole : whole.between(at.time, to.time);
    }

    View view;
    Context at;
    Context to;
    double value;
    int number;
    bool yes;
    int kind;
};

} // namespace Fuzz
