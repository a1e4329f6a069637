#include "prm/KeyframeSelectionEdit.h"
#include "prm/ParameterEdits.h"
#include "prm/ReshapingEdits.h"
#include "python/src/Bindings.h"
#include "python/src/Home.h"
#include "python/src/Kind.h"
#include "python/src/Retimings.h"

#include <array>

namespace PrmPython {

namespace {

/// Several edits as one.
class Together {
public:
    explicit Together(Prm::BasicParameter& parameter) : m_parameter(parameter) {}
    template <class Edit, class... Arguments> void add(Arguments&&... arguments) {
        m_edits->push_back(new Edit(std::forward<Arguments>(arguments)...));
    }
    void perform() { PrmPython::perform(m_parameter, std::unique_ptr<Bsc::Command>(std::move(m_edits))); }

private:
    Prm::BasicParameter& m_parameter;
    std::unique_ptr<Bsc::CompositeCommand> m_edits = std::make_unique<Bsc::CompositeCommand>();
};

/// Sets values at a time before all frames, which `ParameterSetValueEdit` takes for the static value.
class SetEarlyValueEdit : public Prm::ParameterSnapshotEdit {
public:
    SetEarlyValueEdit(Prm::ParameterWithoutType& parameter, const QVariant& value, const Prm::Context& at)
        : ParameterSnapshotEdit(&parameter, {"Set value of %p", "Set %n values of %p"}), m_value(value), m_at(at) {}

protected:
    bool applies() override { return true; }
    void apply() override { set(*parameter(), m_value); }
    Prm::detail::Places places() const override { return {Prm::detail::Place::at(written(*parameter()))}; }

private:
    Prm::Context written(const Prm::ParameterWithoutType& parameter) const {
        return parameter.splittable() ? m_at : Prm::Context(m_at.time, Prm::View());
    }
    void set(Prm::ParameterWithoutType& parameter, const QVariant& value) const {
        if (const auto* const compound = dynamic_cast<const Prm::CompoundParameter*>(&parameter))
            return setParts(*compound, value.toList());
        eachKind([&](auto* kind) {
            using T = std::remove_pointer_t<decltype(kind)>;
            auto* const typed = dynamic_cast<Prm::Parameter<T>*>(&parameter);
            if (typed)
                typed->vSetValue(Prm::ValueType<T>::fromVariant(value), written(parameter));
            return typed != nullptr;
        });
    }
    void setParts(const Prm::CompoundParameter& compound, const QVariantList& values) const {
        const auto listed = compound.subparameters();
        const std::vector<QPointer<Prm::ParameterWithoutType>> parts(listed.begin(), listed.end());
        for (std::size_t i = 0; i < parts.size(); ++i) {
            if (parts[i])
                set(*parts[i], values.value(static_cast<int>(i)));
        }
    }

    QVariant m_value;
    Prm::Context m_at;
};

/// Throws ValueError for a parameter, or a part of a compound, that is not keyframed.
void requireTimes(const Prm::ParameterWithoutType& parameter) {
    const auto* const compound = dynamic_cast<const Prm::CompoundParameter*>(&parameter);
    if (!compound)
        return requireKeyframed(parameter);
    for (const Prm::ParameterWithoutType* const part : compound->subparameters())
        requireTimes(*part);
}

bool hasKeyframes(const Prm::ParameterWithoutType& parameter, Prm::View view) {
    return parameter.keyframeCount(view) > 0;
}

void setValue(const Animated& self, py::handle value, std::optional<double> at, const ViewName& name) {
    const QVariant variant = variantFor(self.owned(), value);
    // Converting runs code of Python's, which may have deleted the parameter.
    Prm::ParameterWithoutType& parameter = self.owned();
    const Prm::View view = viewOf(self, name);
    if (at)
        requireTimes(parameter);
    if (!at && hasKeyframes(parameter, view))
        raise(PyExc_ValueError, titleOf(parameter) + " has keyframes: give the time, at=");
    if (view != Prm::View() && !parameter.splittable())
        raise(PyExc_ValueError, titleOf(parameter) + " has the same value in all views");
    Together edits(parameter);
    if (view != Prm::View())
        edits.add<Prm::ParameterSplitViewEdit>(parameter, view);
    const Prm::Context context(at ? timeOf(*at) : Prm::Time(Prm::Time::INVALID), view);
    if (at && !Prm::Frame(context).isValid())
        edits.add<SetEarlyValueEdit>(parameter, variant, context);
    else if (at)
        edits.add<Prm::ParameterSetValueEdit>(parameter, variant, context);
    else
        edits.add<Prm::ParameterSetStaticValueEdit>(parameter, variant, view);
    edits.perform();
}

void deleteKeyframe(const Animated& self, double at, const ViewName& view) {
    const Prm::Context keyframe = keyframeAt(self, at, view);
    Prm::ParameterWithoutType& parameter = self.owned();
    perform<Prm::ParameterDeleteKeyEdit>(parameter, parameter, Prm::Context::Explicit(keyframe));
}

void clearKeyframes(const Animated& self, const ViewName& view) {
    Prm::ParameterWithoutType& parameter = self.owned();
    perform<Prm::ParameterDeleteAllKeysEdit>(parameter, parameter, viewOf(self, view));
}

Prm::KeyframeSelection selected(const Animated& self, const Prm::TimeSpan& span, const MaybeView& view) {
    Prm::KeyframeSelection selection;
    if (view)
        selection.add(self.owned(), viewOf(self, *view), span);
    else
        selection.add(self.owned(), span);
    return selection;
}

void change(const Animated& self, const Prm::KeyframeSelection& selection, const Prm::KeyframeChange& change) {
    performUnlessRefused(self.owned(), std::make_unique<Prm::KeyframeSelectionEdit>(selection, change));
}

void moveKeyframe(const Animated& self, double from, double to, const MaybeView& view) {
    timeOf(to);
    const Prm::KeyframeSelection selection = selected(self, Prm::TimeSpan::at(timeOf(from)), view);
    if (selection.count() == 0)
        raise(PyExc_ValueError, QStringLiteral("%1 has no keyframe at %2").arg(titleOf(self.owned())).arg(from));
    change(self, selection, Prm::KeyframeChange::moved(to - from));
}

void retime(const Animated& self, double scale, double pivot, double shift, double start, double end) {
    Prm::ParameterWithoutType& parameter = self.owned();
    const Prm::Retiming retiming = retimingOf(scale, pivot, shift, start, end);
    performUnlessRefused(parameter, std::make_unique<Prm::ParameterRetimeEdit>(parameter, retiming));
}

void interpolate(const Animated& self, const QString& kind, double at, const MaybeView& view,
                 const std::optional<std::array<double, 4>>& shape) {
    const Prm::Context keyframe = keyframeAt(self, at, view.value_or(ViewName()));
    Prm::ParameterWithoutType& parameter = self.owned();
    if (!shape) {
        perform<Prm::ParameterInterpolationEdit>(parameter, parameter, interpolationOf(kind), keyframe);
        return;
    }
    const Prm::IType wanted(interpolationOf(kind), shape->at(0), shape->at(1), shape->at(2), shape->at(3));
    unsigned int index = 0;
    parameter.bNearestKeyframeIndex(keyframe, index);
    perform<Prm::ParameterInterpolationDataEdit>(parameter, parameter, wanted, index, keyframe.view);
}

template <class Edit> void editView(const Animated& self, const ViewName& view) {
    Prm::ParameterWithoutType& parameter = self.owned();
    if (!parameter.splittable())
        raise(PyExc_ValueError, titleOf(parameter) + " has the same data in all views");
    perform<Edit>(parameter, parameter, viewOf(self, view));
}

QString copied(const Animated& self, const ViewName& view, double start, double end) {
    const auto first = start > -infinity ? timeOf(start) : Prm::KeyframeSpan().first;
    const auto last = end < infinity ? timeOf(end) : Prm::KeyframeSpan().last;
    return Prm::ParameterPasteKeyframesEdit::textOf(self.owned(), viewOf(self, view), first, last);
}

void paste(const Animated& self, const QString& text, std::optional<double> at, const MaybeView& view) {
    Prm::ParameterWithoutType& parameter = self.owned();
    requireKeyframed(parameter);
    const Prm::Time time = at ? timeOf(*at) : Prm::Time(Prm::Time::INVALID);
    const Prm::View into = view ? viewOf(self, *view) : Prm::View::INVALID();
    perform<Prm::ParameterPasteKeyframesEdit>(parameter, parameter, text, time, into);
}

void reset(const Animated& self, double at, const ViewName& view) {
    Prm::ParameterWithoutType& parameter = self.owned();
    perform<Prm::ParameterResetEdit>(parameter, parameter, Prm::Context(timeOf(at), viewOf(self, view)));
}

} // namespace

void bindEdits(py::class_<Animated, Handle>& animated) {
    animated.def(
        "set", &setValue, py::arg("value"), py::arg("at") = py::none(), py::arg("view") = ViewName(),
        "Sets the value: at a time, in frames, as a keyframe; without a time, for all times.\nA view other than "
        "0 that has no data gets a copy of what it shows first.\n\nRaises TypeError for a value of another "
        "type, ValueError where there is no such value: at a time of a parameter that is not keyframed, "
        "without a time of one that has keyframes, in a view of one that is not splittable.");
    animated.def("delete", &deleteKeyframe, py::arg("at"), py::arg("view") = ViewName(),
                 "Deletes the keyframe at a time. Raises ValueError if there is none.");
    animated.def("clear", &clearKeyframes, py::arg("view") = ViewName(), "Deletes all keyframes of a view.");
    animated.def(
        "move", &moveKeyframe, py::arg("start"), py::arg("to"), py::arg("view") = py::none(),
        "Moves the keyframe at a time to another time, in one view or in all.\n\nRaises ValueError if there is "
        "none, or if the time is out of range.");
    animated.def("retime", &retime, py::arg("scale") = 1.0, py::arg("pivot") = 0.0, py::arg("shift") = 0.0,
                 py::arg("start") = -infinity, py::arg("end") = infinity,
                 "Moves keyframes, in all views, from t to pivot + scale * (t - pivot) + shift. Curves keep their "
                 "shape.\n\nRaises ValueError for a scale that is not above 0, and where a keyframe would "
                 "come to a time that is out of range.");
    animated.def(
        "interpolate", &interpolate, py::arg("kind"), py::arg("at"), py::arg("view") = py::none(),
        py::arg("shape") = py::none(),
        "Sets the kind of the segment that begins at a keyframe: \"Constant\", \"Linear\", \"Bezier\"; with its "
        "shape x1, y1, x2, y2.\n\nRaises ValueError for another kind, or if there is no keyframe.");
    animated.def("split", &editView<Prm::ParameterSplitViewEdit>, py::arg("view"),
                 "Gives a view a copy of the data that it shows.");
    animated.def("delete_view", &editView<Prm::ParameterDeleteViewEdit>, py::arg("view"),
                 "Deletes the data of a view, which then shows that of another. Does nothing for the only view with "
                 "data.");
    animated.def("copy", &copied, py::arg("view") = ViewName(), py::arg("start") = -infinity, py::arg("end") = infinity,
                 "The keyframes of a view as text, with all digits.");
    animated.def("paste", &paste, py::arg("text"), py::arg("at") = py::none(), py::arg("view") = py::none(),
                 "Pastes keyframes from text, from a time on, into a view; otherwise where the text says.\n\nRaises "
                 "ValueError for a line that is no keyframe, before anything changes; and for a parameter that is not "
                 "keyframed.");
    animated.def("reset", &reset, py::arg("at") = 0.0, py::arg("view") = ViewName(),
                 "Deletes the keyframe at a time; in a view without keyframes, sets the default value.");
}

} // namespace PrmPython
