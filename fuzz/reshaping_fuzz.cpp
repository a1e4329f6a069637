// Edits of whole curves: what each keeps, of random curves, at random times, and that undo gives all back.

#include "fuzz/Fuzz.h"
#include "tests/world/Arguments.h"
#include "tests/world/World.h"

#include <random>

using namespace Worlds;

namespace {

double oneOf(std::initializer_list<double> numbers, Choices& choose) {
    return numbers.begin()[choose.below(static_cast<int>(numbers.size()))];
}
double handle(Choices& choose) {
    return oneOf({0, 1, 1 / 3., 0.58, 0.25, 0.9, 2 / 3., 0.42, 0.1, 0.7}, choose);
}
double rise(Choices& choose) {
    return oneOf({0, 1, 0, 1, 0.5, -0.5, 1.7, 0.42, 3, -1}, choose);
}
double number(Choices& choose) {
    return oneOf({0, 1, 2.5, -3, 0.1, 40, -7.25, 4, 1, 12}, choose);
}

class Curve {
public:
    Curve(const std::uint8_t* data, std::size_t size) : m_choose(data, size) {
        std::seed_seq seed(data, data + size);
        m_random.seed(seed);
        for (int count = m_choose.below(12); count > 0; --count) {
            const Context at(Time::fromDouble(m_choose.below(200) / 4.), View(0));
            m_number.vSetValue(number(m_choose), at);
            const auto kind = static_cast<Interpolation>(oneOf({1, 2, 3, 3, 3}, m_choose));
            const double x1 = handle(m_choose), y1 = rise(m_choose), x2 = handle(m_choose), y2 = rise(m_choose);
            m_number.vSetInterpolationData({kind, x1, y1, x2, y2}, m_number.keyframeIndexForTime(at), View(0));
        }
        m_number.vSetExtrapolationBefore(static_cast<Extrapolation>(1 + m_choose.below(2)));
        m_number.vSetExtrapolationAfter(static_cast<Extrapolation>(1 + m_choose.below(2)));
        for (int i = 0; i < 300; ++i)
            m_times.append(Time::fromDouble(std::uniform_real_distribution<double>(-5, 55)(m_random)));
        for (unsigned int i = 0; i < m_number.keyframeCount(View(0)); ++i)
            m_times.append(m_number.keyframe(i, View(0)).time);
    }

    void run() {
        const Context at(Time::fromDouble(m_choose.below(240) / 4. - 5), View(0));
        const double error = oneOf({0, 0.001, 0.01, 0.1, 1, 5}, m_choose);
        const KeyframeSpan span = m_choose.yes() ? KeyframeSpan().between(at.time, at.time + 20.) : KeyframeSpan();
        const bool isLinear = m_choose.yes();
        ParameterInsertKeyframeEdit insert(m_number, at);
        ParameterInsertKeyframeEdit strict(m_number, at, ParameterInsertKeyframeEdit::Refuse);
        ParameterSimplifyEdit simplify(m_number, span, error,
                                       isLinear ? ParameterSimplifyEdit::Linear : ParameterSimplifyEdit::Bezier);
        expectKept("inserting", insert, 1e-11 * 120);
        expectKept("inserting one", strict, 1e-11 * 120);
        expectKept("simplifying", simplify, error * (1 + 1e-9));
        ParameterReverseEdit reverse(m_number, KeyframeSpan(), Time::fromInt(m_choose.below(100)));
        ParameterScaleValuesEdit mirror(m_number, span, ValueScaling::mirrored(number(m_choose)));
        for (ParameterReshapeEdit* const twice :
             {static_cast<ParameterReshapeEdit*>(&reverse), static_cast<ParameterReshapeEdit*>(&mirror)}) {
            const QByteArray before = stateOf(m_number);
            twice->doIt();
            twice->doIt();
            Fuzz::same("there and back", before, stateOf(m_number));
        }
    }

private:
    void expectKept(const char* what, ParameterReshapeEdit& edit, double most) {
        const QByteArray state = stateOf(m_number);
        QVector<double> before;
        for (const Time time : m_times)
            before.append(m_number.value(time));
        edit.doIt();
        for (int i = 0; i < m_times.size(); ++i) {
            const double now = m_number.value(m_times.at(i));
            if (!(std::abs(now - before.at(i)) <= most))
                Fuzz::fail(what, QStringLiteral("%1 at %2, was %3\n")
                                         .arg(exact(now), exact(m_times.at(i).toDouble()), exact(before.at(i))) +
                                     Fuzz::textOf(state + stateOf(m_number)));
        }
        edit.undoIt();
        Fuzz::same("done and undone", state, stateOf(m_number));
    }

    Choices m_choose;
    std::mt19937 m_random;
    Number m_number{QStringLiteral("number")};
    QVector<Time> m_times;
};

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Curve(data, size).run();
    return 0;
}
