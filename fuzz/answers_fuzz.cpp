// Answers about spans of times, beside the values at many times in them: of random curves of every type, in several
// views, with masters, after random edits.

#include "fuzz/Fuzz.h"
#include "prm/Answers.h"
#include "prm/CurveKinds.h"
#include "prm/RangeHash.h"
#include "prm/track/CanonicalTrack.h"
#include "tests/world/Acts.h"


#include <QHash>

#include <limits>
#include <random>

using namespace Worlds;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
const IType straight(Interpolation::Linear);

/// The second custom kinds have no functions.
const bool registered = registerInterpolation(Interpolation::Custom0, [](const IType&, double x) { return x * x; }) &&
                        registerExtrapolation(Extrapolation::Custom0, [](Time time, Time first, Time last) {
                            return Time::fromDouble(first.toDouble() + std::fmod(std::abs(time - first), last - first));
                        });

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
    return {static_cast<Interpolation>(kind < 2 ? 1 : kind < 4 ? 2 : kind < 7 ? 3 : 4 + choose.below(2)), x1, y1, x2, y2};
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

template <class T> bool equal(const T& a, const T& b) {
    return ValueType<T>::equal(a, b);
}

template <class T> std::vector<double> numbersOf(const T& value) {
    if constexpr (std::is_same_v<T, QPointF>)
        return {value.x(), value.y()};
    else
        return {static_cast<double>(value)};
}

/// What is known of one parameter in one view.
template <class T> class Asked {
public:
    Asked(const Parameter<T>& parameter, View view, bool hasHooks, std::mt19937& random)
        : m_parameter(parameter), m_view(view), m_shown(detail::Ask::shownIn(parameter, view)), m_hasHooks(hasHooks),
          m_random(random) {
        if constexpr (detail::hasOrder<T>) {
            const auto shown = bounds(parameter, view, TimeSpan{-2000, 2000, true, true});
            m_isLarge = detail::distanceOf(shown.first, shown.second) > 1e4;
        }
    }

    void checkSpan(const TimeSpan& span) {
        m_times = timesIn(span);
        checkConstant(span);
        checkKeyframes(span);
        if constexpr (!std::is_same_v<T, QString>) {
            checkBounds(span);
            checkPolyline(span);
        }
        if (span.from == span.to || m_times.empty())
            return;
        for (int i = 0; i < 6; ++i)
            checkAround(m_times[m_random() % m_times.size()]);
        if constexpr (std::is_same_v<T, double> || std::is_same_v<T, QPointF>)
            for (int i = 0; i < 6; ++i)
                checkSlope(m_times[m_random() % m_times.size()]);
    }

private:
    T at(double time) const { return m_parameter.value({Time::fromDouble(time), m_view}); }
    [[noreturn]] void fail(const char* what, double time, const QString& more = {}) const {
        QString text = ValueType<T>::name() + QStringLiteral(" at %1 in view %2: %3 %4\n").arg(time, 0, 'g', 17).arg(m_view.id()).arg(exact(at(time))).arg(more);
        for (int i = 0; i < m_shown.count; ++i)
            for (const KeyframeData<T>& key : m_shown[i].keyframes)
                text += QStringLiteral("%1: %2 = %3 kind %4 %5 %6 %7 %8\n").arg(m_shown.weight(i)).arg(key.time.toDouble(), 0, 'g', 17)
                            .arg(exact(key.value)).arg(static_cast<quint32>(key.interpolationData.interpolation))
                            .arg(key.interpolationData.x1).arg(key.interpolationData.y1).arg(key.interpolationData.x2).arg(key.interpolationData.y2);
        Fuzz::fail(what, text + QStringLiteral("outside %1 %2").arg(static_cast<quint32>(m_shown.outside.before)).arg(static_cast<quint32>(m_shown.outside.after)));
    }
    static QString exact(double value) { return QString::number(value, 'g', 17); }
    template <class U> static QString exact(const U& value) { return Worlds::exact(QVariant::fromValue(value)); }

    /// Whether only keyframes decide.
    bool isKnown() const {
        bool asksFunction = m_hasHooks || m_shown.outside.before == Extrapolation::Custom0 ||
                            m_shown.outside.after == Extrapolation::Custom0;
        for (const detail::Track<T>& track : m_shown.tracks)
            for (const KeyframeData<T>& key : track.keyframes)
                asksFunction = asksFunction || key.interpolationData.interpolation == Interpolation::Custom0;
        return !asksFunction;
    }
    /// Those of one view.
    bool isExact() const { return isKnown() && m_shown.count == 1; }

    /// Random ones, those of keyframes, and those beside the ends and the keyframes.
    std::vector<double> timesIn(const TimeSpan& span) {
        const double from = std::max(span.from, -1000.);
        const double to = std::min(span.to, 1000.);
        std::vector<double> times{from, to, (from + to) / 2};
        for (const detail::Track<T>& track : m_shown.tracks)
            addTimes(track.keyframes, times);
        for (std::size_t i = times.size(); i > 0; --i)
            for (const double towards : {-infinity, infinity})
                times.push_back(std::nextafter(times[i - 1], towards));
        for (int i = 0; i < 60; ++i)
            times.push_back(from + (to - from) * std::uniform_real_distribution<double>()(m_random));
        const auto isOutside = [&](double time) { return !span.contains(Time::fromDouble(time)); };
        times.erase(std::remove_if(times.begin(), times.end(), isOutside), times.end());
        std::sort(times.begin(), times.end());
        return times;
    }

    /// Those of the keyframes, and some between each two, most of them near one.
    static void addTimes(const QVector<KeyframeData<T>>& keyframes, std::vector<double>& times) {
        for (int i = 0; i < keyframes.size(); ++i) {
            times.push_back(keyframes[i].time.toDouble());
            const double length = i > 0 ? keyframes[i].time - keyframes[i - 1].time : 0;
            for (int part = 1; part < 16 && length > 0; ++part)
                for (const double x : {part / 16., std::exp2(-part), 1 - std::exp2(-part)})
                    times.push_back(keyframes[i - 1].time.toDouble() + length * x);
        }
    }

    void checkConstant(const TimeSpan& span) const {
        const bool isConstant = Prm::isConstant(m_parameter, m_view, span);
        const BasicParameter& untyped = m_parameter;
        HOLD(Prm::isConstant(untyped, m_view, span) == isConstant);
        bool isSame = true;
        for (const double time : m_times) {
            isSame = isSame && equal(at(time), at(m_times[0]));
            if (isConstant && !isSame)
                fail("isConstant", time);
        }
        const bool isOne = m_times.empty() || m_times.front() == m_times.back();
        if (isSame && !isConstant && isExact() && !std::is_same_v<T, double> && !std::is_same_v<T, QPointF> && !isOne && m_times.size() > 60)
            fail("isConstant, not found", m_times[0]);
    }

    void checkAround(double time) const {
        const Context context(Time::fromDouble(time), m_view);
        const TimeSpan span = constantAround(m_parameter, context);
        const BasicParameter& untyped = m_parameter;
        HOLD(constantAround(untyped, context) == span);
        HOLD(span.contains(context.time));
        HOLD(Prm::isConstant(m_parameter, m_view, span));
        const T value = at(time);
        for (const double other : m_times)
            if (span.contains(Time::fromDouble(other)) && !equal(at(other), value))
                fail("constantAround", other, exact(time));
        if (isExact())
            for (const bool later : {false, true})
                checkEnd(later ? span.to : span.from, later ? span.withTo : span.withFrom, later ? 1 : -1, value);
    }

    /// Beyond the end there is another value.
    void checkEnd(double end, bool isIncluded, int sign, const T& value) const {
        if (std::isinf(end) || (!isIncluded && !equal(at(end), value)))
            return;
        for (double distance = 0x1p-34; distance < 1; distance *= 8)
            if (!equal(at(end + sign * distance), value))
                return;
        // In a long segment of small change values that are rounded come later.
        if (!detail::rounds<T> || !isIncluded || equal(at(std::nextafter(end, sign * infinity)), value))
            fail("constantAround is the longest", end, exact(value) + (isIncluded ? " included" : ""));
    }

    void checkBounds(const TimeSpan& span) {
        const auto [least, greatest] = bounds(m_parameter, m_view, span);
        for (std::size_t c = 0; c < numbersOf(least).size(); ++c) {
            const double low = numbersOf(least)[c];
            const double high = numbersOf(greatest)[c];
            double nearLow = infinity;
            double nearHigh = -infinity;
            for (const double time : m_times) {
                const double number = numbersOf(at(time))[c];
                const double digits = 4e-15 * std::max(std::abs(number), std::min(high - low, 1e300));
                if (!(number >= low - digits && number <= high + digits))
                    fail("bounds", time, exact(low) + " to " + exact(high));
                nearLow = std::min(nearLow, number);
                nearHigh = std::max(nearHigh, number);
            }
            if (m_times.empty() || !isExact() || std::isinf(low) || std::isinf(high))
                continue;
            if (!std::isinf(span.from) && !std::isinf(span.to)) {
                checkReached(c, low, high - low, 1);
                checkReached(c, high, high - low, -1);
            }
        }
    }

    /// Descends from the lowest times to the least value near them.
    void checkReached(std::size_t c, double bound, double height, int sign) const {
        const auto rank = [&](double time) { return sign * numbersOf(at(time))[c]; };
        double best = infinity;
        for (std::size_t i = 0; i < m_times.size(); ++i) {
            // Those beside it may be the next numbers.
            double low = m_times[i > 3 ? i - 3 : 0];
            double high = m_times[std::min(i + 3, m_times.size() - 1)];
            best = std::min(best, rank(m_times[i]));
            if (rank(m_times[i]) > std::min(rank(low), rank(high)))
                continue;
            for (int step = 0; step < 60; ++step) {
                const double third = (high - low) / 3;
                (rank(low + third) > rank(high - third) ? low : high) = rank(low + third) > rank(high - third) ? low + third : high - third;
            }
            best = std::min(best, rank(std::min(std::max((low + high) / 2, m_times.front()), m_times.back())));
        }
        if (!(best - sign * bound <= 1e-12 * height + 4e-15 * std::abs(bound)))
            fail("bounds are reached", m_times[0], exact(bound) + " not " + exact(sign * best));
    }

    void checkSlope(double time) const {
        const auto slopes = numbersOf(slope(m_parameter, {Time::fromDouble(time), m_view}));
        const detail::Piece<T> piece(m_shown, time);
        const double room = std::min({1., time - piece.from(), piece.to() - time}) / 4;
        if (!(room > 1e-3) || !isKnown() || !registered)
            return;
        for (std::size_t c = 0; c < slopes.size(); ++c) {
            const auto difference = [&](double h) { return (numbersOf(at(time + h))[c] - numbersOf(at(time - h))[c]) / (2 * h); };
            const auto refined = [&](double h) { return (4 * difference(h / 2) - difference(h)) / 3; };
            const double wanted = refined(room / 64);
            const double magnitude = std::max(1., std::abs(numbersOf(at(time))[c]));
            const double unsure = std::abs(wanted - refined(room / 16)) * 4 + 1e-11 * magnitude / room;
            if (unsure < 1e-7 * std::max(1., std::abs(wanted)) && !(std::abs(slopes[c] - wanted) <= 1e-6 * std::max(1., std::abs(wanted))))
                fail("slope", time, exact(slopes[c]) + " is " + exact(wanted));
        }
    }

    void checkKeyframes(const TimeSpan& span) const {
        const auto found = keyframes(m_parameter, m_view, span);
        int count = 0;
        for (unsigned int i = 0; i < m_parameter.keyframeCount(m_view); ++i) {
            const KeyframeData<T> key = m_parameter.keyframe(i, m_view);
            if (!span.contains(key.time))
                continue;
            HOLD(count < found.size() && found[count].time == key.time && equal(found[count].value, key.value));
            HOLD(found[count++].interpolationData == key.interpolationData);
        }
        HOLD(count == found.size());
    }

    void checkPolyline(const TimeSpan& span) {
        static const double tolerances[] = {0.001, 0.03, 0.5, 1, 4};
        const double tolerance = tolerances[m_random() % 5];
        const auto points = polyline(m_parameter, m_view, span, tolerance);
        const bool isPromised = isKnown();
        HOLD(points.isEmpty() || std::isinf(span.from) || std::abs(points.first().first.toDouble() - span.from) < 1e-9);
        HOLD(points.isEmpty() || std::isinf(span.to) || std::abs(points.last().first.toDouble() - span.to) < 1e-9);
        HOLD(!points.isEmpty() || span.isEmpty() || std::isinf(span.from) || std::isinf(span.to));
        for (int i = 0; i + 1 < points.size(); ++i) {
            const double from = points[i].first.toDouble();
            const double length = points[i + 1].first - points[i].first;
            HOLD(length >= 0);
            for (int part = 1; part < 10 && length > 0 && isPromised; ++part)
                checkOnLine(from + length * part / 10, length, points[i], points[i + 1], tolerance);
        }
    }

    void checkOnLine(double time, double length, const CurvePoint<T>& from, const CurvePoint<T>& to, double tolerance) const {
        const double part = (time - from.first.toDouble()) / length;
        for (std::size_t c = 0; c < numbersOf(from.second).size(); ++c) {
            const double line = numbersOf(from.second)[c] * (1 - part) + numbersOf(to.second)[c] * part;
            const double number = numbersOf(at(time))[c];
            // A million, rounded to 65536 steps.
            const double coarse = detail::rounds<T> ? 100 : 0.2;
            if (!(std::abs(number - line) <= std::max(tolerance * (1 + 1e-9) + 1e-9, m_isLarge ? coarse : 0)))
                fail("polyline", time, exact(line));
        }
    }

    const Parameter<T>& m_parameter;
    const View m_view;
    const detail::Shown<T> m_shown;
    const bool m_hasHooks;
    std::mt19937& m_random;
    bool m_isLarge = false;
    std::vector<double> m_times;
};

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
        const Act& edit = chosen(allEdits(), m_choose);
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
                Fuzz::fail(what, QString::fromUtf8(stateOf(one)) + QStringLiteral("%1 to %2 ").arg(m_span.from).arg(m_span.to) + view.toString());
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
        if (count < 2 || !one.splittable() || std::isinf(m_span.to) || one.masterParameter() || one.extrapolationBefore() >= Extrapolation::Custom0)
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
                const Context at(Time::fromDouble(std::max(span.from, -99.) + (std::min(span.to, 99.) - std::max(span.from, -99.)) * i / 64), View(1));
                if (span.contains(at.time) && !isCompound)
                    text += exact(member->variantValue(at, std::nothrow)) + '\n';
            }
            if (Prm::isConstant(*member, View(1), span) && span.contains(Time()))
                if (constantAround(*member, at(0, 1)).intersected(span) != span)
                    Fuzz::fail("set: constantAround", member->scriptName() + QStringLiteral(" %1 %2 %3 %4").arg(span.from).arg(span.to).arg(span.withFrom).arg(span.withTo));
        });
        return text;
    };
    QHash<QString, QString> known;
    for (int i = 0; i < 12; ++i) {
        const QString text = shown();
        Fuzz::same("hash of a set", known.value(hash(), text).toUtf8(), text.toUtf8());
        known[hash()] = text;
        P& own = *all.parameter(choose.below(all.parameterCount));
        const Act& edit = chosen(allEdits(), choose);
        try {
            edit.run(none, own, *all.parameter(choose.below(all.parameterCount)), A(choose));
        } catch (const std::exception&) {
            // A value that does not fit.
        }
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
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
