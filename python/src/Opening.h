#pragma once

#include "python/src/Home.h"

namespace PrmPython {

/// The bytes of a file. Throws OSError.
QByteArray contentsOf(py::handle path);
/// A project of a text, with the kinds of values that are given as rules.
HomePointer readProject(const QByteArray& text, const QStringList& rules, const std::optional<QStringList>& views);
void setViewNames(Home& home, const QStringList& names);
/// Changes the project into that of a text, in one undo step. What has the same path and kind stays the same object.
void adoptText(Home& home, const QByteArray& text, const QString& title);

} // namespace PrmPython
