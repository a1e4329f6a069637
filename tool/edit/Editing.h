#pragma once

#include "tool/Project.h"
#include "tool/edit/ParameterPatch.h"

#include <functional>

namespace Tool {

/// What is done to each parameter that the patterns name.
using Edit = std::function<void(const FileParameter& parameter)>;

void declareOutput(Arguments& arguments);
/// Where to write. Throws `WrongUse` unless one place is named.
QString outputOf(const Arguments& arguments);

/// Edits the parameters, writes the text, and returns the exit code. Lines of others keep their bytes.
int editProject(const Arguments& arguments, const QStringList& patterns, const Edit& edit);

/// Writes what an edit has made of the file: all of it or nothing. When nothing has changed, a file of its own is
/// written all the same.
int writeEdited(const Arguments& arguments, const ProjectText& text, const LineChanges& changes);

} // namespace Tool
