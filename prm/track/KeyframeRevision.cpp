#include "prm/track/KeyframeRevision.h"

#include <atomic>

namespace Prm::detail {

quint64 firstKeyframeRevision() {
    static std::atomic<quint64> parameters{0};
    // The finaliser of SplitMix64, which is one-to-one.
    quint64 number = ++parameters;
    number = (number ^ (number >> 30)) * 0xBF58476D1CE4E5B9u;
    number = (number ^ (number >> 27)) * 0x94D049BB133111EBu;
    return number ^ (number >> 31);
}

} // namespace Prm::detail
