// Answers about spans of times, beside the values at many times in them: of random curves of every type, in several
// views, with masters, after random edits.

#include "fuzz/AskedSpan.h"
#include "fuzz/Kinds.h"
#include "prm/RangeHash.h"
#include "prm/track/CanonicalTrack.h"
#include "tests/world/Acts.h"

#include <QHash>

using namespace Worlds;

namespace {

/// A host's class that holds each value for half a segment.
struct Halves : Number {
    using Number::Number;
    double interpolateValue(const BoundingKeyframes& around, const Context& context, Cache* cache) const override {
        return std::floor(Number::interpolateValue(around, context, cache));
    }
};

/// The braces around choices keep their order.
double oneOf(std::initializer_list<double> numbers, Choices& choose) {
    return numbers.begin()[choose.below(static_cast<int>(numbers.size()))];
}
double numberFrom(Choices& choose) {
    return oneOf({0, -0., 1, 1, 2.5, -3, 0.1, 40, -7.25, 1e6}, choose);
}
double handleFrom(Choices& choose) {
    return oneOf({0, 1, 1 / 3., 0.58, 0.25, 0.9, 2 / 3., 0.42, -0.5, 1.7, 3}, choose);
}
IType shapeFrom(Choices& choose) {
    const auto kind = static_cast<Interpolation>(oneOf({1, 1, 2, 2, 3, 3, 3, 4, 5}, choose));
    return IType{kind, handleFrom(choose), handleFrom(choose), handleFrom(choose), handleFrom(choose)};
}
double momentFrom(Choices& choose) {
    const double moment = (choose.below(80) - 30) / 4.;
    return choose.below(6) == 0 ? moment + 0.015625 * choose.below(64) : moment;
}
TimeSpan spanFrom(Choices& choose) {
    TimeSpan span{momentFrom(choose), momentFrom(choose), choose.yes(), choose.yes()};
    if (span.to < span.from)
        std::swap(span.from, span.to);
    const int endless = choose.below(12);
    span.from = endless < 2 ? -infinity : span.from;
    if (endless % 2 == 1 && endless < 4)
        span = {span.from, infinity, span.withFrom, false};
    return span;
}

class Answers {
public:
    Answers(const std::uint8_t* data, std::size_t size) : m_choose(data, size) {
        std::seed_seq seed(data, data + size);
        m_random.seed(seed);
        m_halves.setScriptName(QStringLiteral("halves"));
        m_all = m_world.parameters();
        m_all.push_back(&m_halves);
        for (P* const own : m_all) {
            m_root.addParameter(*own);
            fill(*own);
        }
        for (const int part : {3, 7})
            m_world.set(setCount)->addParameter(m_world.owner(part));
        m_root.addParameterSet(*m_world.set(0));
        if (m_choose.below(4) == 0)
            m_all[3]->bAddConstrainedParameter(m_all[4]);
        m_span = spanFrom(m_choose);
    }

    void run() {
        for (int i = 0; i < 8; ++i) {
            askOf(anyOne());
            remember();
            edit();
        }
    }

private:
    P& anyOne() { return *m_all[static_cast<std::size_t>(m_choose.below(static_cast<int>(m_all.size())))]; }

    QVariant valueFor(const P& own) {
        const double number = numberFrom(m_choose);
        return dynamic_cast<const Parameter<QString>*>(&own) ? QString::number(number) : fitting(own, number);
    }

    void fill(P& own) {
        own.setSplittable(m_choose.below(4) > 0);
        for (int left = m_choose.below(4); left > 0; --left) {
            const View view(static_cast<quint32>(m_choose.below(4)));
            for (int keys = m_choose.below(6); keys > 0; --keys) {
                const Context at(Time::fromDouble(momentFrom(m_choose)), view);
                own.setVariantValue(valueFor(own), at, std::nothrow);
            }
            for (unsigned int i = 0; i < own.keyframeCount(view); ++i)
                own.vSetInterpolationData(shapeFrom(m_choose), i, view);
        }
        own.vSetExtrapolationBefore(static_cast<Extrapolation>(1 + m_choose.below(4)));
        own.vSetExtrapolationAfter(static_cast<Extrapolation>(1 + m_choose.below(4)));
        const auto mode = static_cast<Mode>(std::max(0, m_choose.below(8) - 4));
        asTyped(own, [&](auto& typed) { return typed.setViewInterpolation({mode}), true; });
    }

    void edit() {
        Command none;
        P& own = anyOne();
        P& other = anyOne();
        const Act& act = chosen(edits, m_choose);
        try {
            act.run(none, own, other, A(m_choose));
        } catch (const std::exception&) {
            // A line or a value that does not fit.
        }
    }

    void askOf(const P& own) {
        const TimeSpan span = spanFrom(m_choose);
        for (const View view : {View(0), View(1), View(2), View(5)})
            asTyped(own, [&](const auto& typed) { return Asked(typed, view, m_random).check(span), true; });
    }

    /// Equal hashes are of equal values: of one parameter at a time and in the span, and of all that a set holds.
    void remember() {
        for (const View view : {View(0), View(1), View(2)}) {
            QByteArray ofAll;
            m_root.forEachBasicParameter([&](const BasicParameter* member) {
                // Its parts are visited.
                if (!dynamic_cast<const CompoundParameter*>(member))
                    ofAll += remember(*member, view);
            });
            same(hashOf([&](Bsc::Hash& hash) { hashRange(hash, m_root, view, m_span); }), ofAll);
        }
    }
    QByteArray remember(const BasicParameter& member, View view) {
        QByteArray values;
        const double from = std::max(m_span.from, -20.);
        const double to = std::min(m_span.to, 40.);
        for (int i = 0; i <= 32; ++i) {
            const Context at(Time::fromDouble(from + (to - from) * i / 32), view);
            const QByteArray value = textOf(member, at);
            same("at " + hashOf([&](Bsc::Hash& hash) { hashAt(hash, member, at); }), value);
            if (m_span.contains(at.time))
                values += value + '\n';
        }
        same(hashOf([&](Bsc::Hash& hash) { hashRange(hash, member, view, m_span); }), values);
        return values;
    }
    /// A constant value has one hash, at a time and in spans.
    void same(const QString& hash, const QByteArray& values) {
        Fuzz::same("equal hashes", m_known.value(hash, values), values);
        m_known[hash] = values;
    }
    static QByteArray textOf(const BasicParameter& member, const Context& at) {
        QString text;
        const auto* const animated = dynamic_cast<const P*>(&member);
        const auto write = [&](const auto& typed) {
            using T = std::decay_t<decltype(typed.value(at))>;
            return ValueType<T>::write(text, detail::canonical(typed.value(at))), true;
        };
        if (!animated || !asTyped(*animated, write))
            text = exact(member.variantValue(at, std::nothrow));
        return text.toUtf8();
    }

    Choices m_choose;
    std::mt19937 m_random;
    World m_world{Choices(nullptr, 0), {10, 5, false}};
    Halves m_halves;
    std::vector<P*> m_all;
    ParameterSet m_root;
    TimeSpan m_span;
    QHash<QString, QByteArray> m_known;
};

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    HOLD(kindsAreRegistered);
    Answers(data, size).run();
    return 0;
}
