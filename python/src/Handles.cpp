#include "python/src/Handles.h"

#include "python/src/Home.h"
#include "python/src/Kind.h"

namespace PrmPython {

Prm::BasicParameter& Handle::owned() const {
    Prm::BasicParameter& parameter = alive();
    // Told of its deletion, a callback has a handle that nothing keeps.
    if (!keeper)
        throw DeadReference();
    requireOwner(*keeper, homeOf(parameter));
    return parameter;
}

Prm::ParameterSet& GroupHandle::owned() const {
    if (!isAlive())
        throw DeadReference();
    requireOwner(*keeper, homeOf(*set));
    return *set;
}

Home* homeOf(const Prm::ParameterSet& set) {
    if (const auto* const compound = dynamic_cast<const Prm::CompoundParameter*>(&set))
        return homeOf(static_cast<const Prm::BasicParameter&>(*compound));
    return dynamic_cast<Home*>(set.parameterTree());
}

Home* homeOf(const Prm::BasicParameter& parameter) {
    const Prm::ParameterSet* const set = parameter.parentSet();
    return set ? homeOf(*set) : nullptr;
}

void requireOwner(const Keeper& keeper, Home* home) {
    if ((home ? *home : keeper).isOwned())
        return;
    throw NotNow("this thread does not own the object: other threads may evaluate it; its own thread edits it, and so "
                 "does a thread that has called take_over() of its project");
}

py::object wrap(const KeeperPointer& keeper, Prm::BasicParameter& parameter) {
    if (auto* const compound = dynamic_cast<Prm::CompoundParameter*>(&parameter))
        return py::cast(CompoundHandle(keeper, *compound));
    py::object typed;
    eachKind([&](auto* kind) {
        using T = std::remove_pointer_t<decltype(kind)>;
        if (auto* const found = dynamic_cast<Prm::Parameter<T>*>(&parameter))
            typed = py::cast(Typed<T>(keeper, *found));
        return bool(typed);
    });
    if (typed)
        return typed;
    if (auto* const animated = dynamic_cast<Prm::ParameterWithoutType*>(&parameter))
        return py::cast(Animated(keeper, *animated));
    if (auto* const number = dynamic_cast<Prm::StaticParameter<unsigned int>*>(&parameter))
        return py::cast(Unanimated<unsigned int>(keeper, *number));
    if (auto* const text = dynamic_cast<Prm::StaticParameter<QString>*>(&parameter))
        return py::cast(Unanimated<QString>(keeper, *text));
    return py::cast(Handle(keeper, parameter));
}

py::object wrap(const KeeperPointer& keeper, Prm::ParameterSet& set) {
    return py::cast(GroupHandle(keeper, set));
}

py::object wrap(const KeeperPointer& keeper, const Prm::ParameterSet::Member& member) {
    return member.parameter ? wrap(keeper, *member.parameter) : wrap(keeper, *member.set);
}

QString titleOf(const Prm::BasicParameter& parameter) {
    const QString path = parameter.path();
    return path.isEmpty() ? parameter.scriptName() : path;
}

void requireKeyframed(const Prm::ParameterWithoutType& parameter) {
    if (!parameter.isKeyframed())
        raise(PyExc_ValueError, titleOf(parameter) + " has one value for all times");
}

Prm::Context keyframeAt(const Animated& self, double time, const ViewName& view) {
    const Prm::Context at(timeOf(time), viewOf(self, view));
    const Prm::ParameterWithoutType& parameter = self.owned();
    if (!parameter.bKeyframeAt(Prm::Context::Explicit(at)))
        raise(PyExc_ValueError, QStringLiteral("%1 has no keyframe at %2").arg(titleOf(parameter)).arg(time));
    return at;
}

Prm::View findView(Home* home, const ViewName& view) {
    if (view.name.isNull())
        return Prm::View(view.id);
    const Prm::Views& views = home ? home->views : Home::usualViews();
    QStringList present;
    for (const Prm::View known : views.allViews()) {
        if (views.viewName(known) == view.name)
            return known;
        present << views.viewName(known);
    }
    for (const Prm::View known : views.allViews())
        if (views.viewNameShort(known) == view.name)
            return known;
    raiseMissing("view", view.name, present);
}

Prm::View findView(const Handle& handle, const ViewName& view) {
    Home* const home = handle.keeper ? handle.keeper->home() : nullptr;
    return findView(home ? home : homeOf(handle.alive()), view);
}

namespace {

QVariant partsFor(const Prm::CompoundParameter& compound, py::handle value) {
    const auto parts = compound.subparameters();
    const std::vector<QPointer<Prm::BasicParameter>> wanted(parts.begin(), parts.end());
    const std::size_t count = wanted.size();
    if (!py::isinstance<py::sequence>(value) || py::len(value) != count)
        throw py::type_error("a Compound takes a sequence with one value for each of its " + std::to_string(count) +
                             " parts");
    QVariantList values;
    const auto given = py::reinterpret_borrow<py::sequence>(value);
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        const py::object one = given[i];
        if (!wanted[i])
            throw DeadReference();
        values.append(variantFor(*wanted[i], one));
    }
    return values;
}

} // namespace

QVariant variantFor(const Prm::BasicParameter& parameter, py::handle value) {
    if (const auto* const compound = dynamic_cast<const Prm::CompoundParameter*>(&parameter))
        return partsFor(*compound, value);
    QVariant variant;
    const bool isKnown = eachKind([&](auto* kind) {
        using T = std::remove_pointer_t<decltype(kind)>;
        const bool isThis = dynamic_cast<const Prm::Parameter<T>*>(&parameter) != nullptr;
        if (isThis)
            variant = Prm::ValueType<T>::toVariant(valueFrom<T>(value));
        return isThis;
    });
    if (isKnown)
        return variant;
    if (dynamic_cast<const Prm::StaticParameter<unsigned int>*>(&parameter))
        return valueFrom<unsigned int>(value);
    if (dynamic_cast<const Prm::StaticParameter<QString>*>(&parameter))
        return valueFrom<QString>(value);
    throw py::type_error("values of this class cannot be set from Python");
}

} // namespace PrmPython
