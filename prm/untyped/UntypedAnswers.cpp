#include "prm/untyped/UntypedAnswers.h"

#include "prm/ParameterWithoutType.h"

namespace Prm::detail {

const UntypedAnswers* UntypedAnswers::of(const ParameterWithoutType& parameter) {
    return static_cast<const UntypedAnswers*>(parameter.asTyped(typeid(UntypedAnswers)));
}

} // namespace Prm::detail
