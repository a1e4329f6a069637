#pragma once

#include "python/src/Handles.h"

namespace PrmPython {

// Each adds its classes, or its methods of a class, to the module.
void bindParameters(py::module_& module);
void bindEdits(py::class_<Animated, Handle>& animated);
void bindReshaping(py::class_<Animated, Handle>& animated);
void bindChanges(py::module_& module, py::class_<Animated, Handle>& animated);
void bindAnswers(py::module_& module, py::class_<Handle>& basic);
void bindGroups(py::module_& module);
void bindProjects(py::module_& module);
void bindExchange(py::module_& module);

/// The member of that path below the set. Throws KeyError.
py::object memberAt(const KeeperPointer& keeper, const Prm::ParameterSet& set, const QString& path);
/// Adds a parameter or group that Python made.
void addMember(const KeeperPointer& keeper, Prm::ParameterSet& set, py::handle member, int position = -1);

} // namespace PrmPython
