#pragma once

#include "prm/Export.h"
#include "prm/ParameterWithoutType.h"

#include <vector>

namespace Prm {

/// Implements the interface for a parameter without keyframes, so that a class such as the compound parameter overrides
/// only what it supports. Unless said otherwise, edits do nothing, and queries return false, 0 or null; undoable forms
/// return the command unchanged. In project text it has its hidden flag and its master.
///
/// \snippet parameter_panel.cpp kind
class PRM_EXPORT ParameterWithoutTypeBase : public ParameterWithoutType {
    Q_OBJECT

public:
    /// The untyped base of a per-view storage: the views with data, in ascending order.
    class PRM_EXPORT FastViewMapBase {
    public:
        virtual ~FastViewMapBase();
        /// For the owning thread. The list follows each change; with thousands of views, only after another call.
        const std::vector<View>& viewList() const {
            if (m_isOutdated)
                listViews();
            return m_realViews;
        }

    protected:
        FastViewMapBase() = default;
        explicit FastViewMapBase(const std::vector<View>& views) : m_realViews(views) {}
        FastViewMapBase(const FastViewMapBase&) = default;
        FastViewMapBase& operator=(const FastViewMapBase&) = default;

        /// Brings the list up to date.
        virtual void listViews() const {}

        mutable std::vector<View> m_realViews;
        mutable bool m_isOutdated = false;
    };

    explicit ParameterWithoutTypeBase(bool locked = false, bool hidden = false, ParameterSet* parent = nullptr);
    /// Copies names and flags; the copy has no set, links or observers.
    ParameterWithoutTypeBase(const ParameterWithoutTypeBase& other);
    ~ParameterWithoutTypeBase() override;

    /// Writes "hidden=1" if hidden, and the master's name if there is a master.
    bool bStreamOut(QTextStream& stream, const QString& prefix, bool withName) const override;
    using BasicParameter::setVariantValue;
    using BasicParameter::variantValue;
    /// An invalid variant.
    QVariant variantValue(const Context& context) const override;
    void setVariantValue(const QVariant& value, const Context& context) override;
    /// Reads "hidden" and "MasterParameterId" lines.
    bool streamInValue(const QString& line, const ProjectFileVersion& version, TextConversion convert) override;
    /// As the base class; from a parameter of this class also the animatable flag.
    void assignFrom(const ParameterWithoutType& other) override;

    /// \name Interpolation and extrapolation
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
    Bsc::CompositeCommand& vSetInterpolationCommand(Interpolation kind, Context context,
                                                    Bsc::CompositeCommand& command) override;
    Bsc::CompositeCommand& vSetInterpolationDataCommand(Bsc::CompositeCommand& command, IType data,
                                                        const KeyframeIndex& keyframe) override;
    Bsc::CompositeCommand& vSetExtrapolationBeforeCommand(Extrapolation kind, Bsc::CompositeCommand& command) override;
    Bsc::CompositeCommand& vSetExtrapolationAfterCommand(Extrapolation kind, Bsc::CompositeCommand& command) override;
    //@}
    /// \name Keyframes
    //@{
    bool isKeyframed() const override;
    unsigned int keyframeCount(const View& view) const override;
    Context keyframeTime(unsigned int index, const View& view) const override;
    void adjustKeyframesTime(const boost::function<Time(Time)>& mapping) override;
    bool bKeyframeAt(const Context::Explicit& context) const override;
    bool bNearestKeyframeTime(const Context& context, Time& time) const override;
    bool bNearestKeyframeIndex(const Context& context, unsigned int& index) const override;
    bool bPreviousKeyframe(const Context& context, Context& previous) const override;
    bool bNextKeyframe(const Context& context, Context& next) const override;
    int iAddKeyframe(const Context& context) override;
    int iAddKeyframe(const Frame& frame, const AnimationState& state) override;
    void vDeleteKeyframe(const Context::Explicit& context) override;
    void vDeleteAllKeyframes(const View& view) override;
    void vReset(const Context& context) override;
    boost::shared_ptr<SerialisedKeyframe> getSerialisedKeyframe(Context context) const override;
    void importKeyframe(const SerialisedKeyframe& keyframe) override;
    //@}
    /// \name Views
    //@{
    bool isSplit() const override;
    int numViews() const override;
    void setSplittable(bool splittable) override;
    bool splittable() const override;
    /// Only view 0.
    const std::vector<View>& viewList() const override;
    void copyViewData(const View& from, const View& to, const ParameterWithoutType* source) override;
    void uniquifyView(const View& view) override;
    bool initialiseHeroView(const View& hero, const View& from) override;
    bool deleteView(const View& view) override;
    //@}
    /// \name Undoable edits
    //@{
    Bsc::CompositeCommand& vAddKeyframeCommand(const Context::Explicit& context,
                                               Bsc::CompositeCommand& command) override;
    Bsc::CompositeCommand& vAddKeyframeCommand(const Frame& frame, const AnimationState& state,
                                               Bsc::CompositeCommand& command) override;
    void createKeyframeDeletion(const Context::Explicit& context, Bsc::CompositeCommand& command) override;
    void createKeyframeDeletion(const Frame& frame, const AnimationState& state,
                                Bsc::CompositeCommand& command) override;
    Bsc::CompositeCommand& vDeleteAllKeyframesCommand(const View& view, Bsc::CompositeCommand& command) override;
    Bsc::CompositeCommand& bAddConstrainedParameterCommand(ParameterWithoutType* parameter,
                                                           Bsc::CompositeCommand& command) override;
    //@}

    void vCopyKeyframeDataFrom(const ParameterWithoutType* source) override;

    /// An empty snapshot; restoring it does nothing.
    boost::shared_ptr<Bsc::MementoBase> exportState() const override;
    void doImportState(boost::shared_ptr<Bsc::MementoBase> snapshot) override;

    /// A flag for the host: whether its user interface offers to animate this parameter. The library does not read it.
    bool isAnimatable() const { return m_animatable; }
    /// Sets the flag. Emits nothing.
    void setAnimatable(bool animatable) { m_animatable = animatable; }

private:
    class SingleView : public FastViewMapBase {
    public:
        SingleView() : FastViewMapBase({View(View::defaultViewId())}) {}
    };

    bool m_animatable = false;
    SingleView m_viewMap;
};

} // namespace Prm
