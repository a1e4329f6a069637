#pragma once

#include "host/Export.h"

#include <QString>

/// What Prm expects of its host. A host may supply headers and classes of its own under these names.
namespace Bsc {

/// One step that can be done and undone. A new command has done nothing yet; from then on `doIt` and `undoIt` are
/// called in turn, any number of times.
///
/// Either call may throw. It then leaves things as it found them: a command whose `doIt` threw is never undone.
///
/// \snippet host_services.cpp command
/// \threads Done and undone on the thread of what it changes.
class PRM_HOST_EXPORT Command {
public:
    virtual void doIt() = 0;
    virtual void undoIt() = 0;
    /// A word on what the command concerns, for the usage log. May be empty, as it is here.
    virtual QString usageLogInfo() const;
    virtual ~Command();

    Command(const Command&) = delete;
    Command& operator=(const Command&) = delete;

protected:
    Command() = default;
};

} // namespace Bsc
