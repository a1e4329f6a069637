#pragma once

#include "host/bsc/CompositeCommand.h"

#include <QString>

#include <memory>
#include <vector>

namespace PrmPython {

/// Adds one to a number until the scope ends.
template <class Number> class Counted {
public:
    explicit Counted(Number& number) : m_number(number) { ++m_number; }
    ~Counted() { --m_number; }
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;

private:
    Number& m_number;
};

/// Throws RecursionError where edits that callbacks make are nested too deep. An edit that fails puts back what it did,
/// which calls slots again; so all further edits are refused until the outermost one has ended.
void refuseEndless(int running, bool& isTooDeep);

/// The undo steps of a project. Edits are done within blocks; the outermost one becomes a step. An edit that a slot
/// makes while another one runs is part of the same step. Runs without the interpreter's lock.
class History {
public:
    using Edit = std::unique_ptr<Bsc::Command>;

    /// Does the edit, in the innermost block or in one of its own. If it throws, nothing of it remains. The subject is
    /// the object that it restores by itself then.
    void run(Edit edit, const void* subject);

    /// An open block. It ends when the last reference to it goes, at the next use of the history.
    using Block = std::shared_ptr<const void>;
    Block begin(const QString& text);
    /// Ends the block, and those within it. Throws NotNow if it has ended already, or began before an edit that runs.
    void end(const Block& block);
    /// The same, and undoes all that was done in it. Exceptions of slots are only shown meanwhile.
    void rollBack(const Block& block);

    void undo();
    void redo();
    bool isRunning() const { return m_running > 0; }
    /// Whether a block is open or an edit runs.
    bool isBusy();
    /// Whether edits are being undone: then others are refused.
    bool isReplaying() const { return m_isReplaying; }

    struct Step {
        QString text;
        std::unique_ptr<Bsc::CompositeCommand> edits;
    };
    const std::vector<Step>& done() const { return m_done; }
    const std::vector<Step>& undone() const { return m_undone; }
    void clear();

    /// Whether the present thread puts back what an edit has done; exceptions of slots must not stop that.
    static bool isPuttingBack();

private:
    struct Entry {
        Edit edit;
        const void* subject;
    };
    struct OpenBlock {
        QString text;
        std::weak_ptr<const void> block;
        std::vector<Entry> entries;
        /// Whether it is of an edit that runs.
        bool isOfEdit = false;
    };

    void endInnermost();
    /// Deletes its edits, which become no step.
    void dropInnermost();
    void endAbandoned();
    void endWithin(const Block& block);
    void forgetUndone();
    static void undoFrom(OpenBlock& block, std::size_t first, const void* except);
    void replay(std::vector<Step>& from, std::vector<Step>& to, void (Bsc::CompositeCommand::*act)());

    std::vector<OpenBlock> m_blocks;
    std::vector<Step> m_done;
    std::vector<Step> m_undone;
    int m_running = 0;
    bool m_isReplaying = false;
    bool m_isTooDeep = false;
};

} // namespace PrmPython
