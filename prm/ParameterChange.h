#pragma once

#include "prm/Context.h"
#include "prm/Export.h"
#include "prm/change/Mortal.h"

#include <QList>
#include <QMetaType>
#include <QString>

class QDebug;

namespace Bsc {
class CompositeCommand;
}

namespace Prm {

class ParameterWithoutType;

template <class T> class Parameter;

namespace detail {
class AssignedDifference;
class ReachOfChange;
} // namespace detail

/// A record of one change of a parameter. Observers receive it by reference with the signal
/// `changed(Prm::ParameterChange&)`, on the thread that made the change, before the edit returns and after the per-view
/// locks are released. The record and its pointers are valid during that call only.
///
/// \snippet observing.cpp slot
/// \threads The thread that edits. Queued connections must not be used: the record no longer exists when they run.
class PRM_EXPORT ParameterChange {
public:
    /// The numbers never change.
    enum ChangeType : qint32 {
        KEYFRAME_ADDED = 0,
        KEYFRAME_REMOVED = 1,
        KEYFRAME_CHANGED_VALUE = 2,
        KEYFRAME_CHANGED_TIME_VALUE = 3,
        KEYFRAME_CHANGED_INTERPOLATION = 4,
        PARAMETER_CHANGED_EXTRAPOLATION_BEFORE = 5,
        PARAMETER_CHANGED_EXTRAPOLATION_AFTER = 6,
        PARAMETER_ASSIGNED = 7,
        VIEW_RESET = 8,
        VIEW_CLEARED = 9,
        PARAMETER_CHANGED_NAME = 10,
        VALUE_CHANGED = 11,
        KEYFRAME_MOVED = 12,
        COMMAND_REGISTERED = 13,
        PARAMETER_DELETED = 14,
        VIEW_ADDED = 15,
        VIEW_REMOVED = 16,
        PARAMETER_HIDDEN_CHANGED = 17,
        PARAMETER_LOCKED_CHANGED = 18,
        NUM_CHANGE_TYPES = 19
    };

    /// An empty record, as Qt's meta-type system creates it.
    ParameterChange();
    /// `index` becomes `affectedIndex`.
    ParameterChange(ChangeType ofType, ParameterWithoutType& ofParameter, unsigned int index);
    /// The sender owns the list.
    ParameterChange(ChangeType ofType, ParameterWithoutType* ofParameter, const QList<unsigned int>* indices);
    /// For COMMAND_REGISTERED.
    ParameterChange(ChangeType ofType, ParameterWithoutType& ofParameter, Bsc::CompositeCommand& registered,
                    const Context& at);

    /// \name Emit a change
    /// Each builds a record and passes it to the parameter's `emitChange`. An index is a position in the view's list of
    /// keyframes; -1 means the static value.
    //@{
    static void keyframeAdded(ParameterWithoutType& parameter, int index, const View& view);
    /// The index is that before the removal.
    static void keyframeRemoved(ParameterWithoutType& parameter, int index, const Context& context);
    static void keyframeChangedValue(ParameterWithoutType& parameter, int index, const View& view);
    static void keyframeChangedTimeValue(ParameterWithoutType& parameter, int index, const View& view);
    static void keyframeChangedInterpolation(ParameterWithoutType& parameter, int index, const View& view);
    static void changedExtrapolationBefore(ParameterWithoutType& parameter);
    static void changedExtrapolationAfter(ParameterWithoutType& parameter);
    static void parameterAssigned(ParameterWithoutType& parameter);
    static void valueChanged(ParameterWithoutType& parameter, const View& view);
    static void viewReset(ParameterWithoutType& parameter, const View& view);
    static void viewCleared(ParameterWithoutType& parameter, const View& view);
    static void viewAdded(ParameterWithoutType& parameter, const View& view);
    static void viewRemoved(ParameterWithoutType& parameter, const View& view);
    static void parameterDeleted(ParameterWithoutType& parameter);
    static void hiddenParameterChanged(ParameterWithoutType& parameter);
    static void lockedParameterChanged(ParameterWithoutType& parameter);
    static void keyframeMoved(ParameterWithoutType& parameter, QList<unsigned int>& indices, const View& view);
    /// Emits `commandRegistrationChanged`; notification switches do not apply.
    static void commandRegistered(ParameterWithoutType& parameter, Bsc::CompositeCommand& command,
                                  const Context& context);
    //@}

    /// The field `affectedIndex`.
    unsigned int getAffectedIndex() const { return affectedIndex; }
    /// The field `affectedIndices`.
    const QList<unsigned int>* getAffectedIndices() const { return affectedIndices; }
    /// The name of the type; for an unknown type "Unknown parameterchange type, forgot to add?".
    QString typeToString() const;

    /// The id of the meta-type. Also registers the name "Prm::ParameterChange&", by which Qt matches the signal's
    /// signature.
    static int qMetaType();

    /// Null only in an empty record.
    ParameterWithoutType* parameter = nullptr;
    ChangeType type = NUM_CHANGE_TYPES;
    /// The keyframe concerned (types 0 to 4), else 0.
    unsigned int affectedIndex = 0;
    /// The moved keyframes (KEYFRAME_MOVED), else null.
    const QList<unsigned int>* affectedIndices = nullptr;
    /// The registered command (COMMAND_REGISTERED), else null.
    Bsc::CompositeCommand* command = nullptr;
    /// The view concerned, at time 0; for KEYFRAME_REMOVED and COMMAND_REGISTERED also the time. VIEW_CLEARED does not
    /// name the cleared view.
    Context context;

private:
    friend class ParameterWithoutType;
    template <class T> friend class Parameter;
    friend class detail::ReachOfChange;

    static constexpr bool concernsValues(ChangeType type) {
        return type != PARAMETER_CHANGED_NAME && type != COMMAND_REGISTERED && type != PARAMETER_HIDDEN_CHANGED &&
               type != PARAMETER_LOCKED_CHANGED;
    }
    static void send(ParameterWithoutType& parameter, ChangeType type, int index = 0, const Context& at = {});
    static void assigned(ParameterWithoutType& parameter, const detail::AssignedDifference& difference);
    static void sendForView(ParameterWithoutType& parameter, ChangeType type, int index, const View& view);

    /// The parameter's count of changes; 0 in a record that was not emitted.
    quint32 m_number = 0;
    /// PARAMETER_ASSIGNED, if it is known.
    const detail::AssignedDifference* m_difference = nullptr;
};

/// A scope in which one type of change is emitted although the parameter's Qt signals are blocked. Scopes may be
/// nested, and the parameter may be deleted meanwhile.
///
/// \snippet observing.cpp block
/// \threads The thread that owns the parameter.
class PRM_EXPORT ScopedSignalPermit {
public:
    /// Overrides the block for one type (`overrideBlockedSignals`) until the scope ends, then restores the former
    /// state.
    ScopedSignalPermit(ParameterWithoutType& parameter, ParameterChange::ChangeType type);
    ~ScopedSignalPermit();
    ScopedSignalPermit(const ScopedSignalPermit&) = delete;
    ScopedSignalPermit& operator=(const ScopedSignalPermit&) = delete;

private:
    ParameterWithoutType& m_parameter;
    detail::LifeGuard m_guard;
    ParameterChange::ChangeType m_type;
    bool m_previous;
};

PRM_EXPORT QDebug operator<<(QDebug debug, const ParameterChange& change);

} // namespace Prm

Q_DECLARE_METATYPE(Prm::ParameterChange)
