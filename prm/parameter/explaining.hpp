#pragma once

// The steps from the question to the value.

#include "prm/Explanation.h"
#include "prm/Parameter.h"
#include "prm/parameter/StepNotes.h"
#include "prm/parameter/evaluation.hpp"

#include <utility>

namespace Prm {

namespace detail {

/// A class may compute its values by a `value` of its own, of which nothing else is known.
template <class T> bool overridesValue(const Parameter<T>& parameter) {
    static const void* const own = implementationOf<Parameter<T>>(Parameter<T>(), &Parameter<T>::value);
    return implementationOf<Parameter<T>>(parameter, &Parameter<T>::value) != own;
}

} // namespace detail

template <class T> void Parameter<T>::explainTo(Explanation& explanation, const Context& context) const {
    explanation.writer = [](const QVariant& value) {
        QString text;
        ValueType<T>::write(text, ValueType<T>::fromVariant(value));
        return text;
    };
    detail::StepNotes<T> notes;
    if (detail::overridesValue(*this)) {
        notes.asksHook({}, {}, value(context, nullptr));
        explanation.steps = notes.take();
        return;
    }
    const auto masters = [&](const Parameter& shown) {
        detail::StepNotes<T> leading;
        const ParameterWithoutType* next = this;
        while (next != &shown && (next = next->masterParameter()))
            leading.add(Explanation::Master).parameter = next;
        return leading;
    };
    const auto ownSteps = [&](const Parameter& shown) {
        detail::StepNotes<T> leading = masters(shown);
        if (const ParameterWithoutType* const master = shown.masterParameter())
            leading.add(Explanation::MasterOfAnotherType).parameter = master;
        T value{};
        Evaluation(shown, context, nullptr, &notes)(&context.time, 1, &value);
        return leading.take(notes.take());
    };
    const auto stepsOfMaster = [&](const Parameter& shown) {
        Explanation ofMaster;
        shown.explainTo(ofMaster, context);
        return masters(shown).take(std::move(ofMaster.steps));
    };
    explanation.steps = askShown(ownSteps, stepsOfMaster);
}

} // namespace Prm
