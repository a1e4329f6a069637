#pragma once

#include "prm/Export.h"
#include "prm/KeyframeChange.h"
#include "prm/KeyframeSelection.h"
#include "prm/UndoableEdit.h"

#include <QPointer>
#include <QString>

#include <memory>
#include <utility>
#include <vector>

namespace Prm {

namespace detail {
class State;
}

/// Changes the keyframes of a selection, over all its parameters, as one edit.
///
/// All new keyframes are computed from those at the beginning, so that none passes or replaces another because of an
/// order: keyframes that are moved keep their order among each other; one that stays is replaced only by one that comes
/// to exactly its time. Curves keep their shape. Where a compound keys its parts together, keyframes of the other parts
/// at the same times are moved and deleted as well.
///
/// If one parameter refuses (`refusal`), nothing is done. Emits for each parameter that changes: one KEYFRAME_MOVED for
/// each view with all indices if only times have changed, in the same order; otherwise one PARAMETER_ASSIGNED. Undoing
/// emits one PARAMETER_ASSIGNED for each. As with every edit, an observer that throws leaves everything as it was.
///
/// \snippet selection.cpp edit
/// \threads The owning thread of the parameters.
class PRM_EXPORT KeyframeSelectionEdit : public UndoableEdit {
public:
    KeyframeSelectionEdit(const KeyframeSelection& selection, const KeyframeChange& change);
    ~KeyframeSelectionEdit() override;

    /// Why doing the edit now would be refused, in words that follow a colon; empty if it would not.
    QString refusal() const;

    void doIt() override;
    void undoIt() override;
    /// The script names of the parameters, separated by commas, those of deleted ones followed by " (deleted)".
    QString usageLogInfo() const override;
    /// Of the selected keyframes, also where there is none any more; 0 once doing it has changed nothing.
    EditSummary summary() const override;

private:
    KeyframeSelection m_selection;
    KeyframeChange m_change;
    std::vector<std::pair<QPointer<ParameterWithoutType>, QString>> m_names;
    std::shared_ptr<const detail::State> m_former;
    bool m_isUseless = false;
};

/// An edit of a selection while the user drags: shows one change after another, each from the beginning, and ends with
/// one command or with what was there. What a preview passes over comes back with the next one.
///
/// The parameters hold what is shown. Whatever else changes the keyframes of a view meanwhile is replaced by the next
/// preview and by `cancel`. Parameters may be deleted.
///
/// Inside a notification of a preview, `preview` and `commit` do nothing, and `cancel` takes effect when the
/// notification has ended; the object may be deleted.
///
/// \snippet selection.cpp drag
/// \threads The owning thread of the parameters.
class PRM_EXPORT InteractiveKeyframeEdit {
public:
    explicit InteractiveKeyframeEdit(const KeyframeSelection& selection);
    /// Cancels. Exceptions of observers are caught.
    ~InteractiveKeyframeEdit();
    Q_DISABLE_COPY(InteractiveKeyframeEdit)

    /// Shows the change, made at the beginning. Emits what differs from what is shown, as `KeyframeSelectionEdit` does.
    /// Returns false, and leaves what is shown, if the change is refused. If an observer throws, puts the beginning
    /// back.
    bool preview(const KeyframeChange& change);
    /// Why the last preview was refused; empty if it was not.
    QString refusal() const;
    /// Puts the beginning back, exactly.
    void cancel();
    /// Puts the beginning back, and returns the edit that makes the last change that was shown, for the undo stack to
    /// do. Null if nothing is shown.
    std::unique_ptr<Bsc::Command> commit();

private:
    class Drag;

    std::shared_ptr<Drag> m_drag;
};

} // namespace Prm
