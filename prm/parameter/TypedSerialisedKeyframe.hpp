#pragma once

// One keyframe of a parameter as a value of its own.

#include "prm/Parameter.h"
#include "prm/SerialisedKeyframe.h"
#include "prm/text/KeyframeText.h"
#include "prm/text/NumberText.h"

#include <type_traits>

namespace Prm {

namespace detail {

/// What `ValueType<T>::read` makes of the text. Most texts are real numbers, which need no copy.
template <class T> T readValue(QStringView text) {
    if constexpr (std::is_same_v<T, double>) {
        bool isNumber = false;
        const double number = toDouble(text, &isNumber);
        if (isNumber)
            return number;
    }
    return ValueType<T>::read(text.toString());
}

} // namespace detail

template <class T> class Parameter<T>::TypedSerialisedKeyframe : public SerialisedKeyframe {
public:
    Context context() const override { return {time, view, flags}; }

    void adjustTime(float delta) override {
        time = time + static_cast<double>(delta);
        flags = {};
    }

    QString toString() const override { return written(detail::Digits::Six); }
    QString toExactString() const override { return written(detail::Digits::All); }

    void setFromString(const QString& text) override { setFromText(text); }

    void setFromText(QStringView text) {
        const detail::KeyframeText read = detail::readKeyframe(text, itype);
        time = read.time;
        if (read.view.isValid())
            view = read.view;
        else if (!view.isValid())
            view = View(View::defaultViewId());
        flags = {};
        value = valueMapper ? ValueType<T>::read(valueMapper(read.value.toString())) : detail::readValue<T>(read.value);
    }

    bool equals(const SerialisedKeyframe& other) const override {
        const auto* const same = dynamic_cast<const TypedSerialisedKeyframe*>(&other);
        return same && same->time == time && same->view == view && ValueType<T>::equal(same->value, value) &&
               same->itype == itype;
    }

    Time time;
    /// The invalid view means none.
    View view = View::INVALID();
    AnimationFlags flags;
    T value{};
    IType itype;
    /// Applied to the text of a value before it is read; may be empty.
    TextConversion valueMapper;

private:
    QString written(detail::Digits digits) const {
        QString valueText;
        ValueType<T>::write(valueText, value);
        QString text;
        detail::writeKeyframe(text, view, time, valueText, itype, digits);
        return text;
    }
};

} // namespace Prm
