#pragma once

#include "tool/FileParameter.h"

#include <functional>

namespace Prm {
class ParameterReshapeEdit;
} // namespace Prm

namespace Tool {

/// Does an edit of the library's to what the texts of a parameter mean, and writes the result back into its data.
/// Values that are as before keep their texts and lines. Throws `Problem` where values are of no known type.
void editMeaning(const FileParameter& parameter, const std::function<void(Prm::ParameterWithoutType& typed)>& edit);

/// Does an edit of curves. Throws `Problem` where it is refused.
void doOrExplain(const FileParameter& parameter, Prm::ParameterReshapeEdit& edit);

} // namespace Tool
