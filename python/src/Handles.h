#pragma once

#include "prm/CompoundParameter.h"
#include "prm/Parameter.h"
#include "prm/ParameterSet.h"
#include "prm/ParameterTree.h"
#include "prm/StaticParameter.h"
#include "prm/Views.h"
#include "python/src/Convert.h"
#include "python/src/Errors.h"
#include "python/src/Lifetime.h"

#include <QPointer>

#include <cstring>
#include <new>

namespace PrmPython {

/// All zero until the constructor has run: what Python's `__new__` makes refers to nothing.
struct Zeroed {
    static void* operator new(std::size_t size) { return std::memset(::operator new(size), 0, size); }
    static void* operator new(std::size_t /*size*/, void* place) { return place; }
    static void operator delete(void* place) { ::operator delete(place); }
};

/// A parameter, as Python refers to it. It owns what Python made, and keeps a project that it was found in.
struct Handle : Zeroed {
    Handle(KeeperPointer by, Prm::BasicParameter& parameter)
        : keeper(std::move(by)), object(&parameter), address(&parameter) {}

    /// Throws DeadReference. For what any thread may ask.
    Prm::BasicParameter& alive() const {
        if (Prm::BasicParameter* const parameter = object.data())
            return *parameter;
        throw DeadReference();
    }
    /// Also throws NotNow on a thread that does not own the object.
    Prm::BasicParameter& owned() const;
    bool equals(const Handle& other) const { return address == other.address && object && other.object; }

    KeeperPointer keeper;
    QPointer<Prm::BasicParameter> object;
    const void* address;
};

/// An animatable parameter.
struct Animated : Handle {
    Animated(KeeperPointer by, Prm::ParameterWithoutType& parameter)
        : Handle(std::move(by), parameter), untyped(&parameter) {}
    Prm::ParameterWithoutType& alive() const { return Handle::alive(), *untyped; }
    Prm::ParameterWithoutType& owned() const { return Handle::owned(), *untyped; }

    Prm::ParameterWithoutType* untyped;
};

template <class T> struct Typed : Animated {
    Typed(KeeperPointer by, Prm::Parameter<T>& parameter) : Animated(std::move(by), parameter), typed(&parameter) {}
    Prm::Parameter<T>& alive() const { return Handle::alive(), *typed; }
    Prm::Parameter<T>& owned() const { return Handle::owned(), *typed; }

    Prm::Parameter<T>* typed;
};

struct CompoundHandle : Animated {
    CompoundHandle(KeeperPointer by, Prm::CompoundParameter& parameter)
        : Animated(std::move(by), parameter), compound(&parameter) {}
    Prm::CompoundParameter& alive() const { return Handle::alive(), *compound; }
    Prm::CompoundParameter& owned() const { return Handle::owned(), *compound; }

    Prm::CompoundParameter* compound;
};

/// A parameter that does not animate.
template <class T> struct Unanimated : Handle {
    Unanimated(KeeperPointer by, Prm::StaticParameter<T>& parameter) : Handle(std::move(by), parameter) {}
};

/// A parameter set. It is no QObject, so a guard knows whether it is alive.
struct GroupHandle : Zeroed {
    GroupHandle(KeeperPointer by, Prm::ParameterSet& group)
        : keeper(std::move(by)), set(&group), life(betweenWork<Prm::detail::LifeGuard>(group)) {}
    bool isAlive() const { return life && life->alive(); }
    Prm::ParameterSet& owned() const;
    bool equals(const GroupHandle& other) const { return set == other.set && isAlive() && other.isAlive(); }

    KeeperPointer keeper;
    Prm::ParameterSet* set;
    std::shared_ptr<const Prm::detail::LifeGuard> life;
};

/// The project of an object; null if it is in none.
Home* homeOf(const Prm::BasicParameter& parameter);
Home* homeOf(const Prm::ParameterSet& set);

/// Throws NotNow unless the object's thread calls: that of its project, otherwise the keeper's.
void requireOwner(const Keeper& keeper, Home* home);

/// Handles of the class that fits.
py::object wrap(const KeeperPointer& keeper, Prm::BasicParameter& parameter);
py::object wrap(const KeeperPointer& keeper, Prm::ParameterSet& set);
py::object wrap(const KeeperPointer& keeper, const Prm::ParameterSet::Member& member);

/// The path of the parameter, or its name if it is in no set.
QString titleOf(const Prm::BasicParameter& parameter);

/// Throws ValueError for a parameter that is not keyframed.
void requireKeyframed(const Prm::ParameterWithoutType& parameter);
/// Throws ValueError if there is no keyframe at the time.
Prm::Context keyframeAt(const Animated& self, double time, const ViewName& view);

/// The view of that name in the project, or of that id. Throws KeyError for a name that is not known.
Prm::View findView(const Handle& handle, const ViewName& view);
/// The same for any object of the project, null for none.
Prm::View findView(Home* home, const ViewName& view);
inline Prm::View viewOf(const Handle& handle, const ViewName& view) {
    return view.name.isNull() ? Prm::View(view.id) : findView(handle, view);
}

/// The value as the parameter's class takes it. Throws TypeError for one of another type.
QVariant variantFor(const Prm::BasicParameter& parameter, py::handle value);

} // namespace PrmPython
