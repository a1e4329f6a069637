#include "python/src/Lifetime.h"

#include "python/src/Home.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace PrmPython {

namespace {

struct Gate {
    std::mutex mutex;
    std::condition_variable changed;
    int sampling = 0;
    int deleting = 0;
    std::thread::id deleter;
};

// Never destroyed: threads may sample until the process ends.
Gate& gate() {
    static Gate& only = *new Gate;
    return only;
}

bool maySample(const Gate& state) {
    return state.deleting == 0 || state.deleter == std::this_thread::get_id();
}

/// Guarded by the interpreter's lock.
struct LeftBehind {
    std::vector<std::unique_ptr<Keeper>> keepers;
    std::vector<std::shared_ptr<void>> betweenWork;
};
LeftBehind& leftBehind() {
    static auto& only = *new LeftBehind;
    return only;
}

/// Scopes in which threads work: of all threads, guarded by the lock, and of this thread.
int workingAnywhere = 0;
thread_local int workingHere = 0;

/// Scopes in which the lock is released, for whatever reason.
int unlockedAnywhere = 0;
thread_local int unlockedHere = 0;

/// For the end of the interpreter, whose own thread goes on working.
bool isEnding = false;
std::thread::id endingThread;

/// Ends with the process.
void stayHere() {
    if (std::this_thread::get_id() == endingThread)
        return;
    const py::gil_scoped_release released;
    for (;;)
        std::this_thread::sleep_for(std::chrono::hours(1));
}

/// Whether the interpreter has ended the other threads, some perhaps in the midst of what they did.
bool isLast() {
#if PY_VERSION_HEX >= 0x030D0000
    const bool hasEnded = Py_IsFinalizing();
#else
    const bool hasEnded = _Py_IsFinalizing();
#endif
    return hasEnded && std::this_thread::get_id() == endingThread;
}

/// Waits without the interpreter's lock, which is never waited for while the mutex is locked.
template <class Condition> void waitUntil(std::unique_lock<std::mutex>& lock, const Condition& holds) {
    while (!holds() && !isLast()) {
        lock.unlock();
        {
            const Unlocked unlocked(Unlocked::Always);
            lock.lock();
            gate().changed.wait(lock, holds);
            lock.unlock();
        }
        lock.lock();
    }
}

bool othersWork() {
    return workingAnywhere > workingHere;
}

/// Whether the keeper must not be deleted now: on another thread, or in a callback of its own edit.
bool mustWait(Keeper& keeper) {
    Home* const home = keeper.home();
    return !keeper.isOwned() || (home && home->history.isRunning());
}

} // namespace

Sampling::Sampling() {
    Gate& state = gate();
    std::unique_lock<std::mutex> lock(state.mutex);
    waitUntil(lock, [&] { return maySample(state); });
    ++state.sampling;
}

Sampling::~Sampling() {
    Gate& state = gate();
    const std::lock_guard<std::mutex> lock(state.mutex);
    --state.sampling;
    state.changed.notify_all();
}

Deleting::Deleting() {
    Gate& state = gate();
    std::unique_lock<std::mutex> lock(state.mutex);
    waitUntil(lock, [&] { return state.deleting == 0 || state.deleter == std::this_thread::get_id(); });
    state.deleter = std::this_thread::get_id();
    ++state.deleting;
    waitUntil(lock, [&] { return state.sampling == 0; });
}

Deleting::~Deleting() {
    Gate& state = gate();
    const std::lock_guard<std::mutex> lock(state.mutex);
    --state.deleting;
    state.changed.notify_all();
}

Unlocked::Unlocked(When when) {
    if (!isEnding || when == Always)
        m_released.emplace();
}

Unlocked::Counted::Counted() {
    ++unlockedAnywhere;
    ++unlockedHere;
}

Unlocked::Counted::~Counted() {
    --unlockedHere;
    --unlockedAnywhere;
}

Staying::Staying() {
    if (isEnding && workingHere == 0)
        stayHere();
    ++workingAnywhere;
    ++workingHere;
}

Staying::~Staying() {
    --workingHere;
    --workingAnywhere;
}

void leaveBehind(std::shared_ptr<void> last) {
    if (othersWork())
        leftBehind().betweenWork.push_back(std::move(last));
}

void stopWork() {
    isEnding = true;
    endingThread = std::this_thread::get_id();
    while (othersWork() || unlockedAnywhere > unlockedHere) {
        const py::gil_scoped_release released;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

Keeper::~Keeper() = default;

void bury(Keeper* keeper) {
    std::unique_ptr<Keeper> last(keeper);
    if (mustWait(*last)) {
        leftBehind().keepers.push_back(std::move(last));
        return;
    }
    const Deleting deleting;
    last.reset();
}

void buryLeftBehind() {
    if (!othersWork())
        std::exchange(leftBehind().betweenWork, {}).clear();
    auto& all = leftBehind().keepers;
    if (all.empty())
        return;
    const auto ours = std::stable_partition(all.begin(), all.end(), [](const auto& one) { return mustWait(*one); });
    std::vector<std::unique_ptr<Keeper>> last(std::make_move_iterator(ours), std::make_move_iterator(all.end()));
    all.erase(ours, all.end());
    if (last.empty())
        return;
    const Deleting deleting;
    last.clear();
}

} // namespace PrmPython
