#pragma once

#include "host/bsc/Command.h"
#include "host/bsc/MementoBase.h"
#include "prm/Context.h"
#include "prm/Export.h"
#include "prm/Interpolation.h"
#include "prm/ParameterWithoutType.h"

#include <QPointer>
#include <QString>
#include <QVariant>
#include <boost/shared_ptr.hpp>

#include <optional>
#include <vector>

namespace Bsc {
class CompositeCommand;
}

namespace Prm {

class CompoundParameter;
class ParameterSet;

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

/// An edit that takes a snapshot of the parameter each time it is done and gives it back when it is undone, which sends
/// PARAMETER_ASSIGNED; `isImporting()` is true meanwhile. When doing it has changed nothing, no snapshot is left and
/// undoing does nothing.
///
/// The snapshot is of the whole parameter, except where the edit concerns keyframes at known times of a list of more
/// than 64: then it is of these and their neighbours. What else has been changed meanwhile, by other means than edits
/// that are undone before, undoing takes back in the first case and leaves alone in the second.
///
/// \snippet every_edit.cpp keyframes
class PRM_EXPORT ParameterSnapshotEdit : public ParameterEdit {
public:
    void doIt() override;
    void undoIt() override;
    ~ParameterSnapshotEdit() override;

protected:
    explicit ParameterSnapshotEdit(BasicParameter* edited);

    /// Whether there is anything to do. Called with a living parameter, before the snapshot is taken.
    virtual bool applies() const = 0;
    /// Does it, and answers whether anything has changed. Observers may destroy the parameter.
    virtual bool apply() = 0;
    /// Where alone in an animated parameter `apply` changes keyframes, all in one view; beside them only the static
    /// value of that view. Empty, as here, where that is not known.
    virtual std::vector<Context> places() const;

private:
    boost::shared_ptr<Bsc::MementoBase> takeSnapshot() const;

    boost::shared_ptr<Bsc::MementoBase> m_snapshot;
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
    bool applies() const override;
    bool apply() override;
    std::vector<Context> places() const override;

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
    bool applies() const override;
    bool apply() override;
    std::vector<Context> places() const override;

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
    bool applies() const override;
    bool apply() override;

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
    bool applies() const override;
    bool apply() override;
    std::vector<Context> places() const override;

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
    bool applies() const override;
    bool apply() override;
    std::vector<Context> places() const override;

private:
    View writtenView() const;

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
    bool applies() const override;
    bool apply() override;
    std::vector<Context> places() const override;

private:
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
    bool applies() const override;
    bool apply() override;
    std::vector<Context> places() const override;

private:
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
    bool applies() const override;
    bool apply() override;
    std::vector<Context> places() const override;

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
    bool applies() const override;
    bool apply() override;

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
    bool applies() const override;
    bool apply() override;

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
    /// Where a keyframe goes that is at this time.
    Time operator()(Time time) const;

    Time first;
    Time last;
    Time pivot;
    double scale = 1.0;
    double shift = 0.0;
};

/// Moves a range of keyframes, in every view with data of its own. Curves keep their shape.
///
/// The moved keyframes keep their order. One that comes to the time of a keyframe that stays takes its place; of
/// several that come to the same time the last one is left. When any of them would come to a time that is none, nothing
/// is moved. Sends one KEYFRAME_MOVED for each view as long as no keyframe is passed or replaced, else the changes of
/// the single additions and removals.
///
/// \snippet every_edit.cpp times
class PRM_EXPORT ParameterRetimeEdit : public ParameterSnapshotEdit {
public:
    ParameterRetimeEdit(ParameterWithoutType& parameter, const Retiming& retiming);
    /// Appends one edit, also for a compound; the last form one for each parameter of the set and its subsets.
    static Bsc::CompositeCommand& appendToCommand(ParameterWithoutType& parameter, const Retiming& retiming,
                                                  Bsc::CompositeCommand& command);
    static Bsc::CompositeCommand& appendToCommand(CompoundParameter& parameter, const Retiming& retiming,
                                                  Bsc::CompositeCommand& command);
    static Bsc::CompositeCommand& appendToCommand(ParameterSet& set, const Retiming& retiming,
                                                  Bsc::CompositeCommand& command);

protected:
    bool applies() const override;
    bool apply() override;

private:
    Retiming m_retiming;
};

/// Pastes keyframes from text, one a line as `textOf` gives them. A keyframe that is at one of their times already is
/// replaced. Doing it throws `std::runtime_error` for a line that is no keyframe, before anything changes.
///
/// \snippet every_edit.cpp times
class PRM_EXPORT ParameterPasteKeyframesEdit : public ParameterSnapshotEdit {
public:
    /// With a valid `at`, all are moved so that the first of them comes to that time. With a valid `view`, all go into
    /// that view; otherwise each goes into the one that its line names.
    ParameterPasteKeyframesEdit(ParameterWithoutType& parameter, const QString& text, Time at = Time(Time::INVALID),
                                const View& view = View(View::INVALID()));
    /// The keyframes of a view from `first` to `last`, both included.
    static QString textOf(const ParameterWithoutType& parameter, const View& view, Time first, Time last);

protected:
    bool applies() const override;
    bool apply() override;

private:
    QString m_text;
    Time m_at;
    View m_view;
};

/// An edit of one setting, given back through the same mutator, so that observers hear both ways. Where the parameter
/// does not answer with the one setting of its own (it shows its master's, or is a compound), a snapshot gives it back.
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
    boost::shared_ptr<Bsc::MementoBase> m_snapshot;
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

/// Gives a parameter another extrapolation behind its last keyframe; nothing on one that is not keyframed.
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

namespace detail {

/// Whose animation a parameter shows, and its place among those that show the same; and the master that it waits for.
class PRM_EXPORT MasterLink {
public:
    MasterLink() = default;
    explicit MasterLink(const ParameterWithoutType& constrained);

    ParameterWithoutType* master() const { return m_master.data(); }
    /// Ties the parameter as it was tied, or to nobody when that master has died. Tells nobody.
    void restore(ParameterWithoutType& constrained) const;

private:
    QPointer<ParameterWithoutType> m_master;
    /// The one that followed among those that show the same.
    QPointer<ParameterWithoutType> m_next;
    QString m_pending;
};

} // namespace detail

/// Makes one parameter the master of another, which is the one that is edited: undoing gives that one its own data and
/// its former master back.
///
/// \snippet every_edit.cpp links
class PRM_EXPORT ParameterAddConstrainedParameterEdit : public ParameterEdit {
public:
    ParameterAddConstrainedParameterEdit(ParameterWithoutType& master, ParameterWithoutType& constrained);
    void doIt() override;
    void undoIt() override;

private:
    QPointer<ParameterWithoutType> m_master;
    detail::MasterLink m_former;
    boost::shared_ptr<Bsc::MementoBase> m_snapshot;
};

/// Frees a parameter from its master, with a copy of the master's keyframes. Undoing does nothing when the master has
/// died meanwhile.
///
/// \snippet every_edit.cpp links
class PRM_EXPORT ParameterWithoutTypeUnconstrainEdit : public ParameterEdit {
public:
    explicit ParameterWithoutTypeUnconstrainEdit(ParameterWithoutType& constrained);
    void doIt() override;
    void undoIt() override;

private:
    void putBack(ParameterWithoutType& constrained) const;

    detail::MasterLink m_former;
    boost::shared_ptr<Bsc::MementoBase> m_snapshot;
};

} // namespace Prm
