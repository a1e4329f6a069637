#pragma once

#include "prm/BasicParameter.h"
#include "prm/Export.h"
#include "prm/Interpolation.h"
#include "prm/ParameterChange.h"
#include "prm/track/Place.h"
#include "prm/untyped/ExtraData.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <QStringView>
#include <boost/function.hpp>
#include <boost/shared_ptr.hpp>

#include <atomic>
#include <typeinfo>
#include <vector>

namespace Prm {

template <class T> class PRM_EXPORT Parameter;
class SerialisedKeyframe;
struct Explanation;

namespace detail {
class MasterLink;
class ReachOfChange;
class ShownState;
class KeyframeReshaper;
struct UntypedAnswers;
} // namespace detail

/// The interface of an animatable parameter without its value type: names, flags, the link to a master, upstream
/// parameters, notification, and all operations that hosts, project text and sets use. Times are in frames.
///
/// While it receives a change, an observer may do anything: call back, throw, or delete the parameter. The exception is
/// PARAMETER_DELETED, during which it must not delete the parameter.
///
/// \snippet parameter_panel.cpp untyped
/// \threads The owning thread edits and connects, and observers are called on it before the edit returns. The concrete
/// class, for example `Parameter`, says what other threads may call.
class PRM_EXPORT ParameterWithoutType : public BasicParameter {
    Q_OBJECT

public:
    using UpstreamParameters = detail::ExtraData::UpstreamParameters;
    using TextConversion = detail::ExtraData::TextConversion;

    /// A flag for the host. The library does not read it.
    static bool s_processNotifications;

    explicit ParameterWithoutType(bool locked = false, bool hidden = false, ParameterSet* parent = nullptr);
    /// Emits PARAMETER_DELETED, unless a derived class already did. Since nothing but this class is left of the object
    /// then, it leaves its sets and links first. The master, and parameters constrained to this one, keep their state;
    /// their references to this parameter become null.
    ~ParameterWithoutType() override;

    // The order of the virtual operations is part of the interface.

    /// \name Names and project text
    //@{
    /// The name in project text and scripts.
    const QString& scriptName() const override;
    /// Reads a line that begins with the script name, or an additional one, and a dot; returns whether it did.
    bool setFromScriptString(const QString& line, const ProjectFileVersion& version) override;

    /// Reads one line without the parameter's name; returns whether it was taken. `convert`, if not empty, is applied
    /// to the text of a value first. Throws `std::runtime_error` for a malformed keyframe.
    virtual bool streamInValue(const QString& line, const ProjectFileVersion& version, TextConversion convert) = 0;
    //@}

public Q_SLOTS:
    /// Receives every change of the upstream parameters. Does nothing here.
    virtual void onUpstreamParameterChanged(Prm::ParameterChange& change);

public:
    /// Copies locked, hidden, display name, script name, extra name and view selector. Emits nothing.
    virtual void assignFrom(const ParameterWithoutType& other);

    /// \name Observers
    /// A null observer is ignored.
    //@{
    /// Connects `changed` to the observer's slot, given as `SLOT(...)`, with a direct connection.
    virtual void attachObserver(const QObject* observer, const char* slot) const;
    /// Disconnects `changed` from the observer. Takes O(observers of this parameter).
    virtual void detachObserver(const QObject* observer) const;
    /// Disconnects `changed` from everything.
    virtual void detachAllObservers() const;
    //@}
    /// \name Names and project text
    //@{
    /// Sets the name shown to users. Emits nothing.
    virtual void setDisplayName(const QString& name);
    /// Sets the name in project text and scripts; blanks and apostrophes become "_". Emits nothing.
    virtual void setScriptName(const QString& name);
    //@}
    /// \name Masters
    //@{
    /// Appends the undoable form of `bUnconstrain`; returns the command.
    virtual Bsc::CompositeCommand& bUnconstrainCommand(Bsc::CompositeCommand& command);
    /// Appends the undoable form of `bRemoveConstrainedParameter`, nothing if `parameter` is null or not constrained to
    /// this one; returns the command.
    virtual Bsc::CompositeCommand& bRemoveConstrainedParameterCommand(ParameterWithoutType* parameter,
                                                                      Bsc::CompositeCommand& command);
    //@}
    /// \name Interpolation and extrapolation
    /// Extrapolation and default interpolation belong to the parameter, other kinds to one keyframe.
    //@{
    /// Sets how values continue before the first keyframe.
    virtual void vSetExtrapolationBefore(Extrapolation kind) = 0;
    /// Sets how values continue after the last keyframe.
    virtual void vSetExtrapolationAfter(Extrapolation kind) = 0;
    /// Sets the kind for keyframes that are added without one before them.
    virtual void vSetDefaultInterpolation(Interpolation kind) = 0;
    /// Sets the kind of the keyframe at the context; returns false if there is none.
    virtual bool vSetInterpolation(Interpolation kind, const Context& context) = 0;
    /// Sets kind and shape of one keyframe; does nothing if there is no such index.
    virtual void vSetInterpolationData(IType data, unsigned int index, const View& view) = 0;
    /// How values continue before the first keyframe.
    virtual Extrapolation extrapolationBefore() const = 0;
    /// How values continue after the last keyframe.
    virtual Extrapolation extrapolationAfter() const = 0;
    /// The kind in effect at the context's time.
    virtual Interpolation interpolation(const Context& context) const = 0;
    /// The kind of one keyframe.
    virtual Interpolation interpolation(const KeyframeIndex& keyframe) const = 0;
    /// Kind and shape of one keyframe.
    virtual IType interpolationData(const KeyframeIndex& keyframe) const = 0;
    /// Appends the undoable form of `vSetInterpolation`; returns the command.
    virtual Bsc::CompositeCommand& vSetInterpolationCommand(Interpolation kind, Context context,
                                                            Bsc::CompositeCommand& command) = 0;
    /// Appends the undoable form of `vSetInterpolationData`; returns the command.
    virtual Bsc::CompositeCommand& vSetInterpolationDataCommand(Bsc::CompositeCommand& command, IType data,
                                                                const KeyframeIndex& keyframe) = 0;
    /// Appends the undoable form of `vSetExtrapolationBefore`; returns the command.
    virtual Bsc::CompositeCommand& vSetExtrapolationBeforeCommand(Extrapolation kind,
                                                                  Bsc::CompositeCommand& command) = 0;
    /// Appends the undoable form of `vSetExtrapolationAfter`; returns the command.
    virtual Bsc::CompositeCommand& vSetExtrapolationAfterCommand(Extrapolation kind,
                                                                 Bsc::CompositeCommand& command) = 0;
    //@}
    /// \name Query keyframes
    /// Of one view, in ascending order of time; times are compared exactly. If nothing is found, the result is false
    /// and output arguments keep their values.
    //@{
    /// Whether the parameter may have keyframes.
    virtual bool isKeyframed() const = 0;
    /// The number of keyframes.
    virtual unsigned int keyframeCount(const View& view) const = 0;
    /// The time of the keyframe at the index, in the given view; time 0 if there is none.
    virtual Context keyframeTime(unsigned int index, const View& view) const = 0;
    /// Replaces each keyframe's time, in every view, by what the mapping returns. The mapping must be strictly
    /// increasing. Emits nothing.
    virtual void adjustKeyframesTime(const boost::function<Time(Time)>& mapping) = 0;
    /// Whether a keyframe lies at exactly the context's time.
    virtual bool bKeyframeAt(const Context::Explicit& context) const = 0;
    /// Stores the time of the nearest keyframe, the later one of two at the same distance.
    virtual bool bNearestKeyframeTime(const Context& context, Time& time) const = 0;
    /// Stores the index of the nearest keyframe, the later one of two at the same distance.
    virtual bool bNearestKeyframeIndex(const Context& context, unsigned int& index) const = 0;
    /// Stores the time and view of the last keyframe strictly before the context's time.
    virtual bool bPreviousKeyframe(const Context& context, Context& previous) const = 0;
    /// Stores the time and view of the first keyframe strictly after the context's time.
    virtual bool bNextKeyframe(const Context& context, Context& next) const = 0;
    //@}
    /// \name Edit, copy and restore
    /// An edit that does not apply does nothing.
    //@{
    /// Adds a keyframe with the present value; returns its index, or -1 if none was added.
    virtual int iAddKeyframe(const Context& context) = 0;
    /// Adds one in each of the state's views; returns the last index added or -1, and 0 if the parameter is not
    /// keyframed.
    virtual int iAddKeyframe(const Frame& frame, const AnimationState& state) = 0;
    /// Deletes the keyframe at the context.
    virtual void vDeleteKeyframe(const Context::Explicit& context) = 0;
    /// Deletes all keyframes of the view.
    virtual void vDeleteAllKeyframes(const View& view) = 0;
    /// Deletes the keyframe at the context; in a view without keyframes, sets the default value.
    virtual void vReset(const Context& context) = 0;
    /// A copy of the keyframe at the context, null if there is none. For the invalid time: an empty one, to be filled
    /// with `setFromString`.
    virtual boost::shared_ptr<SerialisedKeyframe> getSerialisedKeyframe(Context context) const = 0;
    /// Sets value, interpolation and shape at the keyframe's own time and view. Throws `std::bad_cast` for a keyframe
    /// of another type.
    virtual void importKeyframe(const SerialisedKeyframe& keyframe) = 0;
    //@}
    /// \name Views
    //@{
    /// Whether more than one view has data.
    virtual bool isSplit() const = 0;
    /// The length of `viewList()`.
    virtual int numViews() const = 0;
    /// Sets whether views may have data of their own.
    virtual void setSplittable(bool splittable) = 0;
    /// Whether views may have data of their own.
    virtual bool splittable() const = 0;
    /// The views with data, in ascending order.
    virtual const std::vector<View>& viewList() const = 0;
    /// Gives `to` a copy of what `from` shows in `source` (null: in this parameter).
    virtual void copyViewData(const View& from, const View& to, const ParameterWithoutType* source) = 0;
    /// Gives a view without data a copy of what it shows.
    virtual void uniquifyView(const View& view) = 0;
    /// Gives `hero`, if it has no data, a copy of what `from` shows; returns whether it did.
    virtual bool initialiseHeroView(const View& hero, const View& from) = 0;
    /// Deletes the data of a view; false for a view without data and for the only view with data.
    virtual bool deleteView(const View& view) = 0;
    //@}
    /// \name Undoable edits
    /// Each appends edits to the command without doing them.
    //@{
    /// Adds a keyframe; returns the command.
    virtual Bsc::CompositeCommand& vAddKeyframeCommand(const Context::Explicit& context,
                                                       Bsc::CompositeCommand& command) = 0;
    /// Adds a keyframe in each of the state's views; returns the command.
    virtual Bsc::CompositeCommand& vAddKeyframeCommand(const Frame& frame, const AnimationState& state,
                                                       Bsc::CompositeCommand& command) = 0;
    /// Deletes a keyframe.
    virtual void createKeyframeDeletion(const Context::Explicit& context, Bsc::CompositeCommand& command) = 0;
    /// Deletes a keyframe in each of the state's views.
    virtual void createKeyframeDeletion(const Frame& frame, const AnimationState& state,
                                        Bsc::CompositeCommand& command) = 0;
    /// Deletes all keyframes of the view; returns the command.
    virtual Bsc::CompositeCommand& vDeleteAllKeyframesCommand(const View& view, Bsc::CompositeCommand& command) = 0;
    /// Makes this parameter the master of another; returns the command.
    virtual Bsc::CompositeCommand& bAddConstrainedParameterCommand(ParameterWithoutType* parameter,
                                                                   Bsc::CompositeCommand& command) = 0;
    //@}

    /// Copies another parameter's keyframes and views; does nothing for one of another type.
    virtual void vCopyKeyframeDataFrom(const ParameterWithoutType* source) = 0;

    boost::shared_ptr<Bsc::MementoBase> exportState() const override = 0;
    void doImportState(boost::shared_ptr<Bsc::MementoBase> snapshot) override = 0;

    /// A number that differs after each change of keyframes' times or of the views with keyframes, and differs between
    /// any two parameters. 0, as here, if the class does not count.
    virtual quint64 keyframeRevision() const;
    /// A snapshot of at least what edits at these places can change, so that its cost need not grow with the number of
    /// keyframes and views; without places, of the whole state. Here the whole state, from `exportState`.
    virtual boost::shared_ptr<Bsc::MementoBase> exportStateAround(const detail::Places& places) const;
    /// Whether adding or deleting a keyframe of one part of this compound does the same to the others. Here: false.
    virtual bool keyframeTogether() const;
    /// As `adjustKeyframesTime`, but with any mapping: keyframes are sorted again. A keyframe moved onto one that stays
    /// replaces it; of several moved to one time the last remains. Emits nothing. Here as `adjustKeyframesTime`.
    virtual void retimeKeyframes(const boost::function<Time(Time)>& mapping);

private:
    friend class ParameterSet;
    friend class ParameterChange;
    friend class detail::ReachOfChange;
    friend class detail::ShownState;
    friend struct detail::UntypedAnswers;
    friend class detail::KeyframeReshaper;
    /// This object as a `Parameter` of the value type, or what `prm/untyped` finds by type; null for another type.
    virtual const void* asTyped(const std::type_info& valueType) const;
    /// `setFromScriptString` of a text that outlives the call, which needs no copy unless a class overrides reading.
    bool readLine(QStringView line, const ProjectFileVersion& version);
    bool readNamed(QStringView line, const ProjectFileVersion& version);
    /// Reads what comes after the name.
    virtual bool readRest(QStringView rest, const ProjectFileVersion& version, const TextConversion& convert);
    /// Notes the steps to the value. Here: the class computes it.
    virtual void explainTo(Explanation& explanation, const Context& context) const;
    friend PRM_EXPORT Explanation explain(const BasicParameter& parameter, const Context& context);
    template <class T> friend class Parameter;

public:
    /// \name Names and project text
    //@{
    /// The name shown to users.
    const QString& displayName() const { return m_displayName; }
    /// A third name, for the host. Copied with the other names.
    const QString& extraName() const { return extraData().extraName; }
    /// Sets the third name. Emits nothing.
    void setExtraName(const QString& name);
    /// The path to this parameter: the names of the sets that contain it, joined by dots.
    const QString& namePrefix() const { return m_namePrefix; }
    /// Called by `ParameterSet::assignNamePrefixes`.
    void setNamePrefix(const QString& prefix) { m_namePrefix = prefix; }
    /// The path, a dot (also after an empty path), and the script name.
    QString extendedName() const;
    /// Adds another name under which lines are read, compared case-sensitively. `convert` is applied to the text of
    /// values read under it. Replaces an earlier entry of that name.
    void addAdditionalScriptName(const QString& name, const TextConversion& convert = {});
    /// In ascending order.
    QStringList additionalScriptNames() const { return extraData().additionalScriptNames.keys(); }
    //@}
    /// \name Flags for the host
    //@{
    /// A flag for the host, and a line in project text.
    bool isHidden() const { return m_hidden; }
    /// Emits PARAMETER_HIDDEN_CHANGED if the flag changes.
    void hide(bool hidden);
    /// Appends the undoable form of `hide`; returns the command.
    Bsc::CompositeCommand& hideCommand(bool hidden, Bsc::CompositeCommand& command);
    /// A flag for the host. The library edits locked parameters, too.
    bool isLocked() const { return m_locked; }
    /// Emits PARAMETER_LOCKED_CHANGED if the flag changes.
    void setLocked(bool locked);
    /// Appends the undoable form of `setLocked`; returns the command.
    Bsc::CompositeCommand& setLockedCommand(bool locked, Bsc::CompositeCommand& command);
    //@}
    /// \name Masters
    /// A constrained parameter shows the animation of its master. Threads may evaluate while masters are set.
    //@{
    /// The master of this parameter; null without one, and after the master was deleted.
    PRM_ALWAYS_INLINE ParameterWithoutType* masterParameter() const {
        const detail::ExtraData* const made = m_extraData.load(std::memory_order_acquire);
        return made ? made->master.load(std::memory_order_acquire) : nullptr;
    }
    /// The existing parameters constrained to this one, in the order in which they were added.
    QList<ParameterWithoutType*> constrainedParameters() const;
    /// Makes this the master of `parameter`, instead of a former master. Returns false for null and for one already
    /// constrained to this one; returns false and warns for this parameter itself and for one that is, directly or
    /// through others, a master of this one. Emits nothing.
    bool bAddConstrainedParameter(ParameterWithoutType* parameter);
    /// Gives `parameter` a copy of this master's keyframes, then no master. Returns false for one that is not
    /// constrained to this one.
    bool bRemoveConstrainedParameter(ParameterWithoutType* parameter);
    /// Gives this parameter a copy of its master's keyframes, then no master. Returns false without a master.
    bool bUnconstrain();
    /// The master's name that project text gave, until it is resolved (`ParameterSet::resolveMasterParameters`) or the
    /// master is set or removed otherwise; then empty.
    const QString& pendingMasterParameterId() const { return extraData().pendingMasterParameterId; }
    /// Sets this name; no master is searched.
    void setPendingMasterParameterId(const QString& id);
    //@}
    /// \name Upstream parameters
    //@{
    /// The parameters whose changes `onUpstreamParameterChanged` receives; a null pointer for each that was deleted.
    UpstreamParameters upstreamParameters() const;
    /// Connects the slot to these parameters and to no others.
    void setUpstreamParameters(const UpstreamParameters& parameters);
    //@}
    /// \name Query keyframes
    //@{
    /// Calls the function with the time and view of every keyframe of the view, in order. Throws
    /// `boost::bad_function_call` if the function is empty and there is a keyframe.
    void forEachKeyframeTime(boost::function<void(const Context&)> function, const View& view) const;
    /// The same for every view of `viewList()`, in order.
    void forEachKeyframeTime(boost::function<void(const Context&)> function) const;
    //@}
    /// \name Views
    //@{
    /// Sets the parameter whose static value is true in each view that is not the hero view. It is not owned; after it
    /// was deleted there is no selector. `companion` is for the host. `assignFrom` copies both.
    void setViewSelector(Parameter<bool>* selector, quintptr companion = 0);
    /// Null without a selector.
    Parameter<bool>* viewSelector() const;
    /// What `setViewSelector` stored for the host.
    quintptr viewSelectorCompanion() const { return extraData().viewSelectorCompanion; }
    /// The one view whose static value in the view selector is false; the invalid view when there is no selector, or
    /// not exactly one such view.
    View heroView() const;
    /// Deletes all keyframes and sets every view to the default value. If there is a hero view, then deletes views from
    /// the last to the first until one is left; instead of the hero view it deletes the first.
    void resetAll();
    //@}
    /// \name Notification
    /// Types from NUM_CHANGE_TYPES on have no switch: setting it does nothing, reading it returns false.
    //@{
    /// Emits `changed` if the type is enabled and the parameter's Qt signals are not blocked or the type overrides the
    /// block. Afterwards signals are blocked as before, also if an observer throws.
    void emitChange(ParameterChange& change);
    /// Whether `emitChange` does anything for a change of the type. False, too, where `changed` certainly has no
    /// receivers.
    bool emits(ParameterChange::ChangeType type) const;
    /// Switches every type.
    void enableNotifications(bool enabled);
    void enableNotifications(ParameterChange::ChangeType) = delete;
    /// Enables or disables one type; returns the former state.
    bool enableNotifications(ParameterChange::ChangeType type, bool enabled);
    /// Whether the type is enabled; all are in a new parameter.
    bool notificationsEnabled(ParameterChange::ChangeType type) const;
    /// Sets whether the type is emitted while signals are blocked; returns the former state.
    bool overrideBlockedSignals(ParameterChange::ChangeType type, bool enabled);
    /// Whether the type is emitted while signals are blocked; none is in a new parameter.
    bool overridesBlockedSignals(ParameterChange::ChangeType type) const;

    /// Connects `commandRegistrationChanged` to the observer's slot, given as `SLOT(...)`.
    void AttachCommandRegistrationObserver(QObject* observer, const char* slot);
    /// Disconnects `commandRegistrationChanged` from the observer; a null observer is ignored.
    void DetachCommandRegistrationObserver(QObject* observer);
    /// Whether `commandRegistrationChanged` has a receiver.
    bool hasCommandRegistrationObserver() const;
    /// Passes a command to the host's undo stack. If there is an observer, it takes ownership and does the command;
    /// otherwise the command is done at once, and the caller keeps ownership. Notification switches do not apply.
    void registerCompositeCommand(Bsc::CompositeCommand& command, const Context& context);
    //@}

Q_SIGNALS:
    /// A change of this parameter, emitted before the edit returns. The record is valid during the call only.
    void changed(Prm::ParameterChange& changeData);
    /// A command for the host's undo stack (COMMAND_REGISTERED).
    void commandRegistrationChanged(Prm::ParameterChange& changeData);

protected:
    /// Notes that `changed` may have receivers. An override need not call it: changes of its class are always emitted.
    void connectNotify(const QMetaMethod& signal) override;

    /// False where `changed` certainly has no receivers.
    bool mayHaveReceivers() const;

    /// Copies names, additional names, the four attributes of `copyOwnAttributes` and whether it is streamable; not
    /// parent, master, lists, switches or view selector.
    ParameterWithoutType(const ParameterWithoutType& other);

    // For constructors of classes that have this one as a virtual base: the most derived class constructs that base,
    // usually with the default arguments.
    /// Sets the flags that are true, and the set unless it is null.
    void initialise(bool locked, bool hidden, ParameterSet* parent);
    /// Copies what the copy constructor copies.
    void initialise(const ParameterWithoutType& other);

    /// Emits PARAMETER_DELETED, once, and removes the parameter from its sets. Every concrete class of the library
    /// calls it first in its destructor; a host's class may do the same, so that observers find the complete object. An
    /// exception of an observer is caught, with a warning.
    void announceDeletion() noexcept;

    enum class NamePrefix { Copy, Keep };
    /// The untyped part of a snapshot.
    struct OwnAttributes {
        bool locked;
        bool hidden;
        QString extraName;
        QString namePrefix;

        friend bool operator==(const OwnAttributes& a, const OwnAttributes& b) {
            return a.locked == b.locked && a.hidden == b.hidden && a.extraName == b.extraName &&
                   a.namePrefix == b.namePrefix;
        }
    };
    OwnAttributes ownAttributes() const { return {m_locked, m_hidden, extraName(), m_namePrefix}; }
    /// Emits nothing.
    void takeOwnAttributes(const OwnAttributes& attributes);
    /// The same from another parameter; the name prefix only with `Copy`. Emits nothing.
    void copyOwnAttributes(const ParameterWithoutType& other, NamePrefix prefix);

    // The lines that every animatable parameter has in project text. Writing appends the line if it applies; reading
    // returns whether it was that line.
    void writeHidden(QString& text, const QString& start) const;
    void writeMaster(QString& text, const QString& start) const;
    bool readHidden(const QString& line);
    bool readMaster(const QString& line);

    /// Adds one upstream parameter; false if it is one already.
    bool addUpstreamParameter(ParameterWithoutType& upstream);
    void removeUpstreamParameter(ParameterWithoutType& upstream);
    /// Ends all connections from the upstream parameters to this one, which is being deleted.
    void disconnectUpstream() noexcept;

    /// Whether a line of project text is being read.
    bool isReadingIn() const { return m_readingIn; }

    /// A scope in which text is read: signals are blocked except for VIEW_ADDED, and `isReadingIn()` is true. Its end
    /// restores both; the parameter may be deleted meanwhile.
    class ReadingScope;

private:
    friend class detail::Invariants;
    friend class detail::MasterLink;

    void countChange(ParameterChange::ChangeType type) { m_changes += ParameterChange::concernsValues(type) ? 1 : 0; }
    /// Sets the master, null for none. This parameter is listed there before the given one, or last.
    void tieTo(ParameterWithoutType* master, ParameterWithoutType* before);
    void linkTo(ParameterWithoutType* master, ParameterWithoutType* before);
    bool wouldCloseCircle(const ParameterWithoutType& parameter) const;
    const ParameterWithoutType* nextBelow(const ParameterWithoutType& top) const;
    ParameterWithoutType* nextConstrained() const { return extraData().nextConstrained; }
    void enlist(ParameterWithoutType& master, ParameterWithoutType* before);
    void delist();
    void dropLinks();
    void connectUpstream(bool connected);
    void reconnectUpstream(quint64 connection);
    void connectTo(ParameterWithoutType& upstream, bool connected);

    /// Empty for a parameter without any; the one for writing is created on the first call.
    const detail::ExtraData& extraData() const;
    detail::ExtraData& ownExtraData();

    // Bits, so that the count after them needs no room of its own.
    bool m_locked : 1;
    bool m_hidden : 1;
    bool m_readingIn = false;
    bool m_deletionAnnounced = false;
    /// Counts the changes that concern values, also those that were not emitted.
    quint32 m_changes = 0;
    quint32 m_notificationEnabled;
    quint32 m_blockedSignalOverride = 0;
    QString m_displayName;
    QString m_scriptName;
    QString m_namePrefix;
    std::atomic<detail::ExtraData*> m_extraData{nullptr};
    /// 0 before the first connection to a signal; in an upstream parameter, a number in the order of all connections.
    std::atomic<quint64> m_lastConnected{0};
};

} // namespace Prm
