#pragma once

#include "host/bsc/QPointerEx.h"
#include "host/bsc/UniqBag.h"
#include "prm/BasicParameter.h"
#include "prm/Export.h"
#include "prm/Interpolation.h"
#include "prm/ParameterChange.h"
#include "prm/track/Place.h"

#include <QList>
#include <QMap>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QVector>
#include <boost/function.hpp>
#include <boost/shared_ptr.hpp>

#include <atomic>
#include <optional>
#include <typeinfo>
#include <vector>

namespace Prm {

template <class T> class PRM_EXPORT Parameter;
class SerialisedKeyframe;

namespace detail {
class MasterLink;
} // namespace detail

/// An animatable parameter without its value type: identity and names, flags, the link to a master, the parameters it
/// listens to, the notification switches, and the whole interface through which hosts, project text and sets drive it.
///
/// Observers may do anything while they are told of a change: call back, throw, or delete the parameter; except that
/// while they are told of its deletion they must not delete it again.
///
/// \snippet parameter_panel.cpp untyped
/// \threads The owning thread edits, connects, and is told, inside the edit. What others may ask meanwhile says the
/// concrete class, such as `Parameter`.
class PRM_EXPORT ParameterWithoutType : public BasicParameter {
    Q_OBJECT

public:
    using UpstreamParameters = Bsc::UniqBag<Bsc::detail::QPointerEx<ParameterWithoutType, QPointer>>;
    using TextConversion = boost::function<QString(const QString&)>;

    /// For the host; nothing in the library reads it.
    static bool s_processNotifications;

    ParameterWithoutType(bool locked, bool hidden, ParameterSet* parent);
    /// Sends PARAMETER_DELETED first, unless a derived class already did. Masters and constrained parameters are left
    /// alone; what they hold of this parameter turns empty.
    ~ParameterWithoutType() override;

    const QString& scriptName() const override;
    /// Reads a line that begins with the script name, or with one of the additional names, and a dot.
    bool setFromScriptString(const QString& line, const ProjectFileVersion& version) override;

    /// Reads one line without the parameter's name. `convert`, if not empty, is applied to the text of a value first.
    /// Throws `std::runtime_error` for a malformed keyframe.
    virtual bool streamInValue(const QString& line, const ProjectFileVersion& version, TextConversion convert) = 0;

public Q_SLOTS:
    /// Hears every change of the upstream parameters; does nothing here.
    virtual void onUpstreamParameterChanged(Prm::ParameterChange& change);

public:
    /// Copies locked, hidden, display name, script name, extra name and view selector. Sends nothing.
    virtual void assignFrom(const ParameterWithoutType& other);

    /// Connects `changed` directly to the observer's slot, given as `SLOT(...)`. A null observer is ignored.
    virtual void attachObserver(const QObject* observer, const char* slot) const;
    /// Cuts everything from `changed` to that observer. A null observer is ignored. Goes through all connections of
    /// this parameter's `changed`: thousands of observers of one parameter leave sooner by `detachAllObservers`, or by
    /// dying.
    virtual void detachObserver(const QObject* observer) const;
    /// Cuts everything from `changed`.
    virtual void detachAllObservers() const;

    /// The name shown to users, taken as it is. Sends nothing.
    virtual void setDisplayName(const QString& name);
    /// The name in text and scripts: blanks and apostrophes become "_". Sends nothing.
    virtual void setScriptName(const QString& name);

    /// Appends the undoable form of `bUnconstrain`.
    virtual Bsc::CompositeCommand& bUnconstrainCommand(Bsc::CompositeCommand& command);
    /// Appends the undoable form of `bRemoveConstrainedParameter`; nothing for a parameter that is not constrained.
    virtual Bsc::CompositeCommand& bRemoveConstrainedParameterCommand(ParameterWithoutType* parameter,
                                                                      Bsc::CompositeCommand& command);

    // Kinds of curve. Extrapolation and default are the parameter's, the others those of one keyframe.
    virtual void vSetExtrapolationBefore(Extrapolation kind) = 0;
    virtual void vSetExtrapolationAfter(Extrapolation kind) = 0;
    virtual void vSetDefaultInterpolation(Interpolation kind) = 0;
    virtual bool vSetInterpolation(Interpolation kind, const Context& context) = 0;
    virtual void vSetInterpolationData(IType data, unsigned int index, const View& view) = 0;
    virtual Extrapolation extrapolationBefore() const = 0;
    virtual Extrapolation extrapolationAfter() const = 0;
    virtual Interpolation interpolation(const Context& context) const = 0;
    virtual Interpolation interpolation(const KeyframeIndex& keyframe) const = 0;
    virtual IType interpolationData(const KeyframeIndex& keyframe) const = 0;
    virtual Bsc::CompositeCommand& vSetInterpolationCommand(Interpolation kind, Context context,
                                                            Bsc::CompositeCommand& command) = 0;
    virtual Bsc::CompositeCommand& vSetInterpolationDataCommand(Bsc::CompositeCommand& command, IType data,
                                                                const KeyframeIndex& keyframe) = 0;
    virtual Bsc::CompositeCommand& vSetExtrapolationBeforeCommand(Extrapolation kind,
                                                                  Bsc::CompositeCommand& command) = 0;
    virtual Bsc::CompositeCommand& vSetExtrapolationAfterCommand(Extrapolation kind,
                                                                 Bsc::CompositeCommand& command) = 0;

    // Keyframes of one view. Times are compared exactly.
    virtual bool isKeyframed() const = 0;
    virtual unsigned int keyframeCount(const View& view) const = 0;
    /// Time 0 where there is no such keyframe.
    virtual Context keyframeTime(unsigned int index, const View& view) const = 0;
    /// Maps every keyframe's time; the mapping must be strictly increasing. Sends nothing.
    virtual void adjustKeyframesTime(const boost::function<Time(Time)>& mapping) = 0;
    virtual bool bKeyframeAt(const Context::Explicit& context) const = 0;
    virtual bool bNearestKeyframeTime(const Context& context, Time& time) const = 0;
    virtual bool bNearestKeyframeIndex(const Context& context, unsigned int& index) const = 0;
    virtual bool bPreviousKeyframe(const Context& context, Context& previous) const = 0;
    virtual bool bNextKeyframe(const Context& context, Context& next) const = 0;
    /// The index of the new keyframe, or -1.
    virtual int iAddKeyframe(const Context& context) = 0;
    /// Adds to each of the state's views; the last index added or -1, and 0 for a parameter that is not keyframed.
    virtual int iAddKeyframe(const Frame& frame, const AnimationState& state) = 0;
    virtual void vDeleteKeyframe(const Context::Explicit& context) = 0;
    virtual void vDeleteAllKeyframes(const View& view) = 0;
    virtual void vReset(const Context& context) = 0;
    virtual boost::shared_ptr<SerialisedKeyframe> getSerialisedKeyframe(Context context) const = 0;
    virtual void importKeyframe(const SerialisedKeyframe& keyframe) = 0;

    // Views with data of their own.
    virtual bool isSplit() const = 0;
    virtual int numViews() const = 0;
    virtual void setSplittable(bool splittable) = 0;
    virtual bool splittable() const = 0;
    virtual const std::vector<View>& viewList() const = 0;
    virtual void copyViewData(const View& from, const View& to, const ParameterWithoutType* source) = 0;
    virtual void uniquifyView(const View& view) = 0;
    virtual bool initialiseHeroView(const View& hero, const View& from) = 0;
    virtual bool deleteView(const View& view) = 0;

    // Undoable forms: each appends to the command.
    virtual Bsc::CompositeCommand& vAddKeyframeCommand(const Context::Explicit& context,
                                                       Bsc::CompositeCommand& command) = 0;
    virtual Bsc::CompositeCommand& vAddKeyframeCommand(const Frame& frame, const AnimationState& state,
                                                       Bsc::CompositeCommand& command) = 0;
    virtual void createKeyframeDeletion(const Context::Explicit& context, Bsc::CompositeCommand& command) = 0;
    virtual void createKeyframeDeletion(const Frame& frame, const AnimationState& state,
                                        Bsc::CompositeCommand& command) = 0;
    virtual Bsc::CompositeCommand& vDeleteAllKeyframesCommand(const View& view, Bsc::CompositeCommand& command) = 0;
    virtual Bsc::CompositeCommand& bAddConstrainedParameterCommand(ParameterWithoutType* parameter,
                                                                   Bsc::CompositeCommand& command) = 0;

    /// Takes over another parameter's keyframes and views; nothing from one of another type.
    virtual void vCopyKeyframeDataFrom(const ParameterWithoutType* source) = 0;

    boost::shared_ptr<Bsc::MementoBase> exportState() const override = 0;
    void doImportState(boost::shared_ptr<Bsc::MementoBase> snapshot) override = 0;

    /// Another number whenever the times of keyframes, or the views that have some, may have changed; no two parameters
    /// ever have the same one. 0 for kinds that do not count, as here.
    virtual quint64 keyframeRevision() const;
    /// A snapshot of at least what edits at these places can change, so that its cost need not grow with the number of
    /// keyframes and views; of the whole state for no places. Here always the whole state, as `exportState` takes it.
    virtual boost::shared_ptr<Bsc::MementoBase> exportStateAround(const detail::Places& places) const;
    /// Whether a keyframe that one part gains or loses, all parts gain or lose. False for what has no parts.
    virtual bool keyframeTogether() const;
    /// As `adjustKeyframesTime`, with a mapping of any kind: keyframes may pass each other. One that is moved to the
    /// time of one that stays takes its place; of several that are moved to one time the last is left. Sends nothing.
    /// Here the mapping must be strictly increasing.
    virtual void retimeKeyframes(const boost::function<Time(Time)>& mapping);

private:
    friend class ParameterSet;
    /// This object as a `Parameter` of the value type, null for another type. A master is asked at every evaluation,
    /// for which a cast takes too long. The last virtual operation: those above have their places.
    virtual const void* asTyped(const std::type_info& valueType) const;
    template <class T> friend class Parameter;

public:
    const QString& displayName() const { return m_displayName; }
    /// A third text, kept for the host and copied with the names.
    const QString& extraName() const { return rarities().extraName; }
    void setExtraName(const QString& name);
    /// The path to this parameter, given to it by what contains it.
    const QString& namePrefix() const { return m_namePrefix; }
    void setNamePrefix(const QString& prefix) { m_namePrefix = prefix; }
    /// The path, always a dot, and the script name.
    QString extendedName() const;
    /// Another name under which lines are read; `convert` is applied to the text of the values read under it. Replaces
    /// an earlier entry of that name.
    void addAdditionalScriptName(const QString& name, const TextConversion& convert = {});
    QStringList additionalScriptNames() const { return rarities().additionalScriptNames.keys(); }

    bool isHidden() const { return m_hidden; }
    /// Sends PARAMETER_HIDDEN_CHANGED if the flag changes.
    void hide(bool hidden);
    /// Appends the undoable form of `hide`.
    Bsc::CompositeCommand& hideCommand(bool hidden, Bsc::CompositeCommand& command);
    bool isLocked() const { return m_locked; }
    /// Sends PARAMETER_LOCKED_CHANGED if the flag changes.
    void setLocked(bool locked);
    /// Appends the undoable form of `setLocked`.
    Bsc::CompositeCommand& setLockedCommand(bool locked, Bsc::CompositeCommand& command);

    /// The parameter whose animation this one shows, null without one or when it has died.
    PRM_ALWAYS_INLINE ParameterWithoutType* masterParameter() const {
        const Rarities* const made = m_rarities.load(std::memory_order_acquire);
        return made ? made->master.load(std::memory_order_acquire) : nullptr;
    }
    /// The living parameters constrained to this one, in the order of addition.
    QList<ParameterWithoutType*> constrainedParameters() const;
    /// Makes this the master of `parameter`, which silently leaves a former master. False for null and for one that is
    /// already constrained here; false with a warning for this parameter itself and where a circle would close. Sends
    /// nothing. Threads may evaluate meanwhile, here and in the operations that free a parameter.
    bool bAddConstrainedParameter(ParameterWithoutType* parameter);
    /// Gives `parameter` a copy of this master's keyframes and lets it go. False for one that is not constrained here.
    bool bRemoveConstrainedParameter(ParameterWithoutType* parameter);
    /// Leaves the master with a copy of its keyframes. False without a master.
    bool bUnconstrain();
    /// The master's name as it was read from project text, until it is resolved, or until the parameter is tied or
    /// freed in another way.
    const QString& pendingMasterParameterId() const { return rarities().pendingMasterParameterId; }
    void setPendingMasterParameterId(const QString& id);

    /// The parameters that this one listens to; those that have died are empty pointers.
    UpstreamParameters upstreamParameters() const;
    /// Listens to these parameters and no others.
    void setUpstreamParameters(const UpstreamParameters& parameters);

    /// Calls the function with every keyframe of the view, in order. Throws `boost::bad_function_call` where an empty
    /// function would have to be called.
    void forEachKeyframeTime(boost::function<void(const Context&)> function, const View& view) const;
    /// The same for every view of `viewList()`.
    void forEachKeyframeTime(boost::function<void(const Context&)> function) const;

    /// Marks, by its static value in each view, the views that are not the hero view; not owned, and gone when it dies.
    /// The companion word is kept for the host. Both are copied by `assignFrom`.
    void setViewSelector(Parameter<bool>* selector, quintptr companion = 0);
    /// Null without a selector.
    Parameter<bool>* viewSelector() const;
    quintptr viewSelectorCompanion() const { return rarities().viewSelectorCompanion; }
    /// The one view whose static value in the view selector is false; the invalid view when there is no selector, or
    /// not exactly one such view.
    View heroView() const;
    /// Removes the keyframes, resets every view to the default value, and deletes all views but the hero view (or the
    /// first one, when the last is the hero).
    void resetAll();

    // Notification. Types at or above NUM_CHANGE_TYPES have no switch: writing is ignored, reading gives false.
    /// Sends `changed` if the type is enabled and the parameter's Qt signals are not blocked, or an override lets the
    /// type through; blocking is as before afterwards, also when an observer throws.
    void emitChange(ParameterChange& change);
    /// False where `changed` certainly has no receivers, so that emitting can be skipped.
    bool isHeard() const;
    /// Switches every type.
    void enableNotifications(bool enabled);
    void enableNotifications(ParameterChange::ChangeType) = delete;
    /// Switches one type and returns its former state.
    bool enableNotifications(ParameterChange::ChangeType type, bool enabled);
    bool notificationsEnabled(ParameterChange::ChangeType type) const;
    /// Lets a type through while signals are blocked; returns the former state.
    bool overrideBlockedSignals(ParameterChange::ChangeType type, bool enabled);
    bool overridesBlockedSignals(ParameterChange::ChangeType type) const;

    void AttachCommandRegistrationObserver(QObject* observer, const char* slot);
    /// A null observer is ignored.
    void DetachCommandRegistrationObserver(QObject* observer);
    bool hasCommandRegistrationObserver() const;
    /// Offers the command to the host's undo stack. Without an observer it is executed at once, and the caller keeps
    /// owning it; with one, the observer takes over both the command and its execution. Notification switches do not
    /// apply.
    void registerCompositeCommand(Bsc::CompositeCommand& command, const Context& context);

Q_SIGNALS:
    void changed(Prm::ParameterChange& changeData);
    void commandRegistrationChanged(Prm::ParameterChange& changeData);

protected:
    /// Remembers that somebody listens. A class that overrides this need not call it: its changes are always sent.
    void connectNotify(const QMetaMethod& signal) override;

    /// Copies names, additional names, the four attributes of `copyOwnAttributes` and whether it is streamable; not
    /// parent, master, lists, switches or view selector.
    ParameterWithoutType(const ParameterWithoutType& other);

    /// Sends PARAMETER_DELETED, once. Called first thing in the destructor of every concrete class, while the object is
    /// still whole; a host's own kinds may do the same. The parameter then leaves its sets. An observer's exception is
    /// caught and warned of.
    void announceDeletion() noexcept;

    enum class NamePrefix { Copy, Keep };
    /// What snapshots carry of the untyped part.
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
    /// Sends nothing.
    void takeOwnAttributes(const OwnAttributes& attributes);
    /// The same from another parameter, the name prefix only if asked for.
    void copyOwnAttributes(const ParameterWithoutType& other, NamePrefix prefix);

    // The lines that every animatable parameter has in project text: appended if they apply, read if it is theirs.
    void writeHidden(QString& text, const QString& start) const;
    void writeMaster(QString& text, const QString& start) const;
    bool readHidden(const QString& line);
    bool readMaster(const QString& line);

    /// One more, or one fewer, of the upstream parameters; false for one that is there already.
    bool addUpstreamParameter(ParameterWithoutType& upstream);
    void removeUpstreamParameter(ParameterWithoutType& upstream);
    /// Ends all connections from the upstream parameters to this one, which is dying.
    void disconnectUpstream() noexcept;

    /// Whether a line of project text is being read.
    bool isReadingIn() const { return m_readingIn; }

    /// While it lives, text is read: signals are blocked, only VIEW_ADDED passes, and `isReadingIn()` holds. Puts
    /// everything back, also when the parameter has died.
    class ReadingScope;

private:
    friend class detail::Invariants;
    friend class detail::MasterLink;
    friend class ParameterSet;

    /// Ties this parameter to a master, before one that is constrained to it or after all of them, or to none.
    void tieTo(ParameterWithoutType* master, ParameterWithoutType* before);
    void linkTo(ParameterWithoutType* master, ParameterWithoutType* before);
    bool wouldCloseCircle(const ParameterWithoutType& parameter) const;
    const ParameterWithoutType* nextBelow(const ParameterWithoutType& top) const;
    /// The one that follows among those constrained to the same master.
    ParameterWithoutType* nextConstrained() const { return rarities().nextConstrained; }
    void enlist(ParameterWithoutType& master, ParameterWithoutType* before);
    void delist();
    void dropLinks();
    void connectUpstream(bool connected);
    void reconnectUpstream(quint64 connection);
    void connectTo(ParameterWithoutType& upstream, bool connected);

    /// What few parameters have.
    struct Rarities {
        QMap<QString, TextConversion> additionalScriptNames;
        QString extraName;
        QString pendingMasterParameterId;
        /// Read by evaluation on other threads.
        std::atomic<ParameterWithoutType*> master{nullptr};
        // The parameters constrained to this one are a list through them all.
        ParameterWithoutType* firstConstrained = nullptr;
        ParameterWithoutType* lastConstrained = nullptr;
        ParameterWithoutType* previousConstrained = nullptr;
        ParameterWithoutType* nextConstrained = nullptr;
        UpstreamParameters upstreamParameters;
        quint64 upstreamConnected = 0;
        QPointer<ParameterWithoutType> viewSelector;
        quintptr viewSelectorCompanion = 0;
    };
    /// Empty ones for a parameter that has none.
    const Rarities& rarities() const;
    /// For writing: made if need be.
    Rarities& ownRarities();

    bool m_locked;
    bool m_hidden;
    bool m_readingIn = false;
    bool m_deletionAnnounced = false;
    quint32 m_notificationEnabled;
    quint32 m_blockedSignalOverride = 0;
    QString m_displayName;
    QString m_scriptName;
    QString m_namePrefix;
    /// Made with the first of them; evaluation on other threads looks for the master.
    std::atomic<Rarities*> m_rarities{nullptr};
    /// 0 before the first connection to a signal; of an upstream parameter a number in the order of all connections.
    std::atomic<quint64> m_lastConnected{0};
};

} // namespace Prm
