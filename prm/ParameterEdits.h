#pragma once

#include "prm/Context.h"
#include "prm/Export.h"
#include "prm/Interpolation.h"
#include "prm/ParameterEdit.h"
#include "prm/ParameterWithoutType.h"
#include "prm/Retiming.h"

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

/// Adds a keyframe with the present value. Does nothing if there is one already, or if the parameter is not keyframed.
///
/// \snippet every_edit.cpp keyframes
class PRM_EXPORT ParameterAddKeyEdit : public ParameterSnapshotEdit {
public:
    ParameterAddKeyEdit(ParameterWithoutType& parameter, const Context& context);
    /// Appends one edit; the second form, one for each of the state's views.
    static Bsc::CompositeCommand& appendToCommand(ParameterWithoutType& parameter, const Context::Explicit& context,
                                                  Bsc::CompositeCommand& command);
    static Bsc::CompositeCommand& appendToCommand(ParameterWithoutType& parameter, const Frame& frame,
                                                  const AnimationState& state, Bsc::CompositeCommand& command);

protected:
    bool applies() override;
    void apply() override;
    int countNow() const override;
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
    /// Appends one edit; the second form, one for each of the state's views.
    static Bsc::CompositeCommand& appendToCommand(ParameterWithoutType& parameter, const Context::Explicit& context,
                                                  Bsc::CompositeCommand& command);
    static Bsc::CompositeCommand& appendToCommand(ParameterWithoutType& parameter, const Frame& frame,
                                                  const AnimationState& state, Bsc::CompositeCommand& command);

protected:
    bool applies() override;
    void apply() override;
    int countNow() const override;
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

/// Sets the kind of interpolation of the keyframe at a time.
///
/// \snippet every_edit.cpp curves
class PRM_EXPORT ParameterInterpolationEdit : public ParameterSnapshotEdit {
public:
    ParameterInterpolationEdit(ParameterWithoutType& parameter, Interpolation kind, const Context& context);

protected:
    bool applies() override;
    void apply() override;
    int countNow() const override;
    detail::Places places() const override;

private:
    Interpolation m_kind;
    Context m_context;
};

/// Sets kind and shape of the keyframe at an index.
///
/// \snippet every_edit.cpp curves
class PRM_EXPORT ParameterInterpolationDataEdit : public ParameterSnapshotEdit {
public:
    ParameterInterpolationDataEdit(ParameterWithoutType& parameter, const IType& data, unsigned int index,
                                   const View& view);

protected:
    bool applies() override;
    void apply() override;
    bool isReplacedBy(const ParameterSnapshotEdit& next) const override;
    void takeWanted(ParameterSnapshotEdit& next) override;
    detail::Places places() const override;

private:
    Context keyframe() const;

    IType m_data;
    unsigned int m_index;
    View m_view;
};

/// Sets the value at a context. If the parameter is keyframed and the time is a frame's, sets or adds the keyframe
/// there; otherwise sets the static value of the view. An unsplittable parameter ignores the view.
///
/// \snippet every_edit.cpp values
class PRM_EXPORT ParameterSetValueEdit : public ParameterSnapshotEdit {
public:
    ParameterSetValueEdit(ParameterWithoutType& parameter, const QVariant& value, const Context& context);

protected:
    bool applies() override;
    void apply() override;
    bool isReplacedBy(const ParameterSnapshotEdit& next) const override;
    void takeWanted(ParameterSnapshotEdit& next) override;
    detail::Places places() const override;

private:
    Context written() const;

    QVariant m_value;
    Context m_context;
};

/// Sets the static value of a view, also of a keyframed parameter; or the value of a parameter that is not animatable.
///
/// \snippet every_edit.cpp values
class PRM_EXPORT ParameterSetStaticValueEdit : public ParameterSnapshotEdit {
public:
    ParameterSetStaticValueEdit(BasicParameter& parameter, const QVariant& value, const View& view = View());

protected:
    bool applies() override;
    void apply() override;
    bool isReplacedBy(const ParameterSnapshotEdit& next) const override;
    void takeWanted(ParameterSnapshotEdit& next) override;
    detail::Places places() const override;

private:
    View written() const;

    QVariant m_value;
    View m_view;
};

/// Does `vReset` at a context.
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

/// Gives a view a copy of the data that it shows (`uniquifyView`).
///
/// \snippet every_edit.cpp views
class PRM_EXPORT ParameterSplitViewEdit : public ParameterSnapshotEdit {
public:
    ParameterSplitViewEdit(ParameterWithoutType& parameter, const View& view);

protected:
    bool applies() override;
    void apply() override;
    int countNow() const override;
    bool dependsOnValues() const override;
    bool isReplacedBy(const ParameterSnapshotEdit& next) const override;
    detail::Places places() const override;

private:
    View m_view;
};

/// Deletes the data of a view (`deleteView`). Does nothing for the only view with data.
///
/// \snippet every_edit.cpp views
class PRM_EXPORT ParameterDeleteViewEdit : public ParameterSnapshotEdit {
public:
    ParameterDeleteViewEdit(ParameterWithoutType& parameter, const View& view);

protected:
    bool applies() override;
    void apply() override;
    int countNow() const override;
    detail::Places places() const override;

private:
    View m_view;
};

/// Moves a range of keyframes in every view with data; of a compound, those of each part. Curves keep their shape.
///
/// The moved keyframes keep their order. A keyframe moved onto one that stays replaces it; of several moved to one time
/// the last remains. If any would move to an invalid time, nothing is moved.
///
/// When all are moved, emits for each view: if no keyframe passed or replaced another, one KEYFRAME_MOVED; otherwise
/// KEYFRAME_REMOVED in descending order of index, KEYFRAME_ADDED in ascending order, and for each keyframe that was
/// replaced KEYFRAME_CHANGED_VALUE and KEYFRAME_CHANGED_INTERPOLATION. A compound emits these with positions in its
/// union; each part that changed emits PARAMETER_ASSIGNED.
///
/// \snippet every_edit.cpp times
class PRM_EXPORT ParameterRetimeEdit : public ParameterSnapshotEdit {
public:
    ParameterRetimeEdit(ParameterWithoutType& parameter, const Retiming& retiming);
    ~ParameterRetimeEdit() override;
    /// Why doing the edit now would be refused, in words that follow a colon; empty if it would not.
    QString refusal() const;
    /// Appends one edit, for a compound too; the last form, one for each parameter of the set and its subsets. A set
    /// that is a compound counts as one parameter.
    static Bsc::CompositeCommand& appendToCommand(ParameterWithoutType& parameter, const Retiming& retiming,
                                                  Bsc::CompositeCommand& command);
    static Bsc::CompositeCommand& appendToCommand(CompoundParameter& parameter, const Retiming& retiming,
                                                  Bsc::CompositeCommand& command);
    static Bsc::CompositeCommand& appendToCommand(ParameterSet& set, const Retiming& retiming,
                                                  Bsc::CompositeCommand& command);

protected:
    bool applies() override;
    void apply() override;
    int countNow() const override;
    detail::Places places() const override;

private:
    Retiming m_retiming;
    std::unique_ptr<const detail::RetimingPlan> m_plan;
};

/// Pastes keyframes from text with one keyframe a line, as `textOf` returns it. Existing keyframes at the same times
/// are replaced. `doIt` throws `std::runtime_error` for a line that is no keyframe, before anything changes.
///
/// Times and shapes are read exactly. Text from `textOf` has all digits, so the pasted keyframes equal the copied ones.
/// Lines of project text have six digits: two keyframes close to each other may then have the same time, and the last
/// one is used. `losses` lists such keyframes beforehand.
///
/// \snippet every_edit.cpp times
class PRM_EXPORT ParameterPasteKeyframesEdit : public ParameterSnapshotEdit {
public:
    /// With a valid `at`, all keyframes are shifted so that the first, or what is at `origin` if that is valid, comes
    /// to that time. With a valid `view`, all are pasted into that view; otherwise each into the view that its line
    /// names.
    ParameterPasteKeyframesEdit(ParameterWithoutType& parameter, const QString& text, Time at = Time(Time::INVALID),
                                const View& view = View(View::INVALID()), Time origin = Time(Time::INVALID));
    /// One sentence for each keyframe of the text that is not pasted because a later line has the same time and view.
    /// Throws as `doIt` does.
    QStringList losses() const;
    /// The keyframes of a view from `first` to `last`, both included, as lines of project text whose numbers have all
    /// digits.
    static QString textOf(const ParameterWithoutType& parameter, const View& view, Time first, Time last);

protected:
    bool applies() override;
    void apply() override;
    int countNow() const override;
    detail::Places places() const override;

private:
    QString m_text;
    Time m_at;
    Time m_origin;
    View m_view;
    /// The keyframes of the text, from `applies` to `apply`.
    std::vector<boost::shared_ptr<SerialisedKeyframe>> m_wanted;
};

/// An edit of one setting. Undoing calls the same mutator with the former setting, so that doing and undoing emit the
/// same change. If the parameter does not return its own setting (it has a master, or is a compound), a snapshot is
/// restored instead.
///
/// \snippet every_edit.cpp settings
class PRM_EXPORT ParameterSettingEdit : public ParameterEdit {
public:
    void doIt() override;
    void undoIt() override;
    ~ParameterSettingEdit() override;

protected:
    ParameterSettingEdit(ParameterWithoutType& parameter, quint32 wanted,
                         const EditWords& words = {"Change %p", "Change %p"});

    virtual bool applies(const ParameterWithoutType& parameter) const;
    virtual bool answersItself(const ParameterWithoutType& parameter) const;
    virtual quint32 present(const ParameterWithoutType& parameter) const = 0;
    virtual void set(ParameterWithoutType& parameter, quint32 setting) const = 0;

    std::vector<const void*> restored() const override;
    std::function<void()> mergerWith(UndoableEdit& next, const Others& others) override;

private:
    void change(ParameterWithoutType& parameter, quint32 from, quint32 to) const;

    quint32 m_wanted;
    std::optional<quint32> m_former;
    std::shared_ptr<const detail::State> m_state;
};

/// Sets the extrapolation before the first keyframe. Does nothing if the parameter is not keyframed.
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

/// Sets the extrapolation after the last keyframe. Does nothing if the parameter is not keyframed.
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

/// Sets the hidden flag (`hide`).
///
/// \snippet every_edit.cpp settings
class PRM_EXPORT ParameterWithoutTypeHideEdit : public ParameterSettingEdit {
public:
    ParameterWithoutTypeHideEdit(ParameterWithoutType& parameter, bool hidden);

protected:
    quint32 present(const ParameterWithoutType& parameter) const override;
    void set(ParameterWithoutType& parameter, quint32 setting) const override;
};

/// Sets the locked flag (`setLocked`). The flag is for the host: the library edits locked parameters, too.
///
/// \snippet every_edit.cpp settings
class PRM_EXPORT ParameterWithoutTypeLockEdit : public ParameterSettingEdit {
public:
    ParameterWithoutTypeLockEdit(ParameterWithoutType& parameter, bool locked);

protected:
    quint32 present(const ParameterWithoutType& parameter) const override;
    void set(ParameterWithoutType& parameter, quint32 setting) const override;
};

/// Makes one parameter the master of another. The edited parameter is the other one: undoing restores its data and its
/// former master. It has no master afterwards if the former one was deleted or, with a warning, is now constrained to
/// the edited parameter.
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

/// Removes a parameter's master; the parameter keeps a copy of the master's keyframes (`bUnconstrain`). Undoing does
/// nothing if the master was deleted or, with a warning, is now constrained to the edited parameter.
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
