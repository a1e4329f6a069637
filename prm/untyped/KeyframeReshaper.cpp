#include "prm/untyped/KeyframeReshaper.h"

namespace Prm::detail {

std::unique_ptr<KeyframeReshaper> KeyframeReshaper::of(ParameterWithoutType& parameter) {
    const void* const factory = parameter.asTyped(typeid(ReshaperFactory));
    return factory ? static_cast<const ReshaperFactory*>(factory)->make(parameter) : nullptr;
}

KeyframeReshaper::~KeyframeReshaper() = default;

} // namespace Prm::detail
