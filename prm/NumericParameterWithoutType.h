#pragma once

#include "prm/Export.h"
#include "prm/ParameterWithoutType.h"

namespace Prm {

/// The untyped base of numeric parameters. It never announces a deletion: as the second base of a numeric parameter it
/// is destroyed before the values are gone, but after the parameter has announced itself.
///
/// \snippet parameter_panel.cpp untyped
class PRM_EXPORT NumericParameterWithoutType : virtual public ParameterWithoutType {
public:
    /// Unlocked and visible.
    explicit NumericParameterWithoutType(ParameterSet* parent);
    ~NumericParameterWithoutType() override;

protected:
    NumericParameterWithoutType(const NumericParameterWithoutType& other);
};

} // namespace Prm
