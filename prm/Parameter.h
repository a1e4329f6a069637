#pragma once

#include "prm/Export.h"
#include "prm/Interpolation.h"
#include "prm/KeyframeData.h"
#include "prm/ParameterWithoutType.h"
#include "prm/ValueType.h"
#include "prm/ViewInterpolation.h"
#include "prm/parameter/FastViewMap.h"
#include "prm/track/KeyframeRevision.h"
#include "prm/track/KeyframeSearch.h"
#include "prm/track/SourceViews.h"
#include "prm/track/Track.h"
#include "prm/untyped/VirtualTable.h"

#include <QFlags>

#include <atomic>
#include <cstdint>
#include <type_traits>
#include <typeinfo>
#include <utility>

namespace Prm {

/// Whatever a host wants to keep between evaluations; the library only hands the pointer on to the hooks.
class Cache;

template <class T> class PRM_EXPORT Parameter;
template <class T> class PRM_EXPORT CurveParameter;

namespace detail {

/// The steps of `Parameter<T>::setVariantValue` without its checks: sets a keyframed parameter at a frame's time as
/// `vSetValue` does, otherwise the static value. For a host's own `setVariantValue`; throws what observers and hooks
/// do.
template <class T>
PRM_EXPORT void default_Parameter_setVariantValue_impl(Parameter<T>& parameter, const QVariant& variant,
                                                       const Context& context);

} // namespace detail

/// What a new parameter is like.
enum ParameterOption : quint32 {
    Keyframed = 1,  ///< what is set at a time becomes a keyframe there
    Splittable = 2, ///< views may have data of their own
    Locked = 4,     ///< a flag for the host
    Hidden = 8      ///< a flag for the host, and a line in project text
};
Q_DECLARE_FLAGS(ParameterOptions, ParameterOption)
Q_DECLARE_OPERATORS_FOR_FLAGS(ParameterOptions)

/// An animatable parameter of value type T: for each view either one static value or a list of keyframes in ascending
/// order of time, and the defaults from which the data of new views are made.
///
/// A keyframed parameter always keys what is set at a time; one that is not keyframed has static values only. A
/// splittable parameter may hold different data for each view; a view without data of its own reads the source data,
/// that of the first view that has some. A parameter that was never written has no data at all and answers with its
/// default.
///
/// Edits that do not apply are ignored silently. Which changes are sent is said at each operation, in order; a change
/// in brackets only when the view gains data of its own.
///
/// A host's own type needs a `ValueType` and one source file that includes `prm/Parameter.hpp` and instantiates.
///
/// \snippet a_switch.cpp switch
/// \threads Values, samples and questions about the keyframes of one view may be asked from any number of threads while
/// the owning thread edits, ties to masters included; the answer is a state that was announced: that before an edit or
/// after it and, where a view gains data, that of VIEW_ADDED between them. All edits belong to the owning thread, and
/// so does what goes through all views: `viewList()`, `numViews()`, `allKeyframes()`, `forEachKeyframeTime()` without a
/// view, writing text, taking snapshots, and being copied from. While a parameter or a master of its is destroyed, no
/// other thread may evaluate it. No lock is held while observers are notified of a change.
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

    Parameter();
    /// The default value fills the template; no view gets data.
    explicit Parameter(const QString& scriptName, const T& defaultValue = T(),
                       ParameterOptions options = Keyframed | Splittable, ParameterSet* parent = nullptr);
    /// A detached copy for snapshots: names, flags, keyframes and views; not the default value, the observers, the
    /// links or the set.
    Parameter(const Parameter& other);
    /// A copy of a parameter with curves would hold where the original has a curve: copy it as what it is.
    template <class Curved, class = std::enable_if_t<std::is_base_of_v<CurveParameter<T>, Curved>>>
    Parameter(const Curved& other) = delete;

    // The order of the virtual operations is part of the interface.

    /// Takes over names, flags, keyframes, views and default interpolation of a parameter of the same type, never its
    /// default value. PARAMETER_ASSIGNED.
    void assignFrom(const ParameterWithoutType& other) override;
    /// The value at the context's time in its view: the master's where there is one, the static value when not
    /// keyframed, a keyframe's own at its time, otherwise what the hooks make of the keyframes around it.
    virtual T value(const Context& context, Cache* cache = nullptr) const;
    /// Sets the value at the context, with a keyframe if the parameter is keyframed and the time valid, and answers the
    /// keyframe's index; else the static value, and -1. [VIEW_ADDED], KEYFRAME_ADDED for a new keyframe,
    /// KEYFRAME_CHANGED_VALUE if the value is new (index -1 for the static value).
    virtual int vSetValue(const T& value, const Context& context);
    virtual T defaultValue() const;
    /// Counts for views that get data later. Sends nothing.
    virtual void vSetDefault(const T& value);
    using BasicParameter::setVariantValue;
    using BasicParameter::variantValue;
    /// Throws `std::runtime_error` ("Parameter not splittable", "Parameter not animated", translated) for a view other
    /// than 0 of an unsplittable parameter, and for a frame's time of one that is not keyframed. Otherwise calls the
    /// virtual form with `std::nothrow`; what an observer or a hook throws meanwhile goes on to the caller.
    void setVariantValue(const QVariant& variant, const Context& context) override;
    /// Sets a keyframed parameter at a frame's time as `vSetValue` does, otherwise the static value: [VIEW_ADDED],
    /// VALUE_CHANGED if it is new.
    void setVariantValue(const QVariant& variant, const Context& context, const std::nothrow_t&) override;
    /// The keyframe's value, of the last one for an index beyond; the static value without keyframes.
    virtual T keyframeValue(unsigned int index, const View& view) const;
    /// The keyframe, the last one for an index beyond; without keyframes the invalid time, the static value and the
    /// default interpolation.
    virtual KeyframeData<T> keyframe(unsigned int index, const View& view) const;
    /// Throws as `setVariantValue` does. Otherwise calls the virtual form with `std::nothrow`.
    QVariant variantValue(const Context& context) const override;
    QVariant variantValue(const Context& context, const std::nothrow_t&) const override;
    QVector<Context> allKeyframes() const override;
    /// Writes all lines of the parameter; true.
    bool bStreamOut(QTextStream& stream, const QString& prefix, bool withName) const override;
    /// PARAMETER_CHANGED_EXTRAPOLATION_BEFORE, also when nothing changes.
    void vSetExtrapolationBefore(Extrapolation kind) override;
    /// PARAMETER_CHANGED_EXTRAPOLATION_AFTER, also when nothing changes.
    void vSetExtrapolationAfter(Extrapolation kind) override;
    /// Sets the kind of the keyframe at the context and returns whether there is one. When a keyframe follows,
    /// `initialiseInterpolation` shapes the segment anew; it is given the keyframe with its former kind and shape. The
    /// last keyframe keeps its shape. KEYFRAME_CHANGED_INTERPOLATION, also when nothing changes.
    bool vSetInterpolation(Interpolation kind, const Context& context) override;
    void vSetDefaultInterpolation(Interpolation kind) override;
    /// Sets kind and shape exactly as given. KEYFRAME_CHANGED_INTERPOLATION.
    void vSetInterpolationData(IType itype, unsigned int index, const View& view) override;
    Extrapolation extrapolationBefore() const override;
    Extrapolation extrapolationAfter() const override;
    /// The kind that governs the time: of the keyframe there or before it, of the first one before all.
    Interpolation interpolation(const Context& context) const override;
    Interpolation interpolation(const KeyframeIndex& keyframe) const override;
    virtual Interpolation defaultInterpolation() const;
    IType interpolationData(const KeyframeIndex& keyframe) const override;
    Bsc::CompositeCommand& vSetInterpolationCommand(Interpolation kind, Context context,
                                                    Bsc::CompositeCommand& command) override;
    Bsc::CompositeCommand& vSetInterpolationDataCommand(Bsc::CompositeCommand& command, IType data,
                                                        const KeyframeIndex& keyframe) override;
    Bsc::CompositeCommand& vSetExtrapolationBeforeCommand(Extrapolation kind, Bsc::CompositeCommand& command) override;
    Bsc::CompositeCommand& vSetExtrapolationAfterCommand(Extrapolation kind, Bsc::CompositeCommand& command) override;
    /// The id of "Prm::Parameter<name of T>".
    int qMetaType() const override;
    bool isKeyframed() const override;
    // Questions about the keyframes of a view answer "none" for a parameter that is not keyframed, and for a splittable
    // one about a view without data of its own.
    unsigned int keyframeCount(const View& view) const override;
    Context keyframeTime(unsigned int index, const View& view) const override;
    void adjustKeyframesTime(const boost::function<Time(Time)>& mapping) override;
    bool bKeyframeAt(const Context::Explicit& context) const override;
    bool bNearestKeyframeTime(const Context& context, Time& time) const override;
    bool bNearestKeyframeIndex(const Context& context, unsigned int& index) const override;
    bool bPreviousKeyframe(const Context& context, Context& previous) const override;
    bool bNextKeyframe(const Context& context, Context& next) const override;
    /// A keyframe of the present value where there is none; its index or -1. [VIEW_ADDED], KEYFRAME_ADDED.
    int iAddKeyframe(const Context& context) override;
    int iAddKeyframe(const Frame& frame, const AnimationState& state) override;
    /// KEYFRAME_REMOVED. The last keyframe leaves its value as the static value.
    void vDeleteKeyframe(const Context::Explicit& context) override;
    /// VIEW_CLEARED, which does not name the view. The static value stays what it was before the view was animated.
    void vDeleteAllKeyframes(const View& view) override;
    /// Removes the keyframe at the context; in a view without keyframes sets the default value ([VIEW_ADDED],
    /// VIEW_RESET).
    void vReset(const Context& context) override;
    /// The keyframe at the context, null when there is none; an empty one to be filled for the context of the invalid
    /// time.
    boost::shared_ptr<SerialisedKeyframe> getSerialisedKeyframe(Context context) const override;
    /// Sets value, interpolation and shape at the keyframe's own time and view. Throws `std::bad_cast` for a keyframe
    /// of another type.
    void importKeyframe(const SerialisedKeyframe& keyframe) override;
    /// A copy that shares keyframes with this parameter until one side changes.
    boost::shared_ptr<Bsc::MementoBase> exportState() const override;
    /// Throws `std::bad_cast` for a snapshot of another kind, and for null. PARAMETER_ASSIGNED.
    void doImportState(boost::shared_ptr<Bsc::MementoBase> snapshot) override;
    /// Whether more than one view has data of its own.
    bool isSplit() const override;
    /// Nothing but the flag: data that views have stay.
    void setSplittable(bool splittable) override;
    bool splittable() const override;
    int numViews() const override;
    /// The views with data of their own, in ascending order. The reference lives as long as the parameter, and shows
    /// later changes; with more than 4096 views, ask again.
    const std::vector<View>& viewList() const override;
    /// Gives `to` what `from` shows in `source` (this parameter for null). [VIEW_ADDED], VALUE_CHANGED.
    void copyViewData(const View& from, const View& to, const ParameterWithoutType* source) override;
    /// Gives a view without data a copy of what it shows. [VIEW_ADDED], VALUE_CHANGED.
    void uniquifyView(const View& view) override;
    /// Gives `hero`, if it has no data, a copy of what `from` shows; returns whether it did. [VIEW_ADDED],
    /// VALUE_CHANGED.
    bool initialiseHeroView(const View& hero, const View& from) override;
    /// Takes the data of a view away; false where it has none, and for the last one. VIEW_REMOVED.
    bool deleteView(const View& view) override;
    Bsc::CompositeCommand& vAddKeyframeCommand(const Context::Explicit& context,
                                               Bsc::CompositeCommand& command) override;
    Bsc::CompositeCommand& vAddKeyframeCommand(const Frame& frame, const AnimationState& state,
                                               Bsc::CompositeCommand& command) override;
    void createKeyframeDeletion(const Context::Explicit& context, Bsc::CompositeCommand& command) override;
    void createKeyframeDeletion(const Frame& frame, const AnimationState& state,
                                Bsc::CompositeCommand& command) override;
    Bsc::CompositeCommand& vDeleteAllKeyframesCommand(const View& view, Bsc::CompositeCommand& command) override;
    virtual const std::type_info& tRawValueType() const;
    Bsc::CompositeCommand& bAddConstrainedParameterCommand(ParameterWithoutType* parameter,
                                                           Bsc::CompositeCommand& command) override;
    /// Takes over keyframes, views, flags, extrapolation and view interpolation of a parameter of the same type, so
    /// that this one shows the same at every time in every view. PARAMETER_ASSIGNED.
    void vCopyKeyframeDataFrom(const ParameterWithoutType* source) override;
    /// Adds the value at the context; where its time is no frame, the static value of view 0.
    void calculateHash(Bsc::Hash& hash, const Context& context) const override;
    // The hooks by which a type gets curves. Here: every segment holds the value of its first keyframe, and the range
    // holds its ends. They may ask `keyframe()` again: one evaluation sees one list throughout.
    virtual T interpolateValue(const BoundingKeyframes& keyframes, const Context& context, Cache* cache) const;
    virtual T extrapolateValue(const BoundingKeyframes& keyframes, const Context& context, Cache* cache) const;
    /// Whether `extrapolateValue` can answer for a view without keyframes.
    virtual bool supportsExtrapolationFromNoKeys() const;
    virtual bool hasViewData(const View& view) const;
    /// The interpolation of `from` when its segment, up to `to`, becomes of a kind: when a keyframe is added, and by
    /// `vSetInterpolation`, where `from` still has its former kind and shape. The keyframes are copies. An override may
    /// edit, and delete the parameter; the edit that asks goes on with the keyframes it then finds, and uses the result
    /// only for a segment that still has both ends.
    virtual IType initialiseInterpolation(const KeyframeData<T>& from, const KeyframeData<T>& to,
                                          Interpolation kind) const;
    /// Takes one line; its changes are not told, except VIEW_ADDED. Throws `std::runtime_error` for a malformed
    /// keyframe.
    bool streamInValue(const QString& line, const ProjectFileVersion& version, TextConversion convert) override;
    ~Parameter() override;

    /// The keyframes of one view, or its static value where there are none.
    void writeSingleViewValues(QTextStream& stream, const QString& prefix, const View& view,
                               bool forceViewPrefix) const;
    /// The static value after the view's prefix.
    void writeStaticValue(QTextStream& stream, const QString& prefix, const View& view) const;

    quint64 keyframeRevision() const override { return m_revision; }
    /// Of a parameter with more than 64 keyframes and views: whether the views of these places have data, their
    /// static values, the keyframes from the one before each place to the one after it, and the settings. Of a
    /// smaller one, and for a class whose `exportState` takes something else, the whole state.
    boost::shared_ptr<Bsc::MementoBase> exportStateAround(const detail::Places& places) const override;
    void retimeKeyframes(const boost::function<Time(Time)>& mapping) override;

    /// The static value that the view reads.
    T staticValue(const View& view) const;
    /// Takes all views' data away. VIEW_REMOVED for each, in ascending order.
    void clearViewData();

    /// The values at many times, as `value` gives them, in ascending order of time at the best speed. `out` has room
    /// for all of them.
    void sampleValues(const Time* times, int count, const View& view, T* out, Cache* cache = nullptr) const;
    /// The values at the frames from `first` to `last`, both included.
    QVector<T> sampleValues(const Frame& first, const Frame& last, const View& view, Cache* cache = nullptr) const;

    /// How views without data of their own are made from those that have some.
    MVInterpolationParams viewInterpolation() const;
    void setViewInterpolation(const MVInterpolationParams& params);

    /// The position at which a keyframe of the time belongs.
    unsigned int insertionIndex(const Time& time, const LockedKeyframes& keyframes) const;
    /// The index of the keyframe at the time, or `KeyframeIndex::INVALID_INDEX`.
    unsigned int keyframeIndexForTime(const Time& time, const LockedKeyframes& keyframes) const;
    unsigned int keyframeIndexForTime(const Context& context) const;

protected:
    using HeldTrack = detail::HeldTrack<T>;

    /// What a question makes of the data that a view reads, and of the view to which they belong. Within a hook these
    /// are the data with which the evaluation began, unless the hook has edited them. The question must not run code of
    /// a host's, beside the virtual operations of this class.
    template <class Question> auto ask(const View& view, const Question& question) const;
    /// For the constructor of the class whose hooks do what `detail::evaluate` does.
    void setEvaluated() { evaluatedTable().store(detail::virtualTableOf(this), std::memory_order_relaxed); }

private:
    static std::atomic<const char*>& evaluatedTable();
    template <class Operation> bool overrides(Operation operation) const;
    PRM_ALWAYS_INLINE bool asksHooks() const;
    PRM_NEVER_INLINE bool learnsToAskHooks() const;
    const void* asTyped(const std::type_info& valueType) const override;
    const Parameter& shownParameter() const;
    template <class Own, class General>
    auto askShown(const Own& own, const General& general) const -> decltype(own(std::declval<const Parameter&>()));
    template <class Choose> HeldTrack hold(const View& view, const Choose& choose) const;
    View sourceView(const FastViewMap& map, const View& view, bool apart, detail::SourceViews& sources) const;
    PRM_ALWAYS_INLINE T ownValue(const Context& context, Cache* cache) const;
    PRM_NEVER_INLINE void ownValues(const Context& context, const Time* times, int count, T* out, Cache* cache) const;
    void blendedValues(const detail::SourceViews& sources, const Context& context, const Time* times, int count,
                       T* out, Cache* cache) const;
    void heldValues(const HeldTrack& held, const Context& context, const Time* times, int count, T* out,
                    Cache* cache) const;
    T hookedValue(const HeldTrack& held, const Context& context, int& cursor, Cache* cache) const;
    detail::Outside outside() const { return {m_extrapolationBefore, m_extrapolationAfter}; }

    /// "None" for the questions about keyframes.
    bool hidesKeyframesOf(const View& view) const;
    bool hasDataToEdit(const View& view) const;
    template <class Question>
    auto askKeyframes(const View& view, decltype(std::declval<Question>()(KeyframeVector())) none,
                      const Question& question) const -> decltype(none);
    template <class Find> int findKeyframe(const View& view, const Find& find) const;

    PVData* targetData(const View& view, const detail::Track<T>* contents = nullptr);
    PVData* ownData(const View& view, const detail::Track<T>* contents);
    static bool storeStaticValue(PVData& data, const T& value);
    int insertKeyframe(const View& view, Time time, const T& value);
    int setStoredValue(PVData& data, Time time, const T& value, const View& view);
    bool giveViewData(const View& view, const detail::Track<T>& contents);
    void takeKeyframeData(const Parameter& source, bool withDefaultInterpolation);
    struct Settings;
    Settings settings() const;
    void takeSettings(const Settings& settings);
    void checkVariantAccess(const Context& context) const;

    KeyframeVector keyframesToWrite(const View& view) const;
    static void addViewList(QString& text, const QString& start, const std::vector<View>& views);
    void addViewValues(QString& text, const QString& start, const View& view, bool forceViewPrefix) const;
    void addStaticValue(QString& text, const QString& start, const View& view) const;
    void readViewList(const QString& line);
    template <class Change> void readIntoView(const View& view, const Change& change);
    template <class Change> void readNewViews(const Change& change);
    bool readExtrapolation(const QString& line);

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
    /// The virtual table that this object had when it was evaluated last, one more if its class overrides a hook.
    mutable std::atomic<std::uintptr_t> m_evaluatedAs{1};
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
