#pragma once

#include "prm/Export.h"
#include "prm/Parameter.h"

namespace Prm {

/// A parameter whose values blend and so have curves: all kinds of `Interpolation` between keyframes, and of
/// `Extrapolation` outside them. `ValueType<T>` must supply the components of a value.
///
/// - Linear extrapolation continues the slope at the end of the adjoining segment. If a control point coincides with
/// its
///   keyframe, the slope is towards the other control point; if both do, it is that of the straight line. The value is
///   held if there is one keyframe, if the curve ends vertically, and beside a Constant segment.
/// - A segment that becomes Bezier gets the shape (1/3, 0, 2/3, 1), unless its keyframe already has a shape.
/// - Custom kinds use the function that a host registered (`prm/CurveKinds.h`). Without one, interpolation is Linear
/// and
///   extrapolation Constant.
///
/// \snippet bezier_number.cpp shape
/// \threads As `Parameter`. Hooks and registered functions run on every thread that evaluates.
template <class T> class PRM_EXPORT CurveParameter : public Parameter<T> {
public:
    /// Constructors as those of `Parameter`.
    CurveParameter();
    explicit CurveParameter(const QString& scriptName, const T& defaultValue = T(),
                            ParameterOptions options = Keyframed | Splittable, ParameterSet* parent = nullptr);
    CurveParameter(const CurveParameter& other);
    ~CurveParameter() override;

    T interpolateValue(const BoundingKeyframes& around, const Context& context, Cache* cache) const override;
    T extrapolateValue(const BoundingKeyframes& around, const Context& context, Cache* cache) const override;
    /// False: without keyframes there is no curve.
    bool supportsExtrapolationFromNoKeys() const override;
    IType initialiseInterpolation(const KeyframeData<T>& from, const KeyframeData<T>& to,
                                  Interpolation kind) const override;
};

extern template class CurveParameter<double>;
extern template class CurveParameter<int>;
extern template class CurveParameter<unsigned int>;
extern template class CurveParameter<QPointF>;

/// An animatable point.
using PointParameter = CurveParameter<QPointF>;

} // namespace Prm
