#pragma once

#include "host/Export.h"
#include "host/bsc/Command.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace Bsc {

/// Several commands that are done and undone as one: done in the order in which they were added, undone in reverse.
///
/// All or nothing, both ways. When a command throws while it is done, those already done are undone in reverse; when
/// one throws while it is undone, those already undone are done again, so that the whole counts as done still and can
/// be undone another time. Then the exception goes on. A command that throws during such a roll-back is reported as a
/// Qt warning and passed over: the roll-back goes on, and the caller hears of the first exception only.
///
/// A command may add further ones while it is done; they are done in the same run. A composite must outlive its own
/// `doIt` and `undoIt`.
///
/// \snippet undo_stack.cpp offer
/// \threads One at a time: it is filled by whoever makes it, and done where its commands are to be done.
class PRM_HOST_EXPORT CompositeCommand : public Command {
public:
    CompositeCommand();
    ~CompositeCommand() override;

    /// Takes the command over, also when this throws (`std::bad_alloc`: the command is deleted then). Null is ignored.
    /// A command is added once, to one composite.
    void push_back(Command* command);
    std::size_t size() const noexcept { return m_commands.size(); }
    bool empty() const noexcept { return m_commands.empty(); }

    void doIt() override;
    void undoIt() override;
    /// What the commands say, in order, with a comma between; those that say nothing are left out.
    QString usageLogInfo() const override;

private:
    std::vector<std::unique_ptr<Command>> m_commands;
};

} // namespace Bsc
