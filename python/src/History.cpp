#include "python/src/History.h"

#include "prm/UndoableEdit.h"
#include "python/src/Errors.h"
#include "python/src/Lifetime.h"

#include <QDebug>

#include <algorithm>
#include <utility>

namespace PrmPython {

namespace {

thread_local int puttingBack = 0;

bool changesNothing(const Bsc::Command& edit) {
    if (const auto* const several = dynamic_cast<const Bsc::CompositeCommand*>(&edit)) {
        const auto& edits = several->commands();
        return std::all_of(edits.begin(), edits.end(), [](const auto& one) { return changesNothing(*one); });
    }
    const auto* const undoable = dynamic_cast<const Prm::UndoableEdit*>(&edit);
    return undoable && undoable->summary().count == 0;
}

} // namespace

bool History::isPuttingBack() {
    return puttingBack > 0;
}

History::Block History::begin(const QString& text) {
    if (m_isReplaying)
        throw NotNow("edits are refused while the project undoes or redoes; Project.is_replaying says so to a slot");
    refuseEndless(m_running, m_isTooDeep);
    endAbandoned();
    Block block = std::make_shared<int>();
    m_blocks.push_back({text, block, {}});
    return block;
}

bool History::isBusy() {
    if (m_running > 0)
        return true;
    endAbandoned();
    return !m_blocks.empty();
}

void refuseEndless(int running, bool& isTooDeep) {
    constexpr int deepest = 100;
    isTooDeep = running > 0 && (isTooDeep || running >= deepest);
    if (!isTooDeep)
        return;
    PyErr_SetString(PyExc_RecursionError, "edits that callbacks make are nested more than 100 deep");
    throw py::error_already_set();
}

void History::run(Edit edit, const void* subject) {
    const Block block = begin({});
    const std::size_t depth = m_blocks.size();
    try {
        m_blocks.back().isOfEdit = true;
        m_blocks.back().entries.push_back({std::move(edit), subject});
        const Counted<int> running(m_running);
        const Working working;
        m_blocks.back().entries.front().edit->doIt();
    } catch (...) {
        while (m_blocks.size() > depth)
            endInnermost();
        // The edit itself has put back its subject; what slots have done elsewhere is left.
        {
            const Working working;
            undoFrom(m_blocks.back(), 1, subject);
        }
        dropInnermost();
        throw;
    }
    while (m_blocks.size() >= depth)
        endInnermost();
}

void History::undoFrom(OpenBlock& block, std::size_t first, const void* except) {
    const Counted<int> back(puttingBack);
    for (std::size_t i = block.entries.size(); i > first; --i) {
        const Entry& entry = block.entries[i - 1];
        try {
            if (!except || entry.subject != except)
                entry.edit->undoIt();
        } catch (const std::exception& error) {
            qWarning() << "an edit could not be undone completely:" << error.what();
        }
    }
}

void History::endAbandoned() {
    while (!m_blocks.empty() && m_blocks.back().block.expired())
        endInnermost();
}

void History::endWithin(const Block& block) {
    const auto isThis = [&](const OpenBlock& open) { return open.block.lock() == block; };
    const auto found = std::find_if(m_blocks.begin(), m_blocks.end(), isThis);
    if (found == m_blocks.end())
        throw NotNow("the edit block has ended with the block or the edit within which it began");
    if (std::any_of(found, m_blocks.end(), [](const OpenBlock& open) { return open.isOfEdit; }))
        throw NotNow("an edit block cannot end within an edit that began in it");
    const auto place = static_cast<std::size_t>(found - m_blocks.begin());
    while (m_blocks.size() > place + 1)
        endInnermost();
}

void History::end(const Block& block) {
    endWithin(block);
    endInnermost();
}

void History::dropInnermost() {
    OpenBlock block = std::move(m_blocks.back());
    m_blocks.pop_back();
    // Deleting calls slots, which may begin blocks.
    const Deleting deleting;
    block.entries.clear();
}

void History::endInnermost() {
    OpenBlock block = std::move(m_blocks.back());
    m_blocks.pop_back();
    if (!m_blocks.empty()) {
        auto& entries = m_blocks.back().entries;
        entries.insert(entries.end(), std::make_move_iterator(block.entries.begin()),
                       std::make_move_iterator(block.entries.end()));
        return;
    }
    bool isEmpty = true;
    auto edits = std::make_unique<Bsc::CompositeCommand>();
    for (Entry& entry : block.entries) {
        isEmpty = isEmpty && changesNothing(*entry.edit);
        edits->push_back(entry.edit.release());
    }
    if (isEmpty)
        return;
    forgetUndone();
    const QString text = block.text.isEmpty() ? Prm::undoText(*edits) : block.text;
    m_done.push_back({text.isEmpty() ? QStringLiteral("Edit") : text, std::move(edits)});
}

void History::rollBack(const Block& block) {
    endWithin(block);
    {
        const Counted<int> running(m_running);
        m_isReplaying = true;
        const Working working;
        undoFrom(m_blocks.back(), 0, nullptr);
        m_isReplaying = false;
    }
    dropInnermost();
}

void History::replay(std::vector<Step>& from, std::vector<Step>& to, void (Bsc::CompositeCommand::*act)()) {
    if (isBusy())
        throw NotNow("undo and redo are refused within an edit and within an edit block");
    if (from.empty())
        return;
    to.reserve(to.size() + 1);
    const Counted<int> running(m_running);
    m_isReplaying = true;
    try {
        const Working working;
        ((*from.back().edits).*act)();
    } catch (...) {
        m_isReplaying = false;
        throw;
    }
    m_isReplaying = false;
    to.push_back(std::move(from.back()));
    from.pop_back();
}

void History::undo() {
    replay(m_done, m_undone, &Bsc::CompositeCommand::undoIt);
}

void History::redo() {
    replay(m_undone, m_done, &Bsc::CompositeCommand::doIt);
}

void History::forgetUndone() {
    if (m_undone.empty())
        return;
    // Deleting calls slots, which may edit.
    const Deleting deleting;
    std::exchange(m_undone, {}).clear();
}

void History::clear() {
    if (isBusy())
        throw NotNow("the steps cannot be forgotten within an edit");
    const Deleting deleting;
    std::exchange(m_undone, {}).clear();
    std::exchange(m_done, {}).clear();
}

} // namespace PrmPython
