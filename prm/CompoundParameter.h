#pragma once

#include "prm/Export.h"
#include "prm/ParameterSet.h"
#include "prm/ParameterWithoutTypeBase.h"

#include <QList>
#include <QPointer>
#include <QVariant>
#include <QVector>

#include <vector>

namespace Prm {

/// Several parameters that are edited, undone and written as one, for example a position or a colour. A compound is
/// both a parameter and a set; its subparameters are the animatable parameters of the set.
///
/// - Its keyframes are the union of the subparameters' keyframes. An index is a position in that union.
/// - Its value is the list of their values, a `QVector<QVariant>`.
/// - It forwards edits to the subparameters, and re-emits their changes of keyframes and values as its own.
/// - If the subparameters are keyed together (`keyframeTogether`), adding or deleting a keyframe of one does the same
/// to
///   the others.
/// - In project text, the subparameters' lines begin with its name. It has no line of its own, even if it is hidden or
///   has a master. Without a script name, the subparameters are written as members of the set.
///
/// A compound is meant for up to 100 subparameters.
///
/// \snippet position.cpp class
/// \threads The owning thread. Other threads may call `variantValue` while no subparameter is added or deleted.
class PRM_EXPORT CompoundParameter : public ParameterWithoutTypeBase, public ParameterSet {
    Q_OBJECT

public:
    /// \name Construct and assign
    //@{
    /// Parent set and tree may be null.
    explicit CompoundParameter(const QString& scriptName = {}, bool keyframeTogether = false,
                               ParameterSet* parent = nullptr, ParameterTree* tree = nullptr);
    /// A compound of the same subparameters, in no set and no tree.
    CompoundParameter(const CompoundParameter& other);
    ~CompoundParameter() override;
    //@}
    /// \name Subparameters
    //@{
    /// Whether the subparameters are keyed together.
    bool keyframeTogether() const override { return m_keyframeTogether; }
    /// In the order in which they were added.
    QList<ParameterWithoutType*> subparameters() const;
    /// Enables or disables all notifications of every subparameter.
    void subparametersNotification(bool on);

    /// Adds a subparameter and connects to its changes. Ignores this compound, and one that contains it, with a
    /// warning.
    void addParameter(const boost::shared_ptr<ParameterWithoutType>& parameter) override;
    void addParameter(ParameterWithoutType& parameter) override;
    //@}
    /// \name Names
    /// Setters set the name of the parameter and that of the set.
    //@{
    using ParameterWithoutTypeBase::displayName;
    using ParameterWithoutTypeBase::path;
    using ParameterWithoutTypeBase::scriptName;
    void setScriptName(const QString& name) override;
    void setDisplayName(const QString& name) override;
    void setDisplayName(const QString& name, const QString& displayName) override;
    void assignName(const QString& name) override;
    //@}
    /// \name Values
    //@{
    using ParameterWithoutTypeBase::setVariantValue;
    using ParameterWithoutTypeBase::variantValue;
    /// The subparameters' values, in their order. Throws what a subparameter throws.
    QVariant variantValue(const Context& context) const override;
    /// Sets the subparameters' values from a `QVector<QVariant>` or `QVariantList` with one element for each. Ignores
    /// anything else, with a warning. Throws what a subparameter throws.
    void setVariantValue(const QVariant& value, const Context& context) override;
    int qMetaType() const override;
    /// Adds nothing: a compound has no value besides those of its subparameters.
    void calculateHash(Bsc::Hash& hash, const Context& context) const override;
    //@}
    /// \name Query keyframes
    /// Of the union in one view.
    //@{
    /// The union, in ascending order of time.
    QList<Context> allKeyframesTime(const View& view) const;
    QVector<Context> allKeyframes() const override;
    bool isKeyframed() const override;
    unsigned int keyframeCount(const View& view) const override;
    Context keyframeTime(unsigned int index, const View& view) const override;
    bool bKeyframeAt(const Context::Explicit& context) const override;
    bool bNearestKeyframeTime(const Context& context, Time& time) const override;
    bool bNearestKeyframeIndex(const Context& context, unsigned int& index) const override;
    bool bPreviousKeyframe(const Context& context, Context& previous) const override;
    bool bNextKeyframe(const Context& context, Context& next) const override;
    quint64 keyframeRevision() const override;
    //@}
    /// \name Edit keyframes
    /// Each is forwarded to all subparameters.
    //@{
    /// Returns the position in the union, or -1 if no subparameter got a keyframe.
    int iAddKeyframe(const Context& context) override;
    int iAddKeyframe(const Frame& frame, const AnimationState& state) override;
    void vDeleteKeyframe(const Context::Explicit& context) override;
    void vDeleteAllKeyframes(const View& view) override;
    void vReset(const Context& context) override;
    void adjustKeyframesTime(const boost::function<Time(Time)>& mapping) override;
    void retimeKeyframes(const boost::function<Time(Time)>& mapping) override;
    //@}
    /// \name Interpolation and extrapolation
    /// Setters are forwarded to all subparameters. Extrapolation is that of the first keyframed subparameter,
    /// interpolation that of the first subparameter with that keyframe.
    //@{
    void vSetExtrapolationBefore(Extrapolation kind) override;
    void vSetExtrapolationAfter(Extrapolation kind) override;
    void vSetDefaultInterpolation(Interpolation kind) override;
    bool vSetInterpolation(Interpolation kind, const Context& context) override;
    void vSetInterpolationData(IType data, unsigned int index, const View& view) override;
    Extrapolation extrapolationBefore() const override;
    Extrapolation extrapolationAfter() const override;
    Interpolation interpolation(const Context& context) const override;
    Interpolation interpolation(const KeyframeIndex& keyframe) const override;
    IType interpolationData(const KeyframeIndex& keyframe) const override;
    //@}
    /// \name Copy and paste
    //@{
    /// The keyframes of the subparameters at the time, by position; null if none has one.
    boost::shared_ptr<SerialisedKeyframe> getSerialisedKeyframe(Context context) const override;
    /// Throws `std::bad_cast` for a keyframe of another kind.
    void importKeyframe(const SerialisedKeyframe& keyframe) override;
    //@}
    /// \name Views
    /// Queries return true if they are true of any subparameter; edits are forwarded to all.
    //@{
    bool isSplit() const override;
    int numViews() const override;
    void setSplittable(bool splittable) override;
    bool splittable() const override;
    /// The views in which any subparameter has data, in ascending order; view 0 if there is none.
    const std::vector<View>& viewList() const override;
    /// The source is null, for this compound, or a compound with the same number of subparameters.
    void copyViewData(const View& from, const View& to, const ParameterWithoutType* source) override;
    void uniquifyView(const View& view) override;
    bool initialiseHeroView(const View& hero, const View& from) override;
    bool deleteView(const View& view) override;
    //@}
    /// \name Undoable edits
    /// Each appends one edit of the compound to the command.
    //@{
    Bsc::CompositeCommand& vSetInterpolationCommand(Interpolation kind, Context context,
                                                    Bsc::CompositeCommand& command) override;
    Bsc::CompositeCommand& vSetInterpolationDataCommand(Bsc::CompositeCommand& command, IType data,
                                                        const KeyframeIndex& keyframe) override;
    Bsc::CompositeCommand& vSetExtrapolationBeforeCommand(Extrapolation kind, Bsc::CompositeCommand& command) override;
    Bsc::CompositeCommand& vSetExtrapolationAfterCommand(Extrapolation kind, Bsc::CompositeCommand& command) override;
    Bsc::CompositeCommand& vAddKeyframeCommand(const Context::Explicit& context,
                                               Bsc::CompositeCommand& command) override;
    Bsc::CompositeCommand& vAddKeyframeCommand(const Frame& frame, const AnimationState& state,
                                               Bsc::CompositeCommand& command) override;
    void createKeyframeDeletion(const Context::Explicit& context, Bsc::CompositeCommand& command) override;
    void createKeyframeDeletion(const Frame& frame, const AnimationState& state,
                                Bsc::CompositeCommand& command) override;
    Bsc::CompositeCommand& vDeleteAllKeyframesCommand(const View& view, Bsc::CompositeCommand& command) override;
    //@}
    /// As the base class; from a compound also `keyframeTogether`.
    void assignFrom(const ParameterWithoutType& other) override;

    /// \name Observers
    /// Of the compound itself and of every subparameter.
    //@{
    void attachObserver(const QObject* observer, const char* slot) const override;
    void detachObserver(const QObject* observer) const override;
    void detachAllObservers() const override;
    using ParameterSet::AttachCommandRegistrationObserver;
    using ParameterSet::attachObserver;
    using ParameterSet::detachAllObservers;
    using ParameterSet::DetachCommandRegistrationObserver;
    using ParameterSet::detachObserver;
    using ParameterWithoutTypeBase::AttachCommandRegistrationObserver;
    using ParameterWithoutTypeBase::DetachCommandRegistrationObserver;
    //@}
    /// \name Project text
    //@{
    /// Writes the subparameters' lines, after the prefix and, if there is one, the script name and a dot.
    bool bStreamOut(QTextStream& stream, const QString& prefix, bool withName) const override;
    bool bStreamOut(QTextStream& stream, const QString& prefix, bool withName) override;
    bool setFromScriptString(const QString& line, const ProjectFileVersion& version) override;
    /// Reads a line of a subparameter, without the compound's name, and the lines of the base class.
    bool streamInValue(const QString& line, const ProjectFileVersion& version, TextConversion convert) override;
    //@}
    /// \name Snapshots
    //@{
    /// The subparameters' snapshots, restored by position. Restoring a snapshot of another kind, or null, does nothing.
    boost::shared_ptr<Bsc::MementoBase> exportState() const override;
    boost::shared_ptr<Bsc::MementoBase> exportStateAround(const detail::Places& places) const override;
    void doImportState(boost::shared_ptr<Bsc::MementoBase> snapshot) override;
    //@}

public Q_SLOTS:
    /// Re-emits changes of the subparameters' keyframes and values, with positions in the union.
    void onUpstreamParameterChanged(Prm::ParameterChange& change) override;

private:
    friend class detail::Invariants;
    class MementoImpl;
    class StateOfParts;
    class CompoundKeyframe;
    class SwitchedOff;
    using Parts = std::vector<QPointer<ParameterWithoutType>>;
    using PartWalk = SetWalk<ParameterWithoutType>;

    /// The union of the keyframes of one view at a revision.
    struct Union {
        /// One time of the union.
        struct Keyframe {
            Time time;
            /// The number of parts with a keyframe there; the parts of a nested compound count individually.
            quint64 holders = 0;
        };
        View view;
        quint64 revision = 0;
        QVector<Keyframe> keyframes;
    };
    using UnionKeyframes = QVector<Union::Keyframe>;

    const BasicParameter& life() const { return *this; }
    void explainTo(Explanation& explanation, const Context& context) const override;
    bool mayTake(const ParameterWithoutType& parameter) const;
    Parts listedParts() const;
    const ParameterWithoutType* firstWith(const Context::Explicit& keyframe) const;
    const ParameterWithoutType* firstKeyframed() const;
    const UnionKeyframes& keyframesOf(const View& view) const;
    UnionKeyframes gathered(const View& view) const;
    Union* rememberedUnion(const View& view) const;
    quint64 holdersOf(const Context::Explicit& keyframe) const;
    void follow(const Context& keyframe) const;
    int positionOf(const Context& keyframe) const;
    bool found(int position, const Context& from, Context& out) const;
    bool keyAll(const Context& context);
    void forwardKeyframe(const ParameterChange& change);
    void forwardRemoval(const ParameterChange& change);
    void forwardMove(const ParameterChange& change);

    bool m_keyframeTogether;
    mutable std::vector<View> m_presentViews;
    /// A cache of the unions of the last few views that were queried.
    mutable std::vector<Union> m_unions;
};

} // namespace Prm
