#pragma once

#include "prm/Export.h"
#include "prm/Interpolation.h"
#include "prm/KeyframeData.h"
#include "prm/ParameterOptions.h"
#include "prm/ParameterWithoutType.h"
#include "prm/TimeSpan.h"
#include "prm/ValueType.h"
#include "prm/ViewInterpolation.h"
#include "prm/parameter/FastViewMap.h"
#include "prm/parameter/HookGate.h"
#include "prm/track/KeyframeRevision.h"
#include "prm/track/KeyframeSearch.h"
#include "prm/track/SourceViews.h"
#include "prm/track/Track.h"

#include <atomic>
#include <type_traits>
#include <typeinfo>
#include <utility>

namespace Prm {

/// Defined by the host, for what its hooks keep between evaluations. The library only passes the pointer on.
class Cache;

template <class T> class PRM_EXPORT Parameter;
template <class T> class PRM_EXPORT CurveParameter;

namespace detail {
class Ask;
struct InsertionPlace;
template <class T> struct Shown;

/// `Parameter<T>::setVariantValue` without its checks, for a host's override of it: at a frame's time of a keyframed
/// parameter does what `vSetValue` does, otherwise sets the static value. Exceptions of observers and hooks pass
/// through.
template <class T>
PRM_EXPORT void default_Parameter_setVariantValue_impl(Parameter<T>& parameter, const QVariant& variant,
                                                       const Context& context);

} // namespace detail

/// An animatable parameter of value type T. Each view has either a static value or a list of keyframes in ascending
/// order of time. Times are in frames.
///
/// - A keyframed parameter stores what is set at a time as a keyframe. Otherwise there are static values only.
/// - A splittable parameter can store different data for each view. A view without data reads the source data, which
///   are those of the first view with data. A parameter that was never written has no data, and its value is the
///   default value.
/// - An edit that does not apply does nothing; it neither throws nor warns.
/// - Each edit says which changes it emits, in order. A change in brackets is emitted only if the view gains data.
///
/// For a type of its own, a host specialises `ValueType` and instantiates this class in one source file that includes
/// `prm/Parameter.hpp`.
///
/// \snippet a_switch.cpp switch
/// \threads Evaluating, and querying the keyframes of one view, is safe on any number of threads while the owning
/// thread edits, sets masters included. The result belongs to one announced state: before the edit, after it or, if a
/// view gains data, that of VIEW_ADDED between the two. The owning thread alone may edit, and may call what goes
/// through all views: `viewList()`, `numViews()`, `allKeyframes()`, `forEachKeyframeTime()` without a view, writing
/// text, taking snapshots, and copying. No other thread may evaluate a parameter while it or one of its masters is
/// destroyed. No lock is held while observers are notified.
template <class T> class PRM_EXPORT Parameter : virtual public ParameterWithoutType {
public:
    using KeyframeVector = QVector<KeyframeData<T>>;
    using PVData = detail::PVData<T>;
    using LockedKeyframes = detail::LockedKeyframes<T>;
    using FastViewMap = detail::FastViewMap<T>;
    /// A keyframe for copy and paste (`prm/parameter/TypedSerialisedKeyframe.hpp`).
    class TypedSerialisedKeyframe;
    class ParameterMemento;
    class StateAround;

    /// \name Construct and assign
    /// The order of the virtual operations, here and below, is part of the interface.
    //@{
    /// Without names, keyframed and splittable, with a default value of `T()`.
    Parameter();
    /// Stores the default value for views that get data later; no view has data yet. The default interpolation is
    /// Linear if values blend, otherwise Constant.
    explicit Parameter(const QString& scriptName, const T& defaultValue = T(),
                       ParameterOptions options = Keyframed | Splittable, ParameterSet* parent = nullptr);
    /// A detached copy for snapshots: names, flags, keyframes and views are copied; the default value, the observers,
    /// the links and the set are not.
    Parameter(const Parameter& other);
    /// Not allowed: a copy of a parameter with curves would have none. Copy it as its own class.
    template <class Curved, class = std::enable_if_t<std::is_base_of_v<CurveParameter<T>, Curved>>>
    Parameter(const Curved& other) = delete;

    /// Copies names, flags, keyframes, views and default interpolation from a parameter of the same type, but not the
    /// default value. Emits PARAMETER_ASSIGNED. From a parameter of another type, or from itself, as the base class.
    void assignFrom(const ParameterWithoutType& other) override;
    //@}
    /// \name Values
    //@{
    /// The value at the context's time in its view. Safe on any thread. The first of these that applies:
    /// - the value of the master, if there is one of the same type;
    /// - the static value, if the parameter is not keyframed or the view it reads has no keyframes;
    /// - the value of the keyframe at exactly that time;
    /// - what `interpolateValue` or `extrapolateValue` computes from the keyframes around the time.
    ///
    /// A view without data reads the source data, or a blend of the views with data (`setViewInterpolation`). `cache`
    /// is passed on to the hooks and may be null.
    virtual T value(const Context& context, Cache* cache = nullptr) const;
    /// Sets the value at the context. If the parameter is keyframed and the time is valid, sets the keyframe there,
    /// adding it if need be, and returns its index; otherwise sets the static value and returns -1. Emits [VIEW_ADDED],
    /// KEYFRAME_ADDED for a new keyframe, and KEYFRAME_CHANGED_VALUE if the value differs (index -1: the static value).
    virtual int vSetValue(const T& value, const Context& context);
    /// The value of views that get data later, and of a parameter without data.
    virtual T defaultValue() const;
    /// Sets the default value. Views that have data keep theirs. Emits nothing.
    virtual void vSetDefault(const T& value);
    using BasicParameter::setVariantValue;
    using BasicParameter::variantValue;
    /// Throws `std::runtime_error` ("Parameter not splittable", "Parameter not animated", translated) for a view other
    /// than 0 of an unsplittable parameter, and for a frame's time of one that is not keyframed. Otherwise calls the
    /// form with `std::nothrow`; an exception of an observer or a hook passes through.
    void setVariantValue(const QVariant& variant, const Context& context) override;
    /// Converts the variant as `ValueType<T>` does. At a frame's time of a keyframed parameter does what `vSetValue`
    /// does; otherwise sets the static value and emits [VIEW_ADDED], and VALUE_CHANGED if it differs. Throws nothing.
    void setVariantValue(const QVariant& variant, const Context& context, const std::nothrow_t&) override;
    /// The value of the keyframe at the index, of the last one for an index past the end; the static value if there are
    /// no keyframes.
    virtual T keyframeValue(unsigned int index, const View& view) const;
    /// The keyframe at the index, the last one for an index past the end; if there are no keyframes, one with the
    /// invalid time, the static value and the default interpolation.
    virtual KeyframeData<T> keyframe(unsigned int index, const View& view) const;
    /// `value` as a variant. Throws as `setVariantValue` does; otherwise calls the form with `std::nothrow`.
    QVariant variantValue(const Context& context) const override;
    /// `value` as a variant; an invalid variant if evaluating throws.
    QVariant variantValue(const Context& context, const std::nothrow_t&) const override;
    /// The keyframes of all views in the order of `viewList()`, ascending in time within a view.
    QVector<Context> allKeyframes() const override;
    //@}

    /// Writes all lines of the parameter; returns true.
    bool bStreamOut(QTextStream& stream, const QString& prefix, bool withName) const override;

    /// \name Interpolation and extrapolation
    /// Setters do nothing if the parameter is not keyframed, and those of a keyframe do nothing if it is splittable and
    /// the view has no data; the default interpolation can always be set. Getters, except for the default
    /// interpolation, return what the master has if there is a master.
    //@{
    /// Sets how values continue before the first keyframe. Emits PARAMETER_CHANGED_EXTRAPOLATION_BEFORE, also if the
    /// kind is the same.
    void vSetExtrapolationBefore(Extrapolation kind) override;
    /// Sets how values continue after the last keyframe. Emits PARAMETER_CHANGED_EXTRAPOLATION_AFTER, also if the kind
    /// is the same.
    void vSetExtrapolationAfter(Extrapolation kind) override;
    /// Sets the kind of the keyframe at the context; returns false if there is none. If another keyframe follows,
    /// `initialiseInterpolation` computes the shape; it receives the keyframe with its former kind and shape. The last
    /// keyframe keeps its shape. Emits KEYFRAME_CHANGED_INTERPOLATION, also if the kind is the same.
    bool vSetInterpolation(Interpolation kind, const Context& context) override;
    /// Sets the kind for keyframes that are added without one before them. Existing keyframes keep theirs. Emits
    /// nothing.
    void vSetDefaultInterpolation(Interpolation kind) override;
    /// Sets kind and shape of one keyframe exactly as given; does nothing if there is no such index. Emits
    /// KEYFRAME_CHANGED_INTERPOLATION.
    void vSetInterpolationData(IType itype, unsigned int index, const View& view) override;
    /// Constant if the parameter is not keyframed.
    Extrapolation extrapolationBefore() const override;
    /// Constant if the parameter is not keyframed.
    Extrapolation extrapolationAfter() const override;
    /// The kind in effect at the time: that of the keyframe there or before it, or of the first keyframe if none is
    /// before. The default interpolation in a view without keyframes; Constant if the parameter is not keyframed.
    Interpolation interpolation(const Context& context) const override;
    /// The kind of one keyframe; the default interpolation if there is no such index.
    Interpolation interpolation(const KeyframeIndex& keyframe) const override;
    /// The kind that `vSetDefaultInterpolation` set.
    virtual Interpolation defaultInterpolation() const;
    /// Kind and shape of one keyframe; the default interpolation and four zeros if there is no such index.
    IType interpolationData(const KeyframeIndex& keyframe) const override;
    /// Appends a `ParameterInterpolationEdit`, the undoable form of `vSetInterpolation`; returns the command.
    Bsc::CompositeCommand& vSetInterpolationCommand(Interpolation kind, Context context,
                                                    Bsc::CompositeCommand& command) override;
    /// Appends a `ParameterInterpolationDataEdit`, the undoable form of `vSetInterpolationData`; returns the command.
    Bsc::CompositeCommand& vSetInterpolationDataCommand(Bsc::CompositeCommand& command, IType data,
                                                        const KeyframeIndex& keyframe) override;
    /// Appends a `ParameterExtrapolationBeforeEdit`; returns the command.
    Bsc::CompositeCommand& vSetExtrapolationBeforeCommand(Extrapolation kind, Bsc::CompositeCommand& command) override;
    /// Appends a `ParameterExtrapolationAfterEdit`; returns the command.
    Bsc::CompositeCommand& vSetExtrapolationAfterCommand(Extrapolation kind, Bsc::CompositeCommand& command) override;
    //@}
    /// \name Query keyframes
    /// Queries concern the keyframes of one view, in ascending order of time; times are compared exactly. The result is
    /// 0 or false, and output arguments keep their values, if the parameter is not keyframed, or if it is splittable
    /// and the view has no data. Safe on any thread.
    //@{
    /// The id of the meta-type "Prm::Parameter<name of T>".
    int qMetaType() const override;
    /// Whether a value set at a time becomes a keyframe.
    bool isKeyframed() const override;
    /// The number of keyframes.
    unsigned int keyframeCount(const View& view) const override;
    /// The time of the keyframe at the index, in the given view; time 0 if there is none. A view without data shows
    /// the source data.
    Context keyframeTime(unsigned int index, const View& view) const override;
    /// Replaces each keyframe's time, in every view, by what the mapping returns. The mapping must be strictly
    /// increasing: keyframes are not sorted again. Throws `boost::bad_function_call` for an empty mapping. Emits
    /// nothing.
    void adjustKeyframesTime(const boost::function<Time(Time)>& mapping) override;
    /// Whether a keyframe lies at exactly the context's time.
    bool bKeyframeAt(const Context::Explicit& context) const override;
    /// Stores the time of the nearest keyframe, the later one of two at the same distance; false if there is none.
    bool bNearestKeyframeTime(const Context& context, Time& time) const override;
    /// Stores the index of the nearest keyframe, the later one of two at the same distance; false if there is none.
    bool bNearestKeyframeIndex(const Context& context, unsigned int& index) const override;
    /// Stores the time and view of the last keyframe strictly before the context's time; false if there is none.
    bool bPreviousKeyframe(const Context& context, Context& previous) const override;
    /// Stores the time and view of the first keyframe strictly after the context's time; false if there is none.
    bool bNextKeyframe(const Context& context, Context& next) const override;
    //@}
    /// \name Edit, copy and restore
    /// These do nothing if the parameter is not keyframed, except for `vReset` and `importKeyframe`. Deleting does
    /// nothing in a view without data if the parameter is splittable.
    //@{
    /// Adds a keyframe with the present value; returns its index, or -1 if there is one at that time already. Emits
    /// [VIEW_ADDED], KEYFRAME_ADDED.
    int iAddKeyframe(const Context& context) override;
    /// Calls `iAddKeyframe(const Context&)` for each view of the state; returns the last index added or -1, and 0 if
    /// the parameter is not keyframed.
    int iAddKeyframe(const Frame& frame, const AnimationState& state) override;
    /// Deletes the keyframe at the context. The value of the last keyframe becomes the static value. Emits
    /// KEYFRAME_REMOVED.
    void vDeleteKeyframe(const Context::Explicit& context) override;
    /// Deletes all keyframes of the view. The static value stays what it was before the view had keyframes. Emits
    /// VIEW_CLEARED, which does not name the view.
    void vDeleteAllKeyframes(const View& view) override;
    /// Deletes the keyframe at the context (KEYFRAME_REMOVED); between keyframes does nothing. In a view without
    /// keyframes, or of a parameter that is not keyframed, sets the static value to the default. Emits [VIEW_ADDED],
    /// VIEW_RESET.
    void vReset(const Context& context) override;
    /// A copy of the keyframe at the context, null if there is none. For the invalid time: an empty one, to be filled
    /// with `setFromString`.
    boost::shared_ptr<SerialisedKeyframe> getSerialisedKeyframe(Context context) const override;
    /// Sets value, interpolation and shape at the keyframe's own time and view. Throws `std::bad_cast` for a keyframe
    /// of another type.
    void importKeyframe(const SerialisedKeyframe& keyframe) override;

    /// A snapshot, which shares keyframes with this parameter until either changes.
    boost::shared_ptr<Bsc::MementoBase> exportState() const override;
    /// Restores a snapshot. Throws `std::bad_cast` for a snapshot of another kind, and for null. Emits
    /// PARAMETER_ASSIGNED.
    void doImportState(boost::shared_ptr<Bsc::MementoBase> snapshot) override;
    //@}
    /// \name Views
    //@{
    /// Whether more than one view has data.
    bool isSplit() const override;
    /// Sets whether views may have data of their own. Data that views have stay. Emits nothing.
    void setSplittable(bool splittable) override;
    /// Whether views may have data of their own.
    bool splittable() const override;
    /// The length of `viewList()`.
    int numViews() const override;
    /// The views with data, in ascending order. The reference is valid as long as the parameter and follows later
    /// changes; if there are more than 4096 views, call again after a change.
    const std::vector<View>& viewList() const override;
    /// Gives `to` a copy of what `from` shows in `source` (null: in this parameter). Does nothing if this parameter is
    /// unsplittable or the source has another type. Emits [VIEW_ADDED], VALUE_CHANGED.
    void copyViewData(const View& from, const View& to, const ParameterWithoutType* source) override;
    /// Gives a view without data a copy of what it shows. Does nothing if the parameter is unsplittable. Emits
    /// VIEW_ADDED, VALUE_CHANGED.
    void uniquifyView(const View& view) override;
    /// Gives `hero` a copy of what `from` shows. Returns false if `hero` is invalid or has data, or if the parameter is
    /// unsplittable. Emits VIEW_ADDED, VALUE_CHANGED.
    bool initialiseHeroView(const View& hero, const View& from) override;
    /// Deletes the data of a view, which then reads the source data. Returns false for a view without data and for the
    /// only view with data. Emits VIEW_REMOVED.
    bool deleteView(const View& view) override;
    //@}
    /// \name Undoable edits
    /// Each appends to the command without doing the edit.
    //@{
    /// Appends a `ParameterAddKeyEdit`; returns the command.
    Bsc::CompositeCommand& vAddKeyframeCommand(const Context::Explicit& context,
                                               Bsc::CompositeCommand& command) override;
    /// Appends a `ParameterAddKeyEdit` for each view of the state; returns the command.
    Bsc::CompositeCommand& vAddKeyframeCommand(const Frame& frame, const AnimationState& state,
                                               Bsc::CompositeCommand& command) override;
    /// Appends a `ParameterDeleteKeyEdit`.
    void createKeyframeDeletion(const Context::Explicit& context, Bsc::CompositeCommand& command) override;
    /// Appends a `ParameterDeleteKeyEdit` for each view of the state.
    void createKeyframeDeletion(const Frame& frame, const AnimationState& state,
                                Bsc::CompositeCommand& command) override;
    /// Appends a `ParameterDeleteAllKeysEdit`; returns the command.
    Bsc::CompositeCommand& vDeleteAllKeyframesCommand(const View& view, Bsc::CompositeCommand& command) override;
    /// The type of the values: `typeid(T)`.
    virtual const std::type_info& tRawValueType() const;
    /// Appends a `ParameterAddConstrainedParameterEdit`, the undoable form of `bAddConstrainedParameter`; nothing for
    /// null. Returns the command.
    Bsc::CompositeCommand& bAddConstrainedParameterCommand(ParameterWithoutType* parameter,
                                                           Bsc::CompositeCommand& command) override;
    //@}

    /// Copies keyframes, views, flags, extrapolation and view interpolation from a parameter of the same type, so that
    /// both have the same value at every time in every view. Does nothing for another type. Emits PARAMETER_ASSIGNED.
    void vCopyKeyframeDataFrom(const ParameterWithoutType* source) override;
    /// Adds the value at the context to the hash; if the context's time is no frame, the static value of view 0.
    void calculateHash(Bsc::Hash& hash, const Context& context) const override;

    /// \name Hooks for curves
    /// A class overrides these to give its values curves. They run on every thread that evaluates. During one
    /// evaluation, `keyframe()` and the other queries return the same list of keyframes throughout.
    //@{
    /// The value at a time between two keyframes. Here: the value of the keyframe before.
    virtual T interpolateValue(const BoundingKeyframes& keyframes, const Context& context, Cache* cache) const;
    /// The value at a time before the first or after the last keyframe; the other side of `keyframes` is empty. Here:
    /// the value of that keyframe.
    virtual T extrapolateValue(const BoundingKeyframes& keyframes, const Context& context, Cache* cache) const;
    /// Whether `extrapolateValue` is called for a view without keyframes, with both sides empty. Here: false.
    virtual bool supportsExtrapolationFromNoKeys() const;
    /// Whether the view has data of its own.
    virtual bool hasViewData(const View& view) const;
    /// The interpolation of `from` when its segment, which ends at `to`, becomes of a kind. Called when a keyframe is
    /// added, and by `vSetInterpolation`, where `from` has its former kind and shape. Here: the kind and four zeros.
    ///
    /// The keyframes are copies. An override may edit and even delete the parameter: the calling edit then continues
    /// with the keyframes that it finds, and uses the result only if the segment still has both ends.
    virtual IType initialiseInterpolation(const KeyframeData<T>& from, const KeyframeData<T>& to,
                                          Interpolation kind) const;
    //@}

    /// Reads one line without the parameter's name; returns whether it was taken. Emits nothing except VIEW_ADDED.
    /// Throws `std::runtime_error` for a malformed keyframe.
    bool streamInValue(const QString& line, const ProjectFileVersion& version, TextConversion convert) override;
    ~Parameter() override;

    /// Writes the keyframes of one view, or its static value if it has none.
    void writeSingleViewValues(QTextStream& stream, const QString& prefix, const View& view,
                               bool forceViewPrefix) const;
    /// Writes the static value after the view's prefix.
    void writeStaticValue(QTextStream& stream, const QString& prefix, const View& view) const;

    quint64 keyframeRevision() const override { return m_revision; }
    /// If the parameter has more than 64 keyframes and views: a snapshot of the settings and of the views of these
    /// places: whether each has data, its static value, and its keyframes from the one before each place to the one
    /// after it. Otherwise, and for a class that overrides `exportState`, a snapshot of the whole state.
    boost::shared_ptr<Bsc::MementoBase> exportStateAround(const detail::Places& places) const override;
    void retimeKeyframes(const boost::function<Time(Time)>& mapping) override;

    /// \name Values
    //@{
    /// The static value that the view reads.
    T staticValue(const View& view) const;
    /// Deletes the data of all views, so that every view shows the default value. Emits VIEW_REMOVED for each, in
    /// ascending order.
    void clearViewData();
    /// The values at `count` times in one view, as `value` returns them, stored in `out`, which must have room for
    /// them. Fastest with times in ascending order. Safe on any thread.
    void sampleValues(const Time* times, int count, const View& view, T* out, Cache* cache = nullptr) const;
    /// The values at the frames from `first` to `last`, both included.
    QVector<T> sampleValues(const Frame& first, const Frame& last, const View& view, Cache* cache = nullptr) const;
    //@}
    /// \name Views
    //@{
    /// How the value of a view without data is computed from the views with data. Off in a new parameter.
    MVInterpolationParams viewInterpolation() const;
    /// Sets how the value of a view without data is computed. Emits nothing.
    void setViewInterpolation(const MVInterpolationParams& params);
    //@}
    /// \name Query keyframes
    //@{
    /// The index at which a keyframe of that time belongs: the number of keyframes before it.
    unsigned int insertionIndex(const Time& time, const LockedKeyframes& keyframes) const;
    /// The index of the keyframe at exactly that time, or `KeyframeIndex::INVALID_INDEX`.
    unsigned int keyframeIndexForTime(const Time& time, const LockedKeyframes& keyframes) const;
    /// The same among the keyframes that the context's view reads.
    unsigned int keyframeIndexForTime(const Context& context) const;
    //@}

protected:
    using HeldTrack = detail::HeldTrack<T>;

    /// The result of a function of the data that a view reads, and of the view to which they belong. Within a hook,
    /// these are the data with which the evaluation began, unless the hook has edited them. The function must not call
    /// code of a host, except for the virtual operations of this class.
    template <class Question> auto ask(const View& view, const Question& question) const;
    /// The same for a function that may call code of a host: the data are a copy, or those of the evaluation.
    template <class Question> auto askHeld(const View& view, const Question& question) const;
    /// For the constructor of the class whose hooks do what `detail::evaluate` does.
    void setEvaluated() { HookGate::setEvaluated(*this); }

private:
    using HookGate = detail::HookGate<T>;

    PRM_ALWAYS_INLINE bool asksHooks() const { return m_gate.overridden(*this) != HookGate::Nothing; }
    const void* asTyped(const std::type_info& valueType) const override;
    void explainTo(Explanation& explanation, const Context& context) const override;
    class Evaluation;
    class Differences;
    class Reshaper;
    PRM_ALWAYS_INLINE const Parameter& shownParameter() const;
    PRM_ALWAYS_INLINE const Parameter* sameType(const ParameterWithoutType& other) const;
    template <class Own, class General>
    PRM_ALWAYS_INLINE auto askShown(const Own& own, const General& general) const
        -> decltype(own(std::declval<const Parameter&>()));
    template <class Choose> PRM_ALWAYS_INLINE HeldTrack hold(const View& view, const Choose& choose) const;
    /// What decides from which views a value is made.
    struct Traits {
        Traits(bool isKeyframed, bool isSplittable) : keyframed(isKeyframed), splittable(isSplittable) {}
        /// Whatever its class overrides.
        explicit Traits(const Parameter& own)
            : keyframed(own.Parameter::isKeyframed()), splittable(own.Parameter::splittable()) {}

        bool operator==(const Traits& other) const {
            return keyframed == other.keyframed && splittable == other.splittable;
        }
        bool keyframed;
        bool splittable;
    };
    View sourceView(const FastViewMap& map, const View& view, Traits traits, detail::SourceViews& sources) const;
    PRM_NEVER_INLINE T generalValue(const Context& context, Cache* cache) const;
    T ownValue(const Context& context, Cache* cache) const;
    PRM_ALWAYS_INLINE bool runsOtherCode() const;
    PRM_ALWAYS_INLINE bool isEvaluated(const Context& context, quint64 before, T& value) const;
    PRM_ALWAYS_INLINE detail::Outside outside() const { return {m_extrapolationBefore, m_extrapolationAfter}; }

    /// "None" for the questions about keyframes.
    bool hidesKeyframesOf(const View& view) const;
    template <class Question>
    auto askKeyframes(const View& view, decltype(std::declval<Question>()(KeyframeVector())) none,
                      const Question& question) const -> decltype(none);
    template <class Find> int findKeyframe(const View& view, const Find& find) const;

    /// A keyframe that was asked for: new, or the one that was there.
    struct Inserted {
        PVData* data = nullptr;
        int position = -1;
        bool isNew = false;
    };

    // For prm/Answers.h.
    detail::Shown<T> shownIn(const View& view) const;
    detail::Shown<T> ownTracks(const View& view) const;
    KeyframeVector keyframesIn(const View& view, const TimeSpan& span) const;

    PVData* targetData(const View& view, const detail::Track<T>* contents = nullptr);
    PVData* makeTargetData(const View& view, View target, const detail::Track<T>* contents);
    PVData* ownData(const View& view, const detail::Track<T>* contents);
    Inserted insertKeyframe(PVData* data, const View& view, Time time, const T& value);
    template <class ShapeOf>
    Inserted insertAt(const detail::InsertionPlace& place, PVData& data, const KeyframeData<T>& added,
                      const ShapeOf& shapeOf);
    bool giveViewData(const View& view, const detail::Track<T>& contents);
    void takeKeyframeData(const Parameter& source, bool withDefaultInterpolation);
    struct Settings;
    class LineReading;
    bool readRest(QStringView rest, const ProjectFileVersion& version, const TextConversion& convert) override;
    detail::Track<T> writtenTrack(const View& view) const;
    class KeyframeImport;

    friend class detail::Ask;
    friend class detail::Invariants;
    friend void detail::default_Parameter_setVariantValue_impl<T>(Parameter& parameter, const QVariant& variant,
                                                                  const Context& context);

    /// The owning thread's alone.
    detail::KeyframeRevision m_revision;
    std::atomic<bool> m_keyframed;
    std::atomic<bool> m_splittable;
    std::atomic<bool> m_isSplit{false};
    std::atomic<quint8> m_viewInterpolation{MVInterpolationParams::Off};
    std::atomic<Extrapolation> m_extrapolationBefore{Extrapolation::Constant};
    std::atomic<Extrapolation> m_extrapolationAfter{Extrapolation::Constant};
    std::atomic<Interpolation> m_defaultInterpolation;
    HookGate m_gate;
    FastViewMap m_views;
};

extern template class Parameter<bool>;
extern template class Parameter<int>;
extern template class Parameter<unsigned int>;
extern template class Parameter<double>;
extern template class Parameter<QString>;
extern template class Parameter<QPointF>;
extern template class Parameter<QPoint>;

namespace detail {

extern template PRM_EXPORT void default_Parameter_setVariantValue_impl(Parameter<bool>&, const QVariant&,
                                                                       const Context&);
extern template PRM_EXPORT void default_Parameter_setVariantValue_impl(Parameter<int>&, const QVariant&,
                                                                       const Context&);
extern template PRM_EXPORT void default_Parameter_setVariantValue_impl(Parameter<unsigned int>&, const QVariant&,
                                                                       const Context&);
extern template PRM_EXPORT void default_Parameter_setVariantValue_impl(Parameter<double>&, const QVariant&,
                                                                       const Context&);
extern template PRM_EXPORT void default_Parameter_setVariantValue_impl(Parameter<QString>&, const QVariant&,
                                                                       const Context&);
extern template PRM_EXPORT void default_Parameter_setVariantValue_impl(Parameter<QPointF>&, const QVariant&,
                                                                       const Context&);
extern template PRM_EXPORT void default_Parameter_setVariantValue_impl(Parameter<QPoint>&, const QVariant&,
                                                                       const Context&);

} // namespace detail

} // namespace Prm
