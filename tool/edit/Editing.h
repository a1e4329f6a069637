#pragma once

#include "tool/Project.h"
#include "tool/edit/ParameterPatch.h"

#include <functional>

namespace Tool {

/// One parameter that a user edits, with what an edit needs to know of it.
struct EditedParameter {
    const FileParameter& file;
    /// Without a way back for each step, which would be a copy of all keyframes.
    FileParameter::Data& data;
    QString path;
    Kind kind;

    /// A value for the parameter from a text that a person would write. Throws `Problem`.
    FileValue value(const QString& given) const;
    /// A number added to it. Values of other kinds throw `Problem`.
    FileValue sum(const FileValue& value, double offset) const;
};

/// What is done to each parameter that the patterns name.
using Edit = std::function<void(const EditedParameter& edited)>;

void declareOutput(Arguments& arguments);
/// Where to write. Throws `WrongUse` unless one place is named.
QString outputOf(const Arguments& arguments);

/// Edits the parameters, writes the text, and returns the exit code. Lines of others keep their bytes.
int editProject(const Arguments& arguments, const QStringList& patterns, const Edit& edit);

/// Writes what an edit has made of the file: all of it or nothing. When nothing has changed, a file of its own is
/// written all the same.
int writeEdited(const Arguments& arguments, const ProjectText& text, const LineChanges& changes);

} // namespace Tool
