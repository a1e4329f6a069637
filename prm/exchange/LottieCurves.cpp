#include "prm/exchange/LottieCurves.h"

#include "prm/document/Problem.h"
#include "prm/track/BezierEasing.h"
#include "prm/track/EasingPieces.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <deque>

namespace Prm::document {

namespace {

using Key = KeyframeData<double>;
using Times = std::vector<Time>;

/// How long a hold of one component ends early, in frames.
constexpr double rampLength = 0.001;

bool isHold(const Key& key) {
    return key.interpolationData.interpolation == Interpolation::Constant;
}

bool haveTimes(const LottieCurve& curve, const Times& times) {
    return std::equal(curve.keyframes.begin(), curve.keyframes.end(), times.begin(), times.end(),
                      [](const Key& key, Time time) { return key.time == time; });
}

Times timesOf(const LottieCurve& curve) {
    Times times;
    for (const Key& key : curve.keyframes)
        times.push_back(key.time);
    return times;
}

Times allTimes(const std::vector<LottieCurve>& curves, Times times) {
    for (const LottieCurve& curve : curves) {
        const Times more = timesOf(curve);
        times.insert(times.end(), more.begin(), more.end());
    }
    std::sort(times.begin(), times.end());
    times.erase(std::unique(times.begin(), times.end()), times.end());
    return times;
}

/// Adds keyframes at times to one curve, in one walk.
class Cutting {
public:
    /// Where a shape cannot be cut in two, more keyframes are added if `isExact`.
    Cutting(const LottieCurve& curve, bool isExact)
        : m_later(curve.keyframes.begin(), curve.keyframes.end()), m_value(curve.value), m_isExact(isExact) {}

    QVector<Key> at(const Times& times) {
        for (const Time time : times) {
            while (!m_later.empty() && m_later.front().time <= time)
                advance();
            if (m_done.isEmpty() || m_done.last().time != time)
                addKey(time);
        }
        while (!m_later.empty())
            advance();
        return m_done;
    }
    int straightened() const { return m_straightened; }

private:
    void advance() {
        m_done.append(m_later.front());
        m_later.pop_front();
    }

    void addKey(Time time) {
        if (!m_done.isEmpty() && !m_later.empty())
            return cut(time);
        const double value = !m_done.isEmpty()  ? m_done.last().value
                             : !m_later.empty() ? m_later.front().value
                                                : m_value;
        m_done.append({time, value, {Interpolation::Linear}});
    }

    void cut(Time time) {
        const Key start = m_done.last();
        const Key end = m_later.front();
        const double x = (time - start.time) / (end.time - start.time);
        const bool isBezier = start.interpolationData.interpolation == Interpolation::Bezier;
        const auto pieces =
            isBezier ? detail::cutEasing(start.interpolationData, x) : std::vector<detail::EasingPiece>();
        if (pieces.empty() || (pieces.size() > 2 && !m_isExact)) {
            m_straightened += isBezier ? 1 : 0;
            return addPlainKey(time, start, end, x);
        }
        m_done.last().interpolationData = pieces.front().shape;
        for (std::size_t i = pieces.size() - 1; i > 0; --i) {
            const detail::EasingPiece& before = pieces[i - 1];
            const Time at = before.x == x ? time : start.time + before.x * (end.time - start.time);
            m_later.push_front({at, start.value + before.y * (end.value - start.value), pieces[i].shape});
        }
        while (m_later.front().time <= time)
            advance();
    }

    void addPlainKey(Time time, const Key& start, const Key& end, double x) {
        const IType kind = isHold(start) ? start.interpolationData : IType{Interpolation::Linear};
        const bool isBezier = start.interpolationData.interpolation == Interpolation::Bezier;
        const double y = isBezier ? detail::easedProgress(start.interpolationData, x) : isHold(start) ? 0 : x;
        m_done.last().interpolationData = kind;
        m_done.append({time, start.value + y * (end.value - start.value), kind});
    }

    std::deque<Key> m_later;
    QVector<Key> m_done;
    const double m_value;
    const bool m_isExact;
    int m_straightened = 0;
};

/// Returns how many segments became straight.
int align(std::vector<LottieCurve>& curves, const Times& more) {
    // Cutting may need more keyframes, which the other curves get in the next round.
    constexpr int exactRounds = 4;
    int straightened = 0;
    for (int round = 0; round <= exactRounds; ++round) {
        const Times times = allTimes(curves, more);
        for (LottieCurve& curve : curves) {
            if (haveTimes(curve, times))
                continue;
            Cutting cutting(curve, round < exactRounds);
            curve.keyframes = cutting.at(times);
            straightened += cutting.straightened();
        }
    }
    return straightened;
}

bool isFlat(const LottieCurve& curve, int i) {
    return i + 1 == curve.keyframes.size() || curve.keyframes[i].value == curve.keyframes[i + 1].value;
}

bool areMixed(const std::vector<LottieCurve>& curves, int i) {
    const auto holds =
        std::count_if(curves.begin(), curves.end(), [i](const auto& c) { return isHold(c.keyframes[i]); });
    return holds != 0 && holds != static_cast<int>(curves.size());
}

/// Where some components hold and others move: shortly before the end of that segment.
Times rampStarts(const std::vector<LottieCurve>& curves) {
    Times times;
    const auto& keys = curves.front().keyframes;
    for (int i = 0; i + 1 < keys.size(); ++i) {
        const auto jumps = [i](const LottieCurve& curve) { return isHold(curve.keyframes[i]) && !isFlat(curve, i); };
        const double ramp = std::min(rampLength, (keys[i + 1].time - keys[i].time) / 2);
        if (areMixed(curves, i) && std::any_of(curves.begin(), curves.end(), jumps))
            times.push_back(keys[i + 1].time + -ramp);
    }
    return times;
}

void moveThroughHolds(std::vector<LottieCurve>& curves) {
    for (int i = 0; i < curves.front().keyframes.size(); ++i) {
        if (!areMixed(curves, i))
            continue;
        for (LottieCurve& curve : curves) {
            if (isHold(curve.keyframes[i]))
                curve.keyframes[i].interpolationData = {Interpolation::Linear};
        }
    }
}

// --- text ------------------------------------------------------------------------------------------------------------

/// In the form of project text, which holds single precision, where that is the time.
void appendTime(QByteArray& json, Time time) {
    const auto single = static_cast<float>(time.toDouble());
    if (static_cast<double>(single) != time.toDouble())
        return appendJson(json, time.toDouble());
    std::array<char, 32> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), single).ptr;
    json.append(text.data(), static_cast<int>(end - text.data()));
}

IType handles(const Key& key) {
    const bool isBezier = key.interpolationData.interpolation == Interpolation::Bezier;
    return isBezier ? key.interpolationData : IType{Interpolation::Linear, 0, 0, 1, 1};
}

class KeyframeText {
public:
    KeyframeText(const std::vector<LottieCurve>& curves, QByteArray& text) : m_curves(curves), m_text(text) {}

    void append(int index) {
        m_index = index;
        m_text += "{\"t\":";
        appendTime(m_text, key(0).time);
        for (std::size_t i = 0; i < m_curves.size(); ++i) {
            m_text += i == 0 ? ",\"s\":[" : ",";
            appendJson(m_text, key(i).value);
        }
        m_text += ']';
        if (isHold(key(0)))
            m_text += ",\"h\":1";
        else if (index + 1 < m_curves.front().keyframes.size() || isBezier())
            appendHandles();
        m_text += '}';
    }

private:
    const Key& key(std::size_t component) const { return m_curves[component].keyframes[m_index]; }
    bool isBezier() const {
        return std::any_of(m_curves.begin(), m_curves.end(), [this](const LottieCurve& curve) {
            return curve.keyframes[m_index].interpolationData.interpolation == Interpolation::Bezier;
        });
    }
    void appendHandles() {
        appendAxis(",\"o\":{\"x\":", &IType::x1);
        appendAxis(",\"y\":", &IType::y1);
        appendAxis("},\"i\":{\"x\":", &IType::x2);
        appendAxis(",\"y\":", &IType::y2);
        m_text += '}';
    }
    /// One number where all components have the same handles, otherwise a list: players want the same for all axes.
    void appendAxis(const char* start, double IType::*number) {
        m_text += start;
        if (areEqual())
            return appendJson(m_text, handles(key(0)).*number);
        for (std::size_t i = 0; i < m_curves.size(); ++i) {
            m_text += i == 0 ? '[' : ',';
            appendJson(m_text, handles(key(i)).*number);
        }
        m_text += ']';
    }
    bool areEqual() const {
        return std::all_of(m_curves.begin(), m_curves.end(), [this](const LottieCurve& curve) {
            return handles(curve.keyframes[m_index]) == handles(key(0));
        });
    }

    const std::vector<LottieCurve>& m_curves;
    QByteArray& m_text;
    int m_index = 0;
};

QByteArray keyframesText(const std::vector<LottieCurve>& curves) {
    const int count = curves.front().keyframes.size();
    QByteArray text("[");
    KeyframeText keyframes(curves, text);
    // Players need two keyframes, and readers take the last one of a time.
    if (count == 1) {
        keyframes.append(0);
        text += ',';
    }
    for (int i = 0; i < count; ++i) {
        text += i == 0 ? "" : ",";
        keyframes.append(i);
    }
    return text + ']';
}

QByteArray valueText(const std::vector<LottieCurve>& curves) {
    QByteArray text;
    for (const LottieCurve& curve : curves) {
        text += text.isEmpty() ? "" : ",";
        appendJson(text, curve.value);
    }
    return curves.size() == 1 ? text : '[' + text + ']';
}

} // namespace

bool areTogether(const std::vector<LottieCurve>& components) {
    const auto& first = components.front().keyframes;
    return std::all_of(components.begin(), components.end(), [&](const LottieCurve& curve) {
        return std::equal(first.begin(), first.end(), curve.keyframes.begin(), curve.keyframes.end(),
                          [](const Key& a, const Key& b) { return a.time == b.time && isHold(a) == isHold(b); });
    });
}

QStringList bringTogether(std::vector<LottieCurve>& components) {
    QStringList losses;
    int straightened = align(components, {});
    const Times ramps = rampStarts(components);
    if (!ramps.empty())
        straightened += align(components, ramps);
    moveThroughHolds(components);
    if (!ramps.empty())
        losses += message("holds of single components end up to %1 frames early, in a ramp: %2", rampLength,
                          static_cast<int>(ramps.size()));
    if (straightened > 0)
        losses += message("segments that cannot be cut become straight: %1", straightened);
    return losses;
}

Json lottieProperty(const std::vector<LottieCurve>& components) {
    const bool isAnimated = !components.front().keyframes.isEmpty();
    return Json::object()
        .add("a", isAnimated ? 1 : 0)
        .add("k", Json::written(isAnimated ? keyframesText(components) : valueText(components)));
}

Json lottiePropertyWithoutValue() {
    return Json::object().add("a", 0).add("k", Json::list());
}

} // namespace Prm::document
