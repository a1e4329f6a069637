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

bool mayDelete(const Gate& state) {
    return state.sampling == 0 && (state.deleting == 0 || state.deleter == std::this_thread::get_id());
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

/// Scopes in which the lock is released: of all threads, guarded by the lock, and of this thread.
int workingAnywhere = 0;
thread_local int workingHere = 0;

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

bool isSampled() {
    Gate& state = gate();
    const std::lock_guard<std::mutex> lock(state.mutex);
    return state.sampling > 0;
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
    while (!maySample(state)) {
        lock.unlock();
        {
            const py::gil_scoped_release released;
            std::unique_lock<std::mutex> waiting(state.mutex);
            state.changed.wait(waiting, [&] { return maySample(state); });
        }
        lock.lock();
    }
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
    const auto self = std::this_thread::get_id();
    std::unique_lock<std::mutex> lock(state.mutex);
    if (!mayDelete(state)) {
        lock.unlock();
        const py::gil_scoped_release released;
        lock.lock();
        state.changed.wait(lock, [&] { return state.deleting == 0 || state.deleter == self; });
        state.deleter = self;
        ++state.deleting;
        state.changed.wait(lock, [&] { return state.sampling == 0; });
        lock.unlock();
        return;
    }
    state.deleter = self;
    ++state.deleting;
}

Deleting::~Deleting() {
    Gate& state = gate();
    const std::lock_guard<std::mutex> lock(state.mutex);
    --state.deleting;
    state.changed.notify_all();
}

Unlocked::Unlocked() {
    if (!isEnding)
        m_released.emplace();
}

Working::Counted::Counted() {
    if (isEnding && workingHere == 0)
        stayHere();
    ++workingAnywhere;
    ++workingHere;
}

Working::Counted::~Counted() {
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
    while (othersWork() || isSampled()) {
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
