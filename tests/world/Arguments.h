#pragma once

// What acts are made with.

#include "tests/support/Library.h"

#include <cstdint>

namespace Worlds {

using namespace Prm;

/// An input taken as choices, 0 after its end.
class Choices {
public:
    Choices(const std::uint8_t* data, std::size_t size) : m_next(data), m_end(data + size) {}

    bool atEnd() const { return m_next == m_end; }
    int below(int count) { return m_next == m_end ? 0 : *m_next++ % count; }
    bool yes() { return below(2) != 0; }

private:
    const std::uint8_t* m_next;
    const std::uint8_t* m_end;
};

inline View viewFrom(Choices& choose) {
    static const quint32 views[] = {0, 0, 0, 1, 1, 2, 5, 2147483646, ~0u};
    return {views[choose.below(9)]};
}

inline Time timeFrom(Choices& choose) {
    const int number = choose.below(40);
    return number > 36 ? Time(Time::INVALID) : Time::fromDouble((number - 8) / 4.);
}

inline Context contextFrom(Choices& choose) {
    const View view = viewFrom(choose);
    return {timeFrom(choose), view};
}

/// Of three views, of which the second is current.
inline const IViewsProvider* threeViews() {
    static Views views;
    views.setViewNames({{"left", "l"}, {"middle", "m"}, {"right", "r"}});
    views.setCurrentView(View(1));
    return &views;
}

/// Drawn at once and in this order: compilers differ in that of a call's arguments.
struct Arguments {
    explicit Arguments(Choices& choose)
        : view(viewFrom(choose)), at(timeFrom(choose), view), to(contextFrom(choose)), value(choose.below(12) / 2.),
          number(choose.below(9)), yes(choose.yes()), kind(1 + choose.below(4)) {}
    Arguments(const Context& from, const Context& towards, double newValue, int newNumber, bool isYes, int newKind)
        : view(from.view), at(from), to(towards), value(newValue), number(newNumber), yes(isYes), kind(newKind) {}

    IType shape() const { return yes ? IType(interpolation()) : IType(interpolation(), 0.25, number, 0.5, 1); }
    Interpolation interpolation() const { return static_cast<Interpolation>(kind); }
    Extrapolation extrapolation() const { return static_cast<Extrapolation>(std::min(kind, 3)); }
    unsigned int index() const { return static_cast<unsigned int>(number % 4); }
    Frame frame() const { return Frame::fromInt(number); }
    AnimationState views() const { return {AnimationFlags(yes ? 4 : 3), kind > 3 ? nullptr : threeViews()}; }
    /// Early keyframes may move away from late ones.
    Time moved(Time time) const { return time + (kind > 2 || time > Time::fromInt(2) ? number / 4. : -number * 1.); }
    Retiming retiming() const {
        const Retiming whole = yes ? Retiming::shifted(number - 4) : Retiming::scaled(number / 4.);
        return kind > 2 ? whole : whole.between(at.time, to.time);
    }

    KeyframeSpan span() const {
        const KeyframeSpan all = yes ? KeyframeSpan() : KeyframeSpan().in(view);
        return kind > 2 ? all : all.between(at.time, to.time);
    }
    const Easing& easing() const {
        const auto& all = Easing::presets();
        return all[all.size() - 1 - static_cast<std::size_t>(number)];
    }

    /// At a keyframe that there is, for most choices below 16.
    void aim(const ParameterWithoutType& own, int choice) {
        const QVector<Context> keyframes = own.allKeyframes();
        if (choice < 6 || keyframes.isEmpty())
            return;
        at = keyframes.at(choice % keyframes.size());
        view = at.view;
    }

    View view;
    Context at;
    Context to;
    double value;
    int number;
    bool yes;
    int kind;
};

} // namespace Worlds
