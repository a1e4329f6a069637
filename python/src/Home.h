#pragma once

#include "prm/ProjectFile.h"
#include "python/src/Handles.h"
#include "python/src/History.h"

#include <memory>

namespace PrmPython {

/// A project: its sets, its file, its undo steps, the names of its views. The tree of its sets, by which they find it.
class Home : public Keeper, public Prm::ParameterTree {
public:
    /// Takes the sets below a root without a name.
    explicit Home(const boost::shared_ptr<Prm::ParameterSet>& sets);
    ~Home() override;

    Home* home() override { return this; }
    void subtreeAdded(Prm::ParameterSet*) override {}
    void subtreeRemoved(Prm::ParameterSet*) override {}

    /// Throws DeadReference for a closed project, NotNow on a thread that does not own it.
    Prm::ParameterSet& ownedRoot() const;
    Prm::ProjectFile& ownedFile() const { return ownedRoot(), *file; }
    /// Deletes all objects.
    void close();

    /// "Left" and "Right", the names of views where no others are given.
    static const Prm::Views& usualViews();

    boost::shared_ptr<Prm::ParameterSet> root;
    std::unique_ptr<Prm::ProjectFile> file;
    History history;
    Prm::Views views;
    /// How many calls write it to a file, without the interpreter's lock.
    int saving = 0;
    /// What importing has left out.
    QStringList importLosses;
};
using HomePointer = std::shared_ptr<Home>;

/// Does an edit of an object of this thread: in its project's history, or just so.
void perform(Home* home, const void* subject, std::unique_ptr<Bsc::Command> edit);
inline void perform(const Prm::BasicParameter& parameter, std::unique_ptr<Bsc::Command> edit) {
    perform(homeOf(parameter), &parameter, std::move(edit));
}
template <class Edit, class... Arguments> void perform(const Prm::BasicParameter& parameter, Arguments&&... arguments) {
    perform(parameter, std::make_unique<Edit>(std::forward<Arguments>(arguments)...));
}
/// Throws ValueError if the edit would be refused.
template <class Edit> void performUnlessRefused(const Prm::BasicParameter& parameter, std::unique_ptr<Edit> edit) {
    const QString refusal = edit->refusal();
    if (!refusal.isEmpty())
        raise(PyExc_ValueError, titleOf(parameter) + ": " + refusal);
    perform(parameter, std::unique_ptr<Bsc::Command>(std::move(edit)));
}

} // namespace PrmPython
