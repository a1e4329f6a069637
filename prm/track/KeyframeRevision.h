#pragma once

#include "prm/Export.h"

#include <QtGlobal>

namespace Prm::detail {

/// Where a new parameter begins to count; each has some thousands of millions of numbers of its own.
PRM_EXPORT quint64 firstKeyframeRevision();

/// How often this thread has counted any parameter on.
#if defined(__GNUC__)
extern PRM_EXPORT __thread quint64 t_keyframeSteps __attribute__((tls_model("initial-exec")));
#else
extern PRM_EXPORT thread_local quint64 t_keyframeSteps;
#endif

/// A parameter's count of the changes of its keyframes' times and views. Every step is the thread's as well: who has
/// looked at many parameters can tell, within one call, that none of them has changed since.
class KeyframeRevision {
public:
    operator quint64() const { return m_number; }
    PRM_ALWAYS_INLINE void operator++() {
        ++m_number;
        ++t_keyframeSteps;
    }

private:
    quint64 m_number = firstKeyframeRevision();
};

} // namespace Prm::detail
