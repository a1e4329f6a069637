#include "prm/track/KeyframeRevision.h"

#include <atomic>

namespace Prm::detail {

#if defined(__GNUC__)
__thread quint64 t_keyframeSteps = 0;
#else
thread_local quint64 t_keyframeSteps = 0;
#endif

quint64 firstKeyframeRevision() {
    static std::atomic<quint64> parameters{0};
    return ++parameters << 32;
}

} // namespace Prm::detail
