// Answers about spans of times, beside the values at many times in them: of random curves of every type, in several
// views, with masters, after random edits.

#include "fuzz/AskedSpan.h"
#include "fuzz/Kinds.h"
#include "prm/RangeHash.h"
#include "prm/track/CanonicalTrack.h"
#include "tests/world/Acts.h"

#include <QHash>

#include <limits>
#include <random>

using namespace Worlds;

namespace {

/// A host's class that holds each value for half a segment.
struct Halves : Number {
    using Number::Number;
    double interpolateValue(const BoundingKeyframes& around, const Context& context, Cache* cache) const override {
        return std::floor(Number::interpolateValue(around, context, cache));
    }
};

double numberFrom(Choices& choose) {
    static const double numbers[] = {0, -0., 1, 1, 2.5, -3, 0.1, 40, -7.25, 1e6};
    return numbers[choose.below(10)];
}

IType shapeFrom(Choices& choose) {
    static const double handles[] = {0, 1, 1 / 3., 0.58, 0.25, 0.9, 2 / 3., 0.42, -0.5, 1.7, 3};
    const int kind = choose.below(8);
    const double x1 = handles[choose.below(9)];
    const double y1 = handles[choose.below(11)];
    const double x2 = handles[choose.below(9)];
    const double y2 = handles[choose.below(11)];
    return {static_cast<Interpolation>(kind < 2   ? 1
                                       : kind < 4 ? 2
                                       : kind < 7 ? 3
                                                  : 4 + choose.below(2)),
            x1, y1, x2, y2};
}

double momentFrom(Choices& choose) {
    return (choose.below(80) - 30) / 4. + (choose.below(6) == 0 ? 0.015625 * choose.below(64) : 0);
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

template <class T> T valueFrom(Choices& choose) {
    const double number = numberFrom(choose);
    if constexpr (std::is_same_v<T, QPointF>)
        return {number, numberFrom(choose)};
    else if constexpr (std::is_same_v<T, QString>)
        return QString::number(number);
    else
        return static_cast<T>(number);
}

QString hashOf(const BasicParameter& parameter, View view, const TimeSpan& span) {
    Bsc::Hash hash;
    hashRange(hash, parameter, view, span);
    return hash.result().toString();
}

QString valueHash(const BasicParameter& parameter, const Context& context) {
    Bsc::Hash hash;
    hashAt(hash, parameter, context);
    return hash.result().toString();
}

template <class Kind, class T> class Play {
public:
    Play(Choices& choose, std::mt19937& random) : m_choose(choose), m_random(random) {
        for (Kind& one : m_all) {
            fill(one);
            m_choose.yes() ? act(one) : void();
        }
        if (m_choose.below(4) == 0)
            m_all[0].bAddConstrainedParameter(&m_all[1]);
    }

    void run() {
        m_span = spanFrom(m_choose);
        for (Kind& one : m_all)
            for (const quint32 view : {0u, 1u, 2u, 5u})
                Asked<T>(one, View(view), std::is_same_v<Kind, Halves>, m_random).checkSpan(m_span);
        remember();
        for (int i = 0; i < 6; ++i) {
            act(m_all[m_random() % 2]);
            remember();
        }
        if (!std::is_same_v<Kind, Halves>)
            changeNothing(m_all[0]);
    }

private:
    void fill(Kind& one) {
        one.setScriptName(QStringLiteral("any"));
        for (int left = m_choose.below(4); left > 0; --left) {
            const View view(static_cast<quint32>(m_choose.below(4)));
            for (int keys = m_choose.below(6); keys > 0; --keys)
                one.vSetValue(valueFrom<T>(m_choose), Context(Time::fromDouble(momentFrom(m_choose)), view));
            for (unsigned int i = 0; i < one.keyframeCount(view); ++i)
                one.vSetInterpolationData(shapeFrom(m_choose), i, view);
        }
        one.vSetExtrapolationBefore(static_cast<Extrapolation>(1 + m_choose.below(4)));
        one.vSetExtrapolationAfter(static_cast<Extrapolation>(1 + m_choose.below(4)));
        one.setViewInterpolation({static_cast<Mode>(std::max(0, m_choose.below(8) - 4))});
    }

    void act(Kind& one) {
        Command none;
        const Act& edit = chosen(edits, m_choose);
        try {
            edit.run(none, one, m_all[1], A(m_choose));
        } catch (const std::exception&) {
            // A line or a value that does not fit.
        }
    }

    /// Equal hashes are of equal values.
    void remember() {
        for (const Kind& one : m_all)
            for (const quint32 view : {0u, 1u, 2u}) {
                QStringList values;
                for (int i = -8; i <= 40; ++i) {
                    const Context context(Time::fromDouble(m_begin + m_length * i / 32), View(view));
                    const QString value = textOf(one.value(context));
                    HOLD(m_values.value(valueHash(one, context), value) == value);
                    m_values[valueHash(one, context)] = value;
                    if (i >= 0 && i <= 32)
                        values << value;
                }
                const QString hash = hashOf(one, View(view), {m_begin, m_begin + m_length, true, true});
                if (m_samples.contains(hash) && m_samples[hash] != values)
                    Fuzz::fail("equal hashes", m_samples[hash].join(' ') + "\n" + values.join(' '));
                m_samples[hash] = values;
            }
    }
    static QString textOf(const T& value) {
        QString text;
        ValueType<T>::write(text, detail::canonical(value));
        return text;
    }

    /// What must make no difference to the hash, each.
    void changeNothing(Kind& one) {
        const View view(static_cast<quint32>(m_choose.below(3)));
        const QString before = hashOf(one, view, m_span);
        const auto same = [&](const char* what) {
            if (hashOf(one, view, m_span) != before)
                Fuzz::fail(what, QString::fromUtf8(stateOf(one)) +
                                     QStringLiteral("%1 to %2 ").arg(m_span.from).arg(m_span.to) + view.toString());
        };
        one.setScriptName(QStringLiteral("other"));
        one.vSetDefaultInterpolation(Interpolation::Constant);
        one.hide(true);
        same("a name, flags");
        for (const View data : one.splittable() ? std::vector<View>(one.viewList()) : std::vector<View>()) {
            for (unsigned int i = 0; i < one.keyframeCount(data); ++i) {
                KeyframeData<T> key = one.keyframe(i, data);
                if (key.interpolationData.interpolation <= Interpolation::Linear)
                    one.vSetInterpolationData(IType(key.interpolationData.interpolation, 7, 8, 9, i), i, data);
                if constexpr (std::is_same_v<T, double>)
                    if (key.value == 0)
                        one.vSetValue(-key.value, Context(key.time, data));
            }
        }
        same("shape numbers, the sign of 0");
        Kind tied;
        one.bAddConstrainedParameter(&tied);
        if (!one.masterParameter() && hashOf(tied, view, m_span) != before)
            Fuzz::fail("a master");
        tied.bUnconstrain();
        if (!one.masterParameter() && one.viewInterpolation().mode == Mode::Off)
            one.uniquifyView(view);
        same("a view of its own");
        addBeyond(one, view);
        same("a keyframe that shapes no value in the span");
    }

    void addBeyond(Kind& one, View view) const {
        const unsigned int count = one.keyframeCount(view);
        if (count < 2 || !one.splittable() || std::isinf(m_span.to) || one.masterParameter() ||
            one.extrapolationBefore() >= Extrapolation::Custom0)
            return;
        const double last = one.keyframeTime(count - 1, view).time.toDouble();
        if (one.isKeyframed() && last > m_span.to)
            one.vSetValue(valueFrom<T>(m_choose), Context(Time::fromDouble(last + 3), view));
    }

    Choices& m_choose;
    std::mt19937& m_random;
    std::array<Kind, 2> m_all;
    TimeSpan m_span;
    const double m_begin = momentFrom(m_choose);
    const double m_length = 1 + m_choose.below(8);
    QHash<QString, QStringList> m_samples;
    QHash<QString, QString> m_values;
};

template <class Kind, class T> void play(Choices& choose, std::mt19937& random) {
    Play<Kind, T>(choose, random).run();
}

/// A set of everything: constant while each member is, and its hash is of all of them.
void playSet(Choices& choose) {
    Exhibits all;
    Command none;
    const TimeSpan span = spanFrom(choose);
    const auto hash = [&] {
        Bsc::Hash of;
        hashRange(of, all.root, View(1), span);
        return of.result().toString();
    };
    const auto shown = [&] {
        QString text;
        all.root.forEachBasicParameter([&](const BasicParameter* member) {
            // Its parts are asked.
            const bool isCompound = dynamic_cast<const CompoundParameter*>(member);
            for (int i = 0; i <= 64; ++i) {
                const Context at(Time::fromDouble(std::max(span.from, -99.) +
                                                  (std::min(span.to, 99.) - std::max(span.from, -99.)) * i / 64),
                                 View(1));
                if (span.contains(at.time) && !isCompound)
                    text += exact(member->variantValue(at, std::nothrow)) + '\n';
            }
            if (Prm::isConstant(*member, View(1), span) && span.contains(Time()))
                if (constantAround(*member, at(0, 1)).intersected(span) != span)
                    Fuzz::fail("set: constantAround", member->scriptName() + QStringLiteral(" %1 %2 %3 %4")
                                                                                 .arg(span.from)
                                                                                 .arg(span.to)
                                                                                 .arg(span.withFrom)
                                                                                 .arg(span.withTo));
        });
        return text;
    };
    QHash<QString, QString> known;
    for (int i = 0; i < 12; ++i) {
        const QString text = shown();
        Fuzz::same("hash of a set", known.value(hash(), text).toUtf8(), text.toUtf8());
        known[hash()] = text;
        P& own = *all.parameter(choose.below(all.parameterCount));
        const Act& edit = chosen(edits, choose);
        try {
            edit.run(none, own, *all.parameter(choose.below(all.parameterCount)), A(choose));
        } catch (const std::exception&) {
            // A value that does not fit.
        }
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    HOLD(kindsAreRegistered);
    std::seed_seq seed(data, data + size);
    std::mt19937 random(seed);
    Choices choose(data, std::min<std::size_t>(size, 400));
    switch (choose.below(8)) {
    case 0:
        return play<NumericParameter<int>, int>(choose, random), 0;
    case 1:
        return play<PointParameter, QPointF>(choose, random), 0;
    case 2:
        return play<Parameter<bool>, bool>(choose, random), 0;
    case 3:
        return play<Parameter<QString>, QString>(choose, random), 0;
    case 4:
        return play<Halves, double>(choose, random), 0;
    case 5:
        return playSet(choose), 0;
    default:
        return play<Number, double>(choose, random), 0;
    }
}
