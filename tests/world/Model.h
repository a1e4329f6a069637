#pragma once

// A plain, slow model of a parameter.

#include "prm/track/BezierEasing.h"
#include "tests/support/Library.h"

#include <map>

namespace Worlds {

using namespace Prm;
using Mode = MVInterpolationParams::Mode;
using Key = KeyframeData<double>;

// --- curves ----------------------------------------------------------------------------------------------------------

inline IType shaped(const IType& present, Interpolation kind) {
    const bool hasNumbers = present != IType(present.interpolation);
    if (present.interpolation == kind && hasNumbers && kind >= Interpolation::Bezier)
        return present;
    return kind == Interpolation::Bezier ? IType(kind, 1. / 3, 0, 2. / 3, 1) : IType(kind);
}

inline double progress(const IType& shape, double x) {
    if (shape.interpolation == Interpolation::Constant)
        return 0;
    return shape.interpolation == Interpolation::Bezier ? detail::easedProgress(shape, x) : x;
}

inline double endSlope(const IType& shape, bool atStart) {
    if (shape.interpolation != Interpolation::Bezier)
        return shape.interpolation == Interpolation::Constant ? 0 : 1;
    return atStart ? detail::easingSlopeAtStart(shape) : detail::easingSlopeAtEnd(shape);
}

// --- the model -------------------------------------------------------------------------------------------------------

struct Data {
    double still = 0;
    std::vector<Key> keys;

    /// The position of the first key at the time, or the number of keys.
    std::size_t find(Time time) const {
        std::size_t i = 0;
        while (i < keys.size() && keys[i].time != time)
            ++i;
        return i;
    }
    /// The position of the first key that is not earlier.
    std::size_t bound(Time time) const {
        const auto isEarlier = [=](const Key& key) { return key.time < time; };
        return static_cast<std::size_t>(std::find_if_not(keys.begin(), keys.end(), isEarlier) - keys.begin());
    }
};

/// Its edits are called as the parameter's are.
struct Model {
    bool keyframed = true;
    bool splittable = true;
    bool isSplit = false;
    Extrapolation before = Extrapolation::Constant;
    Extrapolation after = Extrapolation::Constant;
    Interpolation first = Interpolation::Linear;
    Mode mode = Mode::Off;
    Data standard;
    std::map<quint32, Data> views;
    std::string told;

    bool owns(View view) const { return views.count(view.id()) > 0; }
    bool hides(View view) const { return !keyframed || (splittable && !owns(view)); }
    const Data& read(View view) const {
        return owns(view) ? views.at(view.id()) : views.empty() ? standard : views.begin()->second;
    }
    Data shown(View view) const { return hides(view) ? Data() : read(view); }

    double outside(const std::vector<Key>& keys, Time time) const {
        const bool early = time < keys.front().time;
        const Key& edge = early ? keys.front() : keys.back();
        if (keys.size() < 2 || (early ? before : after) != Extrapolation::Linear)
            return edge.value;
        const Key& a = early ? keys[0] : keys[keys.size() - 2];
        const Key& b = early ? keys[1] : keys.back();
        const double change = (b.value - a.value) * endSlope(a.interpolationData, early) * (time - edge.time);
        return a.time < b.time ? edge.value + change / (b.time - a.time) : edge.value;
    }

    double valueIn(const Data& data, Time time) const {
        if (data.keys.empty())
            return data.still;
        if (data.find(time) < data.keys.size())
            return data.keys[data.find(time)].value;
        if (time < data.keys.front().time || time > data.keys.back().time)
            return outside(data.keys, time);
        const Key& b = data.keys[data.bound(time)];
        const Key& a = data.keys[data.bound(time) - 1];
        return a.value + (b.value - a.value) * progress(a.interpolationData, (time - a.time) / (b.time - a.time));
    }

    std::vector<double> sources(double view) const {
        std::vector<double> from;
        for (const auto& [id, data] : views)
            from.push_back(id);
        const auto nearer = [=](double a, double b) { return std::abs(a - view) < std::abs(b - view); };
        const auto above = std::upper_bound(from.begin(), from.end(), view);
        if (mode == Mode::Nearest || above == from.begin() || above == from.end())
            return {*std::min_element(from.begin(), from.end(), nearer)};
        // The neighbours come first.
        std::rotate(from.begin(), above - 1, above + 1);
        std::stable_sort(from.begin() + 2, from.end(), nearer);
        from.resize(std::min<std::size_t>(from.size(), mode == Mode::Smooth ? 3 : 2));
        return from;
    }

    double value(const Context& context) const {
        const View view = context.view;
        if (!splittable && !views.empty())
            return keyframed ? valueIn(views.begin()->second, context.time) : views.begin()->second.still;
        if (!keyframed)
            return read(view).still;
        if (owns(view) || !view.isValid() || mode == Mode::Off || views.empty())
            return valueIn(read(view), context.time);
        double sum = 0;
        const std::vector<double> from = sources(view.id());
        for (const double id : from) {
            double weight = 1;
            for (const double other : from)
                weight *= id == other ? 1 : (view.id() - other) / (id - other);
            sum += weight * valueIn(views.at(static_cast<quint32>(id)), context.time);
        }
        return sum;
    }

    Interpolation interpolation(const Context& context) const {
        const Data& data = read(context.view);
        if (!keyframed || data.keys.empty())
            return keyframed ? first : Interpolation::Constant;
        const std::size_t i = data.bound(context.time);
        const bool governs = i == 0 || data.find(context.time) == i;
        return data.keys[governs && i < data.keys.size() ? i : i - 1].interpolationData.interpolation;
    }

    void tell(const char* type, std::size_t index = 0, View view = View()) {
        told +=
            std::string(type) + " " + std::to_string(static_cast<int>(index)) + " " + std::to_string(view.id()) + "\n";
    }

    Data& make(View view) {
        if (views.empty())
            views[0] = standard;
        return view.isValid() ? views.try_emplace(view.id(), standard).first->second : views.begin()->second;
    }

    Data& target(View view) {
        const bool mayGain = !owns(view) && (!views.empty() || view != View(0));
        Data& data = make(splittable ? view : View(0));
        isSplit = views.size() > 1;
        if (mayGain && owns(view))
            tell("VIEW_ADDED", 0, view);
        return data;
    }

    std::size_t insert(Data& data, Time time, double value) {
        const std::size_t i = data.bound(time);
        IType* const behind = i > 0 ? &data.keys[i - 1].interpolationData : nullptr;
        const Interpolation kind = behind ? behind->interpolation : first;
        if (behind && i == data.keys.size())
            *behind = shaped(*behind, kind);
        const IType shape = i < data.keys.size() ? shaped({}, kind) : IType(kind);
        data.keys.insert(data.keys.begin() + static_cast<int>(i), Key(time, value, shape));
        return i;
    }

    int vSetValue(double value, const Context& at) {
        Data& data = target(at.view);
        if (!keyframed || !at.time.isValid()) {
            if (std::exchange(data.still, value) != value)
                tell("KEYFRAME_CHANGED_VALUE", ~0u, at.view);
            return -1;
        }
        std::size_t i = data.find(at.time);
        const bool isNew = i == data.keys.size();
        if (isNew)
            tell("KEYFRAME_ADDED", i = insert(data, at.time, value), at.view);
        if (std::exchange(data.keys[i].value, value) != value || isNew)
            tell("KEYFRAME_CHANGED_VALUE", i, at.view);
        return static_cast<int>(i);
    }

    void setVariantValue(const QVariant& value, const Context& at, const std::nothrow_t&) {
        if (keyframed && at.time.isValid() && at.time > Time::fromInt(-1))
            vSetValue(value.toDouble(), at);
        else if (std::exchange(target(at.view).still, value.toDouble()) != value.toDouble())
            tell("VALUE_CHANGED", 0, at.view);
    }

    int iAddKeyframe(const Context& at) {
        if (!keyframed || !at.time.isValid())
            return -1;
        const double present = value(at);
        Data& data = target(at.view);
        if (data.find(at.time) < data.keys.size())
            return -1;
        const std::size_t i = insert(data, at.time, present);
        tell("KEYFRAME_ADDED", i, at.view);
        return static_cast<int>(i);
    }

    int iAddKeyframe(const Frame& frame, const AnimationState& state) {
        int last = keyframed ? -1 : 0;
        for (const View view : state.views()) {
            const int added = iAddKeyframe(Context(Time::fromUInt(frame.toUInt()), view));
            last = added >= 0 ? added : last;
        }
        return last;
    }

    void vDeleteKeyframe(const Context::Explicit& at) {
        if (hides(at.view))
            return;
        Data& data = target(at.view);
        const std::size_t i = data.find(at.time);
        if (i == data.keys.size())
            return;
        data.still = data.keys.size() == 1 ? data.keys[0].value : data.still;
        data.keys.erase(data.keys.begin() + static_cast<int>(i));
        tell("KEYFRAME_REMOVED", i, at.view);
        told += "at " + std::to_string(at.time.toDouble()) + "\n";
    }

    void vDeleteAllKeyframes(View view) {
        if (!hides(view) && !std::exchange(target(view).keys, {}).empty())
            tell("VIEW_CLEARED");
    }

    void vReset(const Context& at) {
        const Data data = shown(at.view);
        if (data.find(at.time) < data.keys.size())
            vDeleteKeyframe(Context::Explicit(at));
        if (!data.keys.empty())
            return;
        target(at.view).still = standard.still;
        tell("VIEW_RESET", 0, at.view);
    }

    /// Of several views the last goes first, in place of the hero the first one, once.
    void resetAll(View hero = View::INVALID()) {
        for (const View view : viewList()) {
            vDeleteAllKeyframes(view);
            vReset(Context(Time(), view));
        }
        const View lowest = views.empty() ? View() : viewList().front();
        while (hero.isValid() && !views.empty() && deleteView(viewList().back() == hero ? lowest : viewList().back())) {
        }
    }

    bool vSetInterpolation(Interpolation kind, const Context& at) {
        if (!keyframed || (splittable && !owns(at.view)))
            return false;
        const Data& data = target(at.view);
        const std::size_t i = data.find(at.time);
        if (i == data.keys.size())
            return false;
        IType shape = data.keys[i].interpolationData;
        shape.interpolation = kind;
        reshape(at.view, i, i + 1 < data.keys.size() ? shaped(data.keys[i].interpolationData, kind) : shape);
        return true;
    }

    void vSetInterpolationData(const IType& shape, unsigned index, View view) {
        if (keyframed && (!splittable || owns(view)))
            reshape(view, index, shape);
    }

    void reshape(View view, std::size_t index, const IType& shape) {
        Data& data = target(view);
        if (index >= data.keys.size())
            return;
        data.keys[index].interpolationData = shape;
        tell("KEYFRAME_CHANGED_INTERPOLATION", index, view);
    }

    void vSetExtrapolationBefore(Extrapolation kind) {
        before = keyframed ? kind : before;
        told += keyframed ? "PARAMETER_CHANGED_EXTRAPOLATION_BEFORE 0 0\n" : "";
    }
    void vSetExtrapolationAfter(Extrapolation kind) {
        after = keyframed ? kind : after;
        told += keyframed ? "PARAMETER_CHANGED_EXTRAPOLATION_AFTER 0 0\n" : "";
    }
    void vSetDefault(double value) { standard.still = value; }
    void vSetDefaultInterpolation(Interpolation kind) { first = kind; }
    void setSplittable(bool value) { splittable = value; }
    void setViewInterpolation(const MVInterpolationParams& params) { mode = params.mode; }

    template <class Map> void adjustKeyframesTime(const Map& map) {
        for (auto& [id, data] : views) {
            for (Key& key : data.keys)
                key.time = keyframed ? map(key.time) : key.time;
        }
    }

    void take(const Model& other, bool withDefaultInterpolation) {
        const Model former = std::exchange(*this, other);
        standard = former.standard;
        told = former.told;
        first = withDefaultInterpolation ? first : former.first;
        tell("PARAMETER_ASSIGNED");
    }
    void vCopyKeyframeDataFrom(const Model* other) { take(*other, false); }
    void assignFrom(const Model& other) { take(other, true); }
    const Model& exportState() const { return *this; }
    void doImportState(const Model& other) { take(other, true); }

    void give(View to, Data contents) {
        target(to) = std::move(contents);
        tell("VALUE_CHANGED", 0, to);
    }
    void copyViewData(View from, View to, const Model* source) {
        if (splittable)
            give(to, (source ? source : this)->read(from));
    }
    void uniquifyView(View view) { initialiseHeroView(view, view); }
    bool initialiseHeroView(View hero, View from) {
        if (!splittable || !hero.isValid() || owns(hero))
            return false;
        give(hero, read(from));
        return true;
    }

    bool deleteView(View view) {
        if (views.size() < 2 || !owns(view))
            return false;
        views.erase(view.id());
        isSplit = views.size() > 1;
        tell("VIEW_REMOVED", 0, view);
        return true;
    }

    void clearViewData() {
        isSplit = false;
        for (const auto& [id, data] : std::exchange(views, {}))
            tell("VIEW_REMOVED", 0, View(id));
    }

    std::vector<View> viewList() const {
        std::vector<View> list;
        for (const auto& [id, data] : views)
            list.emplace_back(id);
        return list;
    }
};

} // namespace Worlds
