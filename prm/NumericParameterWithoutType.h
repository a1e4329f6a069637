#pragma once

#include "prm/Export.h"
#include "prm/ParameterWithoutType.h"

namespace Prm {

/// The untyped base of numeric parameters. Its destructor does not emit PARAMETER_DELETED; that of the numeric
/// parameter has done so before.
///
/// \snippet parameter_panel.cpp untyped
class PRM_EXPORT NumericParameterWithoutType : virtual public ParameterWithoutType {
public:
    /// Unlocked and visible.
    explicit NumericParameterWithoutType(ParameterSet* parent = nullptr);
    ~NumericParameterWithoutType() override;

protected:
    NumericParameterWithoutType(const NumericParameterWithoutType& other);
};

} // namespace Prm
