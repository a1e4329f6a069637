#pragma once

#include "host/bsc/Command.h"
#include "prm/Context.h"
#include "prm/Export.h"
#include "prm/Interpolation.h"
#include "prm/ParameterWithoutType.h"
#include "prm/track/Place.h"

#include <QPointer>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <boost/shared_ptr.hpp>

#include <memory>
#include <optional>
#include <vector>

namespace Bsc {
class CompositeCommand;
}

namespace Prm {

class CompoundParameter;
class ParameterSet;
class SerialisedKeyframe;

namespace detail {
class RetimingPlan;
class State;
} // namespace detail

/// A change of one parameter that can be done, undone, and done again. Edits know only the untyped interface, so they
/// serve every kind of parameter, compounds as well.
///
/// An edit does not own its parameter. Once that has died, doing and undoing do nothing. Either call leaves things as
/// it found them when something throws, an observer for instance; then the exception goes on. Redo does the change
/// anew, on whatever the parameter has become.
///
/// \snippet undo_stack.cpp offer
/// \threads Made, done, undone and deleted on the thread that owns the parameter.
class PRM_EXPORT ParameterEdit : public Bsc::Command {
public:
    /// The parameter's script name, followed by " (deleted)" once it has died. Empty for an edit of none.
    QString usageLogInfo() const override;
    ~ParameterEdit() override;

protected:
    explicit ParameterEdit(BasicParameter* edited);

    /// Null once it has died.
    BasicParameter* edited() const { return m_edited.data(); }
    /// The same, null also where it does not animate.
    ParameterWithoutType* parameter() const { return qobject_cast<ParameterWithoutType*>(m_edited.data()); }

private:
    QPointer<BasicParameter> m_edited;
    bool m_hadParameter;
    QString m_scriptName;
};

/// An edit that takes the state of what it concerns each time it is done and puts it back when it is undone, which
/// sends PARAMETER_ASSIGNED; `isImporting()` is true meanwhile. When doing it has changed nothing, no state is kept and
/// undoing does nothing.
///
/// An edit of a part whose compound is keyed together concerns all parts: doing it may give them keyframes or delete
/// theirs. Those that have changed are put back, too.
///
/// The state is of the whole parameter while that has at most 64 keyframes and views. Of a larger one it is the
/// settings and the views that the edit concerns: their static values, and the keyframes from the one before each
/// edited time to the one after it. What has been changed meanwhile by other means than edits that are undone before,
/// undoing takes back in the first case and leaves alone in the second.
///
/// \snippet every_edit.cpp keyframes
class PRM_EXPORT ParameterSnapshotEdit : public ParameterEdit {
public:
    void doIt() override;
    void undoIt() override;
    ~ParameterSnapshotEdit() override;

protected:
    explicit ParameterSnapshotEdit(BasicParameter* edited);

    /// Whether there is anything to do. Called with a living parameter, before the state is taken.
    virtual bool applies() = 0;
    /// Does it. Observers may destroy the parameter.
    virtual void apply() = 0;
    /// Where alone in an animated parameter `apply` changes anything. Empty, as here, where that is not known.
    virtual detail::Places places() const;
    /// Of a living parameter; here around the places.
    virtual detail::State takeState() const;
    /// Whether the state can be put back now. True here.
    virtual bool mayUndo(const detail::State& former) const;

private:
    std::unique_ptr<const detail::State> m_former;
};

/// Adds a keyframe with the value that the parameter has there. Nothing where there is one already, or for a parameter
/// that is not keyframed.
///
/// \snippet every_edit.cpp keyframes
class PRM_EXPORT ParameterAddKeyEdit : public ParameterSnapshotEdit {
public:
    ParameterAddKeyEdit(ParameterWithoutType& parameter, const Context& context);
    /// Appends one edit; the second form one for each of the state's views.
    static Bsc::CompositeCommand& appendToCommand(ParameterWithoutType& parameter, const Context::Explicit& context,
                                                  Bsc::CompositeCommand& command);
    static Bsc::CompositeCommand& appendToCommand(ParameterWithoutType& parameter, const Frame& frame,
                                                  const AnimationState& state, Bsc::CompositeCommand& command);

protected:
    bool applies() override;
    void apply() override;
    detail::Places places() const override;

private:
    Context m_context;
};

/// Deletes the keyframe at a time in a view.
///
/// \snippet every_edit.cpp keyframes
class PRM_EXPORT ParameterDeleteKeyEdit : public ParameterSnapshotEdit {
public:
    ParameterDeleteKeyEdit(ParameterWithoutType& parameter, const Context::Explicit& context);
    /// Appends one edit; the second form one for each of the state's views.
    static Bsc::CompositeCommand& appendToCommand(ParameterWithoutType& parameter, const Context::Explicit& context,
                                                  Bsc::CompositeCommand& command);
    static Bsc::CompositeCommand& appendToCommand(ParameterWithoutType& parameter, const Frame& frame,
                                                  const AnimationState& state, Bsc::CompositeCommand& command);

protected:
    bool applies() override;
    void apply() override;
    detail::Places places() const override;

private:
    Context::Explicit m_context;
};

/// Deletes all keyframes of a view that has data of its own.
///
/// \snippet every_edit.cpp keyframes
class PRM_EXPORT ParameterDeleteAllKeysEdit : public ParameterSnapshotEdit {
public:
    ParameterDeleteAllKeysEdit(ParameterWithoutType& parameter, const View& view);

protected:
    bool applies() override;
    void apply() override;
    detail::Places places() const override;

private:
    View m_view;
};

/// Gives the keyframe at a time another kind of interpolation.
///
/// \snippet every_edit.cpp curves
class PRM_EXPORT ParameterInterpolationEdit : public ParameterSnapshotEdit {
public:
    ParameterInterpolationEdit(ParameterWithoutType& parameter, Interpolation kind, const Context& context);

protected:
    bool applies() override;
    void apply() override;
    detail::Places places() const override;

private:
    Interpolation m_kind;
    Context m_context;
};

/// Gives a keyframe, named by its position, other interpolation data.
///
/// \snippet every_edit.cpp curves
class PRM_EXPORT ParameterInterpolationDataEdit : public ParameterSnapshotEdit {
public:
    ParameterInterpolationDataEdit(ParameterWithoutType& parameter, const IType& data, unsigned int index,
                                   const View& view);

protected:
    bool applies() override;
    void apply() override;
    detail::Places places() const override;

private:
    Context keyframe() const;

    IType m_data;
    unsigned int m_index;
    View m_view;
};

/// Sets the value at a context: keys it on a keyframed parameter whose context names a frame, else sets the static
/// value of the view. As `setVariantValue`, but with any context: the view counts only for a splittable parameter.
///
/// \snippet every_edit.cpp values
class PRM_EXPORT ParameterSetValueEdit : public ParameterSnapshotEdit {
public:
    ParameterSetValueEdit(ParameterWithoutType& parameter, const QVariant& value, const Context& context);

protected:
    bool applies() override;
    void apply() override;
    detail::Places places() const override;

private:
    Context written() const;

    QVariant m_value;
    Context m_context;
};

/// Sets the static value of a view, also of a keyframed parameter; or the value of one that does not animate.
///
/// \snippet every_edit.cpp values
class PRM_EXPORT ParameterSetStaticValueEdit : public ParameterSnapshotEdit {
public:
    ParameterSetStaticValueEdit(BasicParameter& parameter, const QVariant& value, const View& view = View());

protected:
    bool applies() override;
    void apply() override;
    detail::Places places() const override;

private:
    View written() const;

    QVariant m_value;
    View m_view;
};

/// Resets at a context: as `vReset`.
///
/// \snippet every_edit.cpp keyframes
class PRM_EXPORT ParameterResetEdit : public ParameterSnapshotEdit {
public:
    ParameterResetEdit(ParameterWithoutType& parameter, const Context& context);

protected:
    bool applies() override;
    void apply() override;
    detail::Places places() const override;

private:
    Context m_context;
};

/// Gives a view data of its own, equal to those that it shows.
///
/// \snippet every_edit.cpp views
class PRM_EXPORT ParameterSplitViewEdit : public ParameterSnapshotEdit {
public:
    ParameterSplitViewEdit(ParameterWithoutType& parameter, const View& view);

protected:
    bool applies() override;
    void apply() override;
    detail::Places places() const override;

private:
    View m_view;
};

/// Takes a view's own data away, except from the only one that has some.
///
/// \snippet every_edit.cpp views
class PRM_EXPORT ParameterDeleteViewEdit : public ParameterSnapshotEdit {
public:
    ParameterDeleteViewEdit(ParameterWithoutType& parameter, const View& view);

protected:
    bool applies() override;
    void apply() override;
    detail::Places places() const override;

private:
    View m_view;
};

/// How keyframes are moved in time: those from `first` to `last`, both included, go from t to
/// `pivot + scale * (t - pivot) + shift`.
///
/// \snippet every_edit.cpp times
/// \threads A plain value.
struct PRM_EXPORT Retiming {
    /// All keyframes, later by so many frames.
    static Retiming shifted(double frames);
    /// All keyframes, farther from the pivot by a factor.
    static Retiming scaled(double factor, Time pivot = Time());
    /// The same of the keyframes of a range only.
    Retiming between(Time from, Time to) const;

    /// Whether the scale is above 0, and all numbers are finite. Another retiming does nothing.
    bool isUsable() const;
    bool concerns(Time time) const { return time >= first && time <= last; }
    /// Where a keyframe of the range goes that is at this time.
    Time operator()(Time time) const;
    /// The same of any keyframe: one outside the range stays.
    Time moved(Time time) const;

    Time first;
    Time last;
    Time pivot;
    double scale = 1.0;
    double shift = 0.0;
};

/// Moves a range of keyframes, in every view with data of its own; of a compound those of each part. Curves keep their
/// shape.
///
/// The moved keyframes keep their order. One that comes to the time of a keyframe that stays takes its place; of
/// several that come to the same time the last one is left. When any of them would come to a time that is none, nothing
/// is moved. Sends, once all are moved, one KEYFRAME_MOVED for each view as long as no keyframe is passed or replaced,
/// else KEYFRAME_REMOVED from the last position on, then KEYFRAME_ADDED from the first one on, and for a keyframe that
/// was replaced KEYFRAME_CHANGED_VALUE and KEYFRAME_CHANGED_INTERPOLATION. A compound sends these with positions in its
/// list of keyframes; each of its parts that has changed sends PARAMETER_ASSIGNED.
///
/// \snippet every_edit.cpp times
class PRM_EXPORT ParameterRetimeEdit : public ParameterSnapshotEdit {
public:
    ParameterRetimeEdit(ParameterWithoutType& parameter, const Retiming& retiming);
    ~ParameterRetimeEdit() override;
    /// Appends one edit, also for a compound; the last form one for each parameter of the set and its subsets. A set
    /// that is a compound is retimed as one parameter.
    static Bsc::CompositeCommand& appendToCommand(ParameterWithoutType& parameter, const Retiming& retiming,
                                                  Bsc::CompositeCommand& command);
    static Bsc::CompositeCommand& appendToCommand(CompoundParameter& parameter, const Retiming& retiming,
                                                  Bsc::CompositeCommand& command);
    static Bsc::CompositeCommand& appendToCommand(ParameterSet& set, const Retiming& retiming,
                                                  Bsc::CompositeCommand& command);

protected:
    bool applies() override;
    void apply() override;
    detail::Places places() const override;

private:
    Retiming m_retiming;
    std::unique_ptr<const detail::RetimingPlan> m_plan;
};

/// Pastes keyframes from text, one a line as `textOf` gives them. A keyframe that is at one of their times already is
/// replaced. Doing it throws `std::runtime_error` for a line that is no keyframe, before anything changes.
///
/// Times and shapes are taken exactly as the text has them. What is pasted from `textOf` is what was copied, digit for
/// digit. Lines of project text have six digits; then two keyframes that were close to each other may come to one
/// time, of which the last is left: `losses` says so before.
///
/// \snippet every_edit.cpp times
class PRM_EXPORT ParameterPasteKeyframesEdit : public ParameterSnapshotEdit {
public:
    /// With a valid `at`, all are moved so that the first of them comes to that time. With a valid `view`, all go into
    /// that view; otherwise each goes into the one that its line names.
    ParameterPasteKeyframesEdit(ParameterWithoutType& parameter, const QString& text, Time at = Time(Time::INVALID),
                                const View& view = View(View::INVALID()));
    /// A sentence on each keyframe of the text that would be lost, because a later line has the same time and view.
    /// Throws as doing it.
    QStringList losses() const;
    /// The keyframes of a view from `first` to `last`, both included, in lines of project text whose numbers have all
    /// digits that they need.
    static QString textOf(const ParameterWithoutType& parameter, const View& view, Time first, Time last);

protected:
    bool applies() override;
    void apply() override;
    detail::Places places() const override;

private:
    QString m_text;
    Time m_at;
    View m_view;
    /// Those of the text, between the two steps of doing it.
    std::vector<boost::shared_ptr<SerialisedKeyframe>> m_wanted;
};

/// An edit of one setting, put back through the same mutator, so that observers are notified both ways. Where the
/// parameter does not return its own setting (it shows its master's, or is a compound), a state is put back instead.
///
/// \snippet every_edit.cpp settings
class PRM_EXPORT ParameterSettingEdit : public ParameterEdit {
public:
    void doIt() override;
    void undoIt() override;
    ~ParameterSettingEdit() override;

protected:
    ParameterSettingEdit(ParameterWithoutType& parameter, quint32 wanted);

    virtual bool applies(const ParameterWithoutType& parameter) const;
    virtual bool answersItself(const ParameterWithoutType& parameter) const;
    virtual quint32 present(const ParameterWithoutType& parameter) const = 0;
    virtual void set(ParameterWithoutType& parameter, quint32 setting) const = 0;

private:
    void change(ParameterWithoutType& parameter, quint32 from, quint32 to) const;

    quint32 m_wanted;
    std::optional<quint32> m_former;
    std::unique_ptr<const detail::State> m_state;
};

/// Gives a parameter another extrapolation before its first keyframe; nothing on one that is not keyframed.
///
/// \snippet every_edit.cpp curves
class PRM_EXPORT ParameterExtrapolationBeforeEdit : public ParameterSettingEdit {
public:
    ParameterExtrapolationBeforeEdit(ParameterWithoutType& parameter, Extrapolation kind);

protected:
    bool applies(const ParameterWithoutType& parameter) const override;
    bool answersItself(const ParameterWithoutType& parameter) const override;
    quint32 present(const ParameterWithoutType& parameter) const override;
    void set(ParameterWithoutType& parameter, quint32 setting) const override;
};

/// Gives a parameter another extrapolation after its last keyframe; nothing on one that is not keyframed.
///
/// \snippet every_edit.cpp curves
class PRM_EXPORT ParameterExtrapolationAfterEdit : public ParameterSettingEdit {
public:
    ParameterExtrapolationAfterEdit(ParameterWithoutType& parameter, Extrapolation kind);

protected:
    bool applies(const ParameterWithoutType& parameter) const override;
    bool answersItself(const ParameterWithoutType& parameter) const override;
    quint32 present(const ParameterWithoutType& parameter) const override;
    void set(ParameterWithoutType& parameter, quint32 setting) const override;
};

/// Hides a parameter from the user, or shows it again.
///
/// \snippet every_edit.cpp settings
class PRM_EXPORT ParameterWithoutTypeHideEdit : public ParameterSettingEdit {
public:
    ParameterWithoutTypeHideEdit(ParameterWithoutType& parameter, bool hidden);

protected:
    quint32 present(const ParameterWithoutType& parameter) const override;
    void set(ParameterWithoutType& parameter, quint32 setting) const override;
};

/// Locks a parameter, or unlocks it. The flag is the host's to heed: the library edits a locked parameter as any other.
///
/// \snippet every_edit.cpp settings
class PRM_EXPORT ParameterWithoutTypeLockEdit : public ParameterSettingEdit {
public:
    ParameterWithoutTypeLockEdit(ParameterWithoutType& parameter, bool locked);

protected:
    quint32 present(const ParameterWithoutType& parameter) const override;
    void set(ParameterWithoutType& parameter, quint32 setting) const override;
};

/// Makes one parameter the master of another, which is the one that is edited: undoing gives that one its own data and
/// its former master back. Without a master where the former one has died, or, with a warning, where it has come to
/// show the animation of the edited parameter.
///
/// \snippet every_edit.cpp links
class PRM_EXPORT ParameterAddConstrainedParameterEdit : public ParameterSnapshotEdit {
public:
    ParameterAddConstrainedParameterEdit(ParameterWithoutType& master, ParameterWithoutType& constrained);

protected:
    bool applies() override;
    void apply() override;
    detail::State takeState() const override;

private:
    QPointer<ParameterWithoutType> m_master;
};

/// Frees a parameter from its master, with a copy of the master's keyframes. Undoing does nothing when the master has
/// died meanwhile; nor, with a warning, when it has come to show the animation of the freed parameter.
///
/// \snippet every_edit.cpp links
class PRM_EXPORT ParameterWithoutTypeUnconstrainEdit : public ParameterSnapshotEdit {
public:
    explicit ParameterWithoutTypeUnconstrainEdit(ParameterWithoutType& constrained);

protected:
    bool applies() override;
    void apply() override;
    detail::State takeState() const override;
    bool mayUndo(const detail::State& former) const override;
};

} // namespace Prm
