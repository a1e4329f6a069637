#include "prm/exchange/LottieProperty.h"

#include "prm/document/Problem.h"

#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>
#include <cmath>

namespace Prm::document {

namespace {

const QLatin1String valueKey("k");
const QLatin1String slotKey("sid");

struct Key {
    QJsonObject json;
    double time = 0.0;
    bool hold = false;
    QVector<double> value;
    /// The value at the end of the segment, in older files.
    QVector<double> end;
};

/// A number, or a list of numbers; nothing for anything else.
QVector<double> numbers(const QJsonValue& json) {
    if (json.isDouble())
        return {json.toDouble()};
    QVector<double> list;
    const QJsonArray array = json.toArray();
    list.reserve(array.size());
    for (const QJsonValue number : array) {
        if (!number.isDouble())
            return {};
        list.append(number.toDouble());
    }
    return list;
}

const char* whatIsNoNumber(const QJsonValue& json) {
    const QJsonObject object = json.isArray() ? json.toArray().at(0).toObject() : json.toObject();
    if (object.contains(QLatin1String("v")))
        return "a path";
    if (object.contains(QLatin1String("t")) || object.contains(QLatin1String("f")))
        return "a text document";
    return "its value is no number and no list of numbers";
}

bool isAnimated(const QJsonValue& value) {
    return value.isArray() && value.toArray().at(0).isObject();
}

/// Takes the keyframes of one property apart, step by step.
class Keys {
public:
    Keys(const QJsonArray& json, LottieProperty& property) : m_property(property) {
        read(json);
        checkSizes();
        sort();
        complete();
        mergeSimultaneous();
        straighten();
        m_property.components.resize(static_cast<std::size_t>(dimensions()));
        for (int i = 0; i < static_cast<int>(m_property.components.size()); ++i)
            m_property.components[static_cast<std::size_t>(i)] = component(i);
        if (m_heldHandles > 0)
            change(message("handles outside their segment's time are held to it: %1", m_heldHandles));
    }

private:
    void change(const QString& what) { m_property.changes.append(what); }

    void read(const QJsonArray& json) {
        m_keys.reserve(static_cast<std::size_t>(json.size()));
        for (int i = 0; i < json.size(); ++i)
            readKey(json.at(i), i);
    }
    void readKey(const QJsonValue& json, int index) {
        Key key;
        key.json = json.toObject();
        const QJsonValue time = key.json.value(QLatin1String("t"));
        if (!time.isDouble() || !(std::abs(time.toDouble()) <= Time::LARGEST_VALID_VALUE))
            throw Problem("keyframe %1 has no usable time", index);
        key.time = time.toDouble();
        const QJsonValue hold = key.json.value(QLatin1String("h"));
        key.hold = hold.toInt() == 1 || hold.toBool();
        const QJsonValue start = key.json.value(QLatin1String("s"));
        key.value = numbers(start);
        key.end = numbers(key.json.value(QLatin1String("e")));
        if (!start.isUndefined() && !start.isNull() && key.value.isEmpty())
            throw Problem(whatIsNoNumber(start));
        m_keys.push_back(key);
    }

    void sort() {
        const auto earlier = [](const Key& a, const Key& b) { return a.time < b.time; };
        if (std::is_sorted(m_keys.begin(), m_keys.end(), earlier))
            return;
        std::stable_sort(m_keys.begin(), m_keys.end(), earlier);
        change("the keyframes are put in the order of time");
    }

    /// Gives every keyframe a value: in older files it may be the end of the segment before.
    void complete() {
        int jumps = 0;
        int unknown = 0;
        if (m_keys.empty() || m_keys.front().value.isEmpty())
            throw Problem("the first keyframe has no value");
        for (std::size_t i = 1; i < m_keys.size(); ++i) {
            const Key& former = m_keys[i - 1];
            Key& key = m_keys[i];
            if (key.value.isEmpty()) {
                unknown += former.end.isEmpty() && !former.hold ? 1 : 0;
                key.value = former.end.isEmpty() ? former.value : former.end;
            } else if (!former.hold && !former.end.isEmpty() && former.end != key.value) {
                ++jumps;
            }
        }
        if (unknown > 0)
            change(message("keyframes without a value take the former one's: %1", unknown));
        if (jumps > 0)
            change(message("segments end at the next keyframe's value instead of their own: %1", jumps));
    }

    /// One long keyframe among many short ones would make all of them long.
    void checkSizes() {
        constexpr qint64 most = 8;
        constexpr qint64 alwaysAllowed = 10000;
        qint64 written = 0;
        int longest = 0;
        for (const Key& key : m_keys) {
            written += key.value.size() + key.end.size();
            longest = std::max({longest, key.value.size(), key.end.size()});
        }
        if (static_cast<qint64>(m_keys.size()) * longest > alwaysAllowed + most * written)
            throw Problem("most of its keyframes lack most components");
    }

    void mergeSimultaneous() {
        // The last one of a time counts, as it does when both are set.
        const auto sameTime = [](const Key& a, const Key& b) { return a.time == b.time; };
        const auto firstKept = std::unique(m_keys.rbegin(), m_keys.rend(), sameTime).base();
        const auto merged = std::distance(m_keys.begin(), firstKept);
        m_keys.erase(m_keys.begin(), firstKept);
        if (merged > 0)
            change(message("keyframes at the time of another one are left out: %1", merged));
    }

    void straighten() {
        int curved = 0;
        for (std::size_t i = 0; i + 1 < m_keys.size(); ++i) {
            const Key& key = m_keys[i];
            curved += !key.hold && (isTangent(key.json.value(QLatin1String("to"))) ||
                                    isTangent(key.json.value(QLatin1String("ti"))))
                          ? 1
                          : 0;
        }
        if (curved > 0)
            change(message("segments with spatial tangents become straight: %1", curved));
    }
    static bool isTangent(const QJsonValue& json) {
        const QVector<double> tangent = numbers(json);
        return std::any_of(tangent.begin(), tangent.end(), [](double number) { return number != 0.0; });
    }

    int dimensions() {
        const auto fewer = [](const Key& a, const Key& b) { return a.value.size() < b.value.size(); };
        const auto range = std::minmax_element(m_keys.begin(), m_keys.end(), fewer);
        if (range.first->value.size() != range.second->value.size())
            change("components that some keyframes lack count as 0");
        return range.second->value.size();
    }

    LottieCurve component(int index) {
        LottieCurve curve;
        curve.value = m_keys.front().value.value(index);
        curve.keyframes.reserve(static_cast<int>(m_keys.size()));
        for (const Key& key : m_keys)
            curve.keyframes.append({Time::fromDouble(key.time), key.value.value(index), easing(key, index)});
        return curve;
    }
    /// A keyframe holds both handles of the segment that it starts.
    IType easing(const Key& key, int component) {
        if (key.hold)
            return {Interpolation::Constant};
        const QJsonObject out = key.json.value(QLatin1String("o")).toObject();
        const QJsonObject in = key.json.value(QLatin1String("i")).toObject();
        const double x1 = handle(out, QLatin1String("x"), component, 0.0);
        const double y1 = handle(out, QLatin1String("y"), component, 0.0);
        const double x2 = handle(in, QLatin1String("x"), component, 1.0);
        const double y2 = handle(in, QLatin1String("y"), component, 1.0);
        if (x1 == y1 && x2 == y2)
            return {Interpolation::Linear};
        const auto outside = [](double x) { return x < 0.0 || x > 1.0 ? 1 : 0; };
        m_heldHandles += outside(x1) + outside(x2);
        return {Interpolation::Bezier, x1, y1, x2, y2};
    }
    /// One number for all components, or one for each; where one is missing the first counts.
    static double handle(const QJsonObject& point, QLatin1String axis, int component, double missing) {
        const QJsonValue json = point.value(axis);
        if (!json.isArray())
            return json.toDouble(missing);
        const QJsonArray list = json.toArray();
        return list.at(component).toDouble(list.at(0).toDouble(missing));
    }

    LottieProperty& m_property;
    std::vector<Key> m_keys;
    int m_heldHandles = 0;
};

} // namespace

bool isLottieProperty(const QJsonObject& object) {
    return object.contains(valueKey) || object.contains(slotKey);
}

LottieProperty readLottieProperty(const QJsonObject& json) {
    LottieProperty property;
    const QJsonValue value = json.value(valueKey);
    if (isAnimated(value) && value.toArray().at(0).toObject().contains(QLatin1String("t"))) {
        const Keys keys(value.toArray(), property);
        return property;
    }
    if (value.isUndefined())
        throw Problem("its value stands elsewhere, in a slot");
    if (value.isArray() && value.toArray().isEmpty())
        throw Problem("it has no value");
    for (const double number : numbers(value))
        property.components.push_back({number, {}});
    if (property.components.empty())
        throw Problem(whatIsNoNumber(value));
    return property;
}

LottieLosses lossesInText(const LottieProperty& property) {
    int moved = 0;
    int merged = 0;
    int roundedHandles = 0;
    double farthest = 0;
    for (const LottieCurve& curve : property.components) {
        Time former = Time::INVALID;
        for (const auto& key : curve.keyframes) {
            const IType& shape = key.interpolationData;
            for (const double number : {shape.x1, shape.y1, shape.x2, shape.y2})
                roundedHandles += QString::number(number, 'g', 6).toDouble() != number ? 1 : 0;
            // The components have the same times.
            if (&curve != &property.components.front())
                continue;
            const Time written = writtenTime(key.time);
            moved += written != key.time ? 1 : 0;
            merged += written == former ? 1 : 0;
            farthest = std::max(farthest, std::abs(written - key.time));
            former = written;
        }
    }
    LottieLosses losses{{}, moved, farthest};
    if (moved > 0)
        losses.texts += message("in project text, times move by up to %2: %1", moved, farthest);
    if (merged > 0)
        losses.texts += message("in project text, keyframes merge with the one before them: %1", merged);
    if (roundedHandles > 0)
        losses.texts += message("in project text, numbers of handles are rounded: %1", roundedHandles);
    return losses;
}

} // namespace Prm::document
