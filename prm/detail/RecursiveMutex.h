#pragma once

#include <QMutex>

#if defined(__SANITIZE_THREAD__)
#define PRM_THREAD_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define PRM_THREAD_SANITIZER 1
#endif
#endif

#if defined(PRM_THREAD_SANITIZER)
#include <sanitizer/tsan_interface.h>
#endif

namespace Prm::detail {

/// The recursive mutex of the library. Qt's own lock stands inside a library that the race detector does not see into,
/// so a detector build says at each lock and unlock what the lock means.
class RecursiveMutex {
public:
    RecursiveMutex() = default;
    RecursiveMutex(const RecursiveMutex&) = delete;
    RecursiveMutex& operator=(const RecursiveMutex&) = delete;

    void lock() {
        m_mutex.lock();
#if defined(PRM_THREAD_SANITIZER)
        __tsan_acquire(&m_mutex);
#endif
    }
    void unlock() {
#if defined(PRM_THREAD_SANITIZER)
        __tsan_release(&m_mutex);
#endif
        m_mutex.unlock();
    }

private:
    QRecursiveMutex m_mutex;
};

} // namespace Prm::detail
