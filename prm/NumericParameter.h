#pragma once

#include "prm/CurveParameter.h"
#include "prm/Export.h"
#include "prm/NumericParameterWithoutType.h"

namespace Prm {

/// An animatable number: `double`, `int` or `unsigned int`. For whole numbers the value of the curve is rounded half
/// away from zero and clamped to the range of the type.
///
/// \snippet first_parameter.cpp first
template <class T> class PRM_EXPORT NumericParameter : public CurveParameter<T>, public NumericParameterWithoutType {
public:
    /// Constructors as those of `Parameter`.
    NumericParameter();
    explicit NumericParameter(const QString& scriptName, const T& defaultValue = T(),
                              ParameterOptions options = Keyframed | Splittable, ParameterSet* parent = nullptr);
    NumericParameter(const NumericParameter& other);
    ~NumericParameter() override;
};

extern template class NumericParameter<double>;
extern template class NumericParameter<int>;
extern template class NumericParameter<unsigned int>;

} // namespace Prm
