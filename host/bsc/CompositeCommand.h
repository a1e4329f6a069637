#pragma once

#include "host/Export.h"
#include "host/bsc/Command.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace Bsc {

/// Several commands that are done and undone as one: done in the order in which they were added, undone in reverse.
///
/// All or nothing (strong guarantee). If a command throws while it is done, those already done are undone in reverse.
/// If one throws while it is undone, those already undone are done again; the whole is then still done, and can be
/// undone later. Then the exception is rethrown. If a command throws during such a roll-back, Qt warns and the
/// roll-back continues; the caller receives the first exception only.
///
/// A command may add others while it is done; they are done in the same run. A composite must outlive its own `doIt`
/// and `undoIt`.
///
/// \snippet undo_stack.cpp offer
/// \threads One at a time. Doing and undoing on the thread on which the commands must run.
class PRM_HOST_EXPORT CompositeCommand : public Command {
public:
    CompositeCommand();
    ~CompositeCommand() override;

    /// Takes ownership of the command, even if this throws (`std::bad_alloc`; the command is then deleted). Ignores
    /// null. A command must be added only once, to one composite.
    void push_back(Command* command);
    std::size_t size() const noexcept { return m_commands.size(); }
    bool empty() const noexcept { return m_commands.empty(); }
    /// In the order in which they were added.
    const std::vector<std::unique_ptr<Command>>& commands() const noexcept { return m_commands; }

    void doIt() override;
    void undoIt() override;
    /// The texts of the commands, in order, separated by commas; empty ones are left out.
    QString usageLogInfo() const override;

private:
    std::vector<std::unique_ptr<Command>> m_commands;
};

} // namespace Bsc
