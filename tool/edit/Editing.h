#pragma once

#include "tool/Project.h"
#include "tool/edit/WrittenParameter.h"

#include <functional>

namespace Tool {

/// One parameter that a user edits, with what an edit needs to know of it.
struct EditedParameter {
    WrittenParameter& written;
    QString path;
    ValueKind kind;

    WrittenParameter::Edited& parameter() const { return written.parameter(); }
    /// A value for the parameter from a text that a person would write, in the form of its kind. Throws `Problem`.
    WrittenValue value(const QString& text) const;
    /// A number added to it. Values of other kinds throw `Problem`.
    WrittenValue sum(const WrittenValue& value, double offset) const;
    /// Without a way back, which would be a copy of all keyframes for each of them.
    void setValue(const WrittenValue& value, const Prm::Context& context) const;
};

/// What is done to each parameter that the patterns name.
using Edit = std::function<void(const EditedParameter& edited)>;

// --- declare ---------------------------------------------------------------------------------------------------------

void declareOutput(Arguments& arguments);

// --- ask -------------------------------------------------------------------------------------------------------------

/// Where to write. Throws `WrongUse` unless one place is named.
QString outputOf(const Arguments& arguments);
double numberOption(const Arguments& arguments, const QString& option);
/// Whether a keyframe can go there.
bool isFrame(Prm::Time time);
Prm::Time timeOption(const Arguments& arguments, const QString& option);

// --- do --------------------------------------------------------------------------------------------------------------

/// Edits the parameters, writes the text, and answers the exit code. Lines of others keep their bytes.
int editProject(const Arguments& arguments, const QStringList& patterns, const Edit& edit);

/// Writes what an edit has made of the file: all of it or nothing. When nothing has changed, a file of its own is
/// written all the same.
int writeEdited(const Arguments& arguments, const ProjectText& text, const QByteArray& bytes);

} // namespace Tool
