#include "host/bsc/CompositeCommand.h"

#include <QStringList>
#include <QtDebug>

namespace Bsc {

namespace {

// The message handler belongs to the host and may throw as well.
void warnOfFailedRollBack() noexcept {
    try {
        qWarning("Bsc::CompositeCommand: a command failed while it was rolled back");
    } catch (...) { // NOLINT(bugprone-empty-catch): nothing more can be done
    }
}

template <class Step> void rollBack(Step step) noexcept {
    try {
        step();
    } catch (...) {
        warnOfFailedRollBack();
    }
}

} // namespace

CompositeCommand::CompositeCommand() = default;
CompositeCommand::~CompositeCommand() = default;

void CompositeCommand::push_back(Command* command) {
    std::unique_ptr<Command> owner(command);
    if (owner)
        m_commands.push_back(std::move(owner));
}

void CompositeCommand::doIt() {
    std::size_t done = 0;
    try {
        for (; done < m_commands.size(); ++done)
            m_commands[done]->doIt();
    } catch (...) {
        for (; done > 0; --done)
            rollBack([&] { m_commands[done - 1]->undoIt(); });
        throw;
    }
}

void CompositeCommand::undoIt() {
    std::size_t done = m_commands.size();
    try {
        for (; done > 0; --done)
            m_commands[done - 1]->undoIt();
    } catch (...) {
        for (; done < m_commands.size(); ++done)
            rollBack([&] { m_commands[done]->doIt(); });
        throw;
    }
}

QString CompositeCommand::usageLogInfo() const {
    QStringList texts;
    for (const auto& command : m_commands) {
        const QString text = command->usageLogInfo();
        if (!text.isEmpty())
            texts.append(text);
    }
    return texts.join(QStringLiteral(", "));
}

} // namespace Bsc
