#pragma once

#include "prm/ReshapingEdits.h"
#include "prm/document/ParameterPatch.h"
#include "tool/Project.h"

#include <functional>

namespace Tool {

/// Thrown by an edit that leaves a parameter as it is, with the reason. The others are edited all the same; the exit
/// code is then that of findings.
class Refusal : public Problem {
public:
    using Problem::Problem;
};

/// What is done to each parameter that the patterns name.
using Edit = std::function<void(const Project& project, const FileParameter& parameter)>;
/// What an edit has done to a parameter that it changed, in words that follow its path.
using Account = std::function<QString(const FileViews& before, const FileViews& after)>;

/// -o and --in-place, and --files.
void declareOutput(Arguments& arguments);
/// Throws `WrongUse` unless one place is named for each file.
void checkOutput(const Arguments& arguments);

/// Edits the parameters of each file, writes the texts, and returns the exit code. Lines of others keep their bytes.
/// With an account, says for each parameter that has changed what was done.
int editProject(const Arguments& arguments, const QStringList& patterns, const Edit& edit, const Account& account = {});
/// The same for an edit that gives the lines itself.
using LineEdit = std::function<LineChanges(const Project& project, const FileParameter& parameter)>;
int editLines(const Arguments& arguments, const QStringList& patterns, const LineEdit& edit);

/// Whether a parameter has keyframes in the span. If not, and the user names this very parameter, says so.
bool hasKeyframes(const Arguments& arguments, const Project& project, const FileParameter& parameter,
                  const Prm::KeyframeSpan& span = {});
/// Why a view cannot be edited.
QString withoutData(const Prm::View& view);

/// "4 keyframes to 3" or, of as many as before, with a verb, "2 of 4 keyframes eased".
Account accountBy(const QString& verb);

/// Writes what an edit has made of the file: all of it or nothing. When nothing has changed, a file of its own is
/// written all the same.
int writeEdited(const Arguments& arguments, const Project& project, const LineChanges& changes);

} // namespace Tool
