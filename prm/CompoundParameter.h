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

/// Several parameters that are shown, keyed, moved, undone and written as one: a position, a colour. It is a parameter
/// and a set at once; its subparameters are the parameters of the set.
///
/// Its keyframes are the union of the subparameters' keyframes, its value is the list of their values
/// (`QVector<QVariant>`), and what is done to it is done to each of them. With `keyframeTogether`, a keyframe that one
/// subparameter gains or loses, the others gain or lose as well.
///
/// In project text it is a group: its subparameters' lines begin with its name, and it has no line of its own, not
/// even when it is hidden or has a master. Without a script name its subparameters are written as members of the set.
///
/// \snippet position.cpp class
/// \threads The owning thread; values alone may be asked for on others, as of the subparameters, while none is added
/// or dies.
class PRM_EXPORT CompoundParameter : public ParameterWithoutTypeBase, public ParameterSet {
    Q_OBJECT

public:
    explicit CompoundParameter(const QString& scriptName = {}, bool keyframeTogether = false,
                               ParameterSet* parent = nullptr, ParameterTree* tree = nullptr);
    /// Lists the same subparameters, in no set and no tree.
    CompoundParameter(const CompoundParameter& other);
    ~CompoundParameter() override;

    /// Whether the subparameters are keyed together.
    bool keyframeTogether() const override { return m_keyframeTogether; }
    QList<ParameterWithoutType*> subparameters() const;
    /// Switches all notifications of every subparameter.
    void subparametersNotification(bool on);

    /// Adds a subparameter and listens to it. One that contains this compound, or is it, is refused with a warning.
    void addParameter(const boost::shared_ptr<ParameterWithoutType>& parameter) override;
    void addParameter(ParameterWithoutType& parameter) override;

    // Names: those of the parameter side, which the setters give to both.
    using ParameterWithoutTypeBase::displayName;
    using ParameterWithoutTypeBase::scriptName;
    void setScriptName(const QString& name) override;
    void setDisplayName(const QString& name) override;
    void setDisplayName(const QString& name, const QString& displayName) override;
    void assignName(const QString& name) override;

    using ParameterWithoutTypeBase::setVariantValue;
    using ParameterWithoutTypeBase::variantValue;
    /// The subparameters' values, in their order. Throws what theirs throw.
    QVariant variantValue(const Context& context) const override;
    /// Sets the subparameters' values, from a `QVector<QVariant>` or a `QVariantList` with one for each. Anything else
    /// is warned of and changes nothing. Throws what theirs throw.
    void setVariantValue(const QVariant& value, const Context& context) override;
    int qMetaType() const override;
    /// Adds nothing: a compound has nothing of its own.
    void calculateHash(Bsc::Hash& hash, const Context& context) const override;

    /// The times at which any subparameter has a keyframe in the view, ascending, each once.
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

    /// Adds a keyframe to each subparameter that has none there; its position in the union, or -1.
    int iAddKeyframe(const Context& context) override;
    int iAddKeyframe(const Frame& frame, const AnimationState& state) override;
    void vDeleteKeyframe(const Context::Explicit& context) override;
    void vDeleteAllKeyframes(const View& view) override;
    void vReset(const Context& context) override;
    void adjustKeyframesTime(const boost::function<Time(Time)>& mapping) override;
    void retimeKeyframes(const boost::function<Time(Time)>& mapping) override;
    void vSetExtrapolationBefore(Extrapolation kind) override;
    void vSetExtrapolationAfter(Extrapolation kind) override;
    void vSetDefaultInterpolation(Interpolation kind) override;
    bool vSetInterpolation(Interpolation kind, const Context& context) override;
    void vSetInterpolationData(IType data, unsigned int index, const View& view) override;
    /// Those of the first keyframed subparameter; of a keyframe, those of the first that has it.
    Extrapolation extrapolationBefore() const override;
    Extrapolation extrapolationAfter() const override;
    Interpolation interpolation(const Context& context) const override;
    Interpolation interpolation(const KeyframeIndex& keyframe) const override;
    IType interpolationData(const KeyframeIndex& keyframe) const override;

    /// The subparameters' keyframes at the time, by position; null when none of them has one.
    boost::shared_ptr<SerialisedKeyframe> getSerialisedKeyframe(Context context) const override;
    /// Throws `std::bad_cast` for a keyframe of another kind.
    void importKeyframe(const SerialisedKeyframe& keyframe) override;

    // Views: true of a compound what is true of any subparameter.
    bool isSplit() const override;
    int numViews() const override;
    void setSplittable(bool splittable) override;
    bool splittable() const override;
    /// The views in which any subparameter has data, ascending; view 0 when there are none.
    const std::vector<View>& viewList() const override;
    /// From a compound with as many subparameters, or within this one.
    void copyViewData(const View& from, const View& to, const ParameterWithoutType* source) override;
    void uniquifyView(const View& view) override;
    bool initialiseHeroView(const View& hero, const View& from) override;
    bool deleteView(const View& view) override;

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

    /// As the base; from a compound also whether it keys together.
    void assignFrom(const ParameterWithoutType& other) override;

    // On the compound itself and on every subparameter.
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

    /// The subparameters' lines, after the prefix and, if there is one, the script name and a dot.
    bool bStreamOut(QTextStream& stream, const QString& prefix, bool withName) const override;
    bool bStreamOut(QTextStream& stream, const QString& prefix, bool withName) override;
    bool setFromScriptString(const QString& line, const ProjectFileVersion& version) override;
    /// Takes a subparameter's line, after its name, and the base's lines.
    bool streamInValue(const QString& line, const ProjectFileVersion& version, TextConversion convert) override;

    /// The subparameters' snapshots, put back by position. A snapshot of another kind, or none, changes nothing.
    boost::shared_ptr<Bsc::MementoBase> exportState() const override;
    boost::shared_ptr<Bsc::MementoBase> exportStateAround(const detail::Places& places) const override;
    void doImportState(boost::shared_ptr<Bsc::MementoBase> snapshot) override;

public Q_SLOTS:
    /// Forwards the changes of the subparameters' keyframes and values, with positions in the union.
    void onUpstreamParameterChanged(Prm::ParameterChange& change) override;

private:
    friend class detail::Invariants;
    class MementoImpl;
    class StateOfParts;
    class CompoundKeyframe;
    class SwitchedOff;
    using Parts = std::vector<QPointer<ParameterWithoutType>>;

    /// The union of one view's keyframes as it was at a revision.
    struct Union {
        /// One time of the union.
        struct Keyframe {
            Time time;
            /// How many parts have it; those of a nested compound count one by one.
            quint64 holders = 0;
        };
        View view;
        quint64 revision = 0;
        QVector<Keyframe> keyframes;
    };
    using UnionKeyframes = QVector<Union::Keyframe>;

    const BasicParameter& life() const { return *this; }
    bool mayTake(const ParameterWithoutType& parameter) const;
    Parts listedParts() const;
    template <class Act> void forEachSubparameter(const Act& act) const;
    template <class Test> bool anySubparameter(const Test& test) const;
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
    /// Of the views that were asked about last; a few, since any number of views can be asked about.
    mutable std::vector<Union> m_unions;
};

} // namespace Prm
