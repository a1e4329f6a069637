#pragma once

#include "prm/Export.h"
#include "prm/Parameter.h"

namespace Prm {

/// A parameter whose values blend, so that it has curves: the kinds of `Interpolation` between keyframes, and the kinds
/// of `Extrapolation` outside them. `ValueType<T>` must supply the components of a value.
///
/// - Linear extrapolation continues the slope at the end of the adjoining segment; with one keyframe it holds. A handle
///   that lies on its keyframe takes the direction of the other one, else the straight line; a vertical end, and an end
///   beside a Constant segment, hold.
/// - A segment that becomes Bezier gets the shape (1/3, 0, 2/3, 1), unless its keyframe already has one.
/// - Custom kinds do what a host registered for them (`prm/CurveKinds.h`); others are Linear inside, and hold outside.
///
/// \snippet bezier_number.cpp shape
/// \threads As `Parameter`; the hooks and the registered functions run on every thread that evaluates.
template <class T> class PRM_EXPORT CurveParameter : public Parameter<T> {
public:
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
