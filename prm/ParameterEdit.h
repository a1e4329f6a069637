#pragma once

#include "prm/Export.h"
#include "prm/ParameterWithoutType.h"
#include "prm/UndoableEdit.h"
#include "prm/track/Place.h"

#include <QPointer>
#include <QString>

#include <memory>

namespace Prm {

namespace detail {
class State;
} // namespace detail

/// The words of an edit for `EditSummary`, in UTF-8, of static storage.
///
/// \snippet undo_texts.cpp own
/// \threads A plain value.
struct EditWords {
    const char* one;
    const char* several;
};

/// A change of one parameter that can be done, undone, and redone. Edits use the untyped interface only, so they work
/// with every kind of parameter, compounds included.
///
/// An edit does not own its parameter. After the parameter was deleted, doing and undoing do nothing. If an observer or
/// hook throws, the call restores the state before it and rethrows. Redoing does the change again, on the present state
/// of the parameter.
///
/// \snippet undo_stack.cpp offer
/// \threads Made, done, undone and deleted on the thread that owns the parameter.
class PRM_EXPORT ParameterEdit : public UndoableEdit {
public:
    /// The parameter's script name, followed by " (deleted)" after it was deleted. Empty without a parameter.
    QString usageLogInfo() const override;
    /// The words and the count of the edit, and the path of the parameter; its script name after it was deleted.
    EditSummary summary() const override;
    /// Replaces the words, for an edit that is a part of something else: an edit that sets the extrapolation while
    /// keyframes are pasted. `isCounted` is false if it does not add to the number of what is pasted.
    void describeAs(const EditWords& words, bool isCounted = true);
    ~ParameterEdit() override;

protected:
    explicit ParameterEdit(BasicParameter* edited, const EditWords& words = {"Change %p", "Change %p"});

    /// How many keyframes or values the edit would change now; 1 if they are not counted. Here: 1. The parameter
    /// exists.
    virtual int countNow() const;
    /// Keeps the count for `summary`: what `countNow` returned before the change, 0 where nothing has changed.
    /// Implementations of `doIt` call it.
    void takeCount(int count);
    /// The count that was kept; -1 before.
    int takenCount() const { return m_count; }

    /// Null after the parameter was deleted.
    BasicParameter* edited() const { return m_edited.data(); }
    /// The same; null also if the parameter is not animatable.
    ParameterWithoutType* parameter() const { return qobject_cast<ParameterWithoutType*>(m_edited.data()); }

private:
    QPointer<BasicParameter> m_edited;
    bool m_hadParameter;
    bool m_isCounted = true;
    /// As it was when the edit was done last; -1 before.
    int m_count = -1;
    EditWords m_words;
    QString m_scriptName;
};

/// An edit that takes a snapshot (memento) of what it concerns each time it is done, and restores it when it is undone.
/// Restoring emits PARAMETER_ASSIGNED; `isImporting()` is true meanwhile. If doing changes nothing, no snapshot is kept
/// and undoing does nothing.
///
/// An edit of a part whose compound is keyed together concerns all parts, because it may add or delete their keyframes.
/// Undoing restores every part that changed.
///
/// If the parameter has at most 64 keyframes and views, the snapshot holds all of them. Otherwise it holds the settings
/// and the views that the edit concerns: their static values, and the keyframes from the one before each edited time to
/// the one after it. Changes made since by anything but edits that were undone: undoing reverts them in the first case
/// and keeps them in the second.
///
/// \snippet every_edit.cpp keyframes
class PRM_EXPORT ParameterSnapshotEdit : public ParameterEdit {
public:
    void doIt() override;
    void undoIt() override;
    ~ParameterSnapshotEdit() override;

protected:
    explicit ParameterSnapshotEdit(BasicParameter* edited, const EditWords& words = {"Change %p", "Change %p"});

    /// Whether there is anything to do. Called before the snapshot is taken; the parameter exists.
    virtual bool applies() = 0;
    /// Does the change. Observers may delete the parameter.
    virtual void apply() = 0;
    /// The only places in an animatable parameter that `apply` changes. Empty, as here, if they are not known.
    virtual detail::Places places() const;
    /// Takes the snapshot; the parameter exists. Here: around the places.
    virtual detail::State takeState() const;
    /// Whether the snapshot can be restored now. Here: true.
    virtual bool mayUndo(const detail::State& former) const;
    /// Whether the next edit, of the same class and parameter, replaces all that this one has set. Here: false.
    virtual bool isReplacedBy(const ParameterSnapshotEdit& next) const;
    /// Sets what such an edit sets. Throws nothing.
    virtual void takeWanted(ParameterSnapshotEdit& next);
    /// Whether what this edit has changed depends on values that it found: keyframes of other parts get those that the
    /// parts show. Here: whether it has changed other parameters.
    virtual bool dependsOnValues() const;
    /// Whether undoing changes anything.
    bool hasChanged() const { return m_former != nullptr; }

    std::vector<const void*> restored() const override;
    std::function<void()> mergerWith(UndoableEdit& next, const Others& others) override;

private:
    void change();

    std::shared_ptr<const detail::State> m_former;
};

} // namespace Prm
