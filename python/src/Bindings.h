#pragma once

#include "python/src/Handles.h"

namespace PrmPython {

// Each adds its classes, or its methods of a class, to the module.
void bindParameters(py::module_& module);
void bindEdits(py::class_<Animated, Handle>& animated);
void bindReshaping(py::class_<Animated, Handle>& animated);
void bindUnanimated(py::module_& module);
void bindExtents(py::module_& module);
void bindChanges(py::module_& module, py::class_<Animated, Handle>& animated);
void bindAnswers(py::module_& module, py::class_<Handle>& basic);
void bindGroups(py::module_& module);
void bindProjects(py::module_& module);
void bindExchange(py::module_& module);

/// Calls the function with all members below the set, and their paths from there.
template <class Function>
void forEachBelow(const Prm::ParameterSet& set, const QString& prefix, const Function& function) {
    for (const auto& member : set.members()) {
        const QString path = prefix + (member.parameter ? member.parameter->scriptName() : member.set->scriptName());
        function(member, path);
        const auto* const inside =
            member.set ? member.set : dynamic_cast<const Prm::CompoundParameter*>(member.parameter);
        if (inside)
            forEachBelow(*inside, path + ".", function);
    }
}

/// The member of that path below the set. Throws KeyError.
py::object memberAt(const KeeperPointer& keeper, const Prm::ParameterSet& set, const QString& path);
/// Adds a parameter or group that Python made.
void addMember(const KeeperPointer& keeper, Prm::ParameterSet& set, py::handle member, int position = -1);

} // namespace PrmPython
