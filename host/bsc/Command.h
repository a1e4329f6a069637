#pragma once

#include "host/Export.h"

#include <QString>

/// What Prm expects of its host. A host may supply headers and classes of its own under these names.
namespace Bsc {

/// One step that can be done and undone. A new command has done nothing; then `doIt` and `undoIt` are called
/// alternately, any number of times.
///
/// Either call may throw; it must then restore the state before it (strong guarantee). A command whose `doIt` threw is
/// not undone.
///
/// \snippet host_services.cpp command
/// \threads Done and undone on the thread of what it changes.
class PRM_HOST_EXPORT Command {
public:
    virtual void doIt() = 0;
    virtual void undoIt() = 0;
    /// What the command concerns, in one word, for the usage log. May be empty. Here: empty.
    virtual QString usageLogInfo() const;
    virtual ~Command();

    Command(const Command&) = delete;
    Command& operator=(const Command&) = delete;

protected:
    Command() = default;
};

} // namespace Bsc
