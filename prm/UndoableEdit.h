#pragma once

#include "host/bsc/Command.h"
#include "prm/Export.h"

#include <QString>

#include <functional>
#include <vector>

namespace Prm {

/// What an edit does, as the parts of a sentence for a menu: "Move 3 keyframes of logo.opacity".
///
/// \snippet undo_texts.cpp own
/// \threads A plain value.
struct PRM_EXPORT EditSummary {
    /// A parameter or a set. Two are the same if both members are equal.
    struct Subject {
        /// Only compared; null after the object was deleted.
        const void* object;
        QString path;
        bool isSet = false;
    };

    /// The sentence, without a full stop. "%n" becomes the count, "%p" the path of the only subject, or "2 parameters".
    QString toString() const;

    /// The sentence for a count of one, and for any other.
    QString one;
    QString several;
    /// Of keyframes, values or settings; 0 if the edit changes nothing.
    int count = 1;
    std::vector<Subject> subjects;
};

/// A command with a text for the menu, which may be merged with the next one. All edits of the library are such
/// commands. A host derives its own commands from this class if they shall be part of the texts.
///
/// \snippet undo_texts.cpp own
/// \threads Of one thread: that of what it changes.
class PRM_EXPORT UndoableEdit : public Bsc::Command {
public:
    ~UndoableEdit() override;

    /// What the edit does; once it was done, what it did then.
    virtual EditSummary summary() const = 0;

protected:
    UndoableEdit() = default;

    /// Each implementation of `doIt` calls this as its last step, each of `undoIt` the second one as its first step.
    /// Only so can edits be merged, and do others see that something lies between them.
    void noteDone();
    void noteUndone();

    /// The objects that undoing restores.
    virtual std::vector<const void*> restored() const;
    /// The other edits of the same step, and whether they restore some of the same objects.
    struct Others {
        /// Whether there are any before this one.
        bool comeBefore = false;
        bool shareBefore = false;
        bool shareAfter = false;
    };
    /// Returns what makes this edit do what it and the next one did together; empty, as here, if they are not alike.
    /// Both are done, and `next` is of the same class. What is returned throws nothing.
    virtual std::function<void()> mergerWith(UndoableEdit& next, const Others& others);

private:
    friend PRM_EXPORT bool mergeEdits(Bsc::Command& done, Bsc::Command& next);

    /// Counts what is done and undone on a thread; 0 if the edit is not done.
    quint64 m_step = 0;
};

/// What a command does, as a text for the menu of an undo stack. Of a composite command, the texts of its edits as one:
/// counts are added, and if the edits are not of one kind, the text is "Change logo.opacity" or "Change 3 parameters".
/// Empty if no edit of the command is an `UndoableEdit`.
PRM_EXPORT QString undoText(const Bsc::Command& command);

/// Merges a command that was just done into the one that was done before it, if both consist of like edits: of the same
/// class, parameter, view and keyframe, for example of one value that is dragged. Returns whether it did. Then `done`
/// does and undoes both, in one step, and `next` is to be deleted without being undone.
///
/// Returns false, and changes nothing, if the commands differ, if one of them is not done, or if another edit was done
/// or undone between them or since; changes by anything but edits are not noticed. The same if redoing the merged edits
/// would not do what both did, because one edit of the step copies a value that another one sets. Merged are edits that
/// replace what the former one has set: `ParameterSetValueEdit`, `ParameterSetStaticValueEdit`,
/// `ParameterInterpolationDataEdit`, those of settings, and `ParameterSplitViewEdit` beside them. Merging keeps the
/// state before the first edit only, however many there are. Throws `std::bad_alloc` before anything changes.
///
/// A drag of keyframes is one edit from the beginning: `InteractiveKeyframeEdit`.
PRM_EXPORT bool mergeEdits(Bsc::Command& done, Bsc::Command& next);

} // namespace Prm
