#pragma once

#include "python/src/Convert.h"

#include <boost/shared_ptr.hpp>

#include <memory>
#include <optional>
#include <thread>
#include <utility>

namespace PrmPython {

class Home;

/// Sampling runs without the interpreter's lock, so objects are deleted only while no thread samples. A lock of many
/// readers and one writer, in which a writer goes first; taken while the interpreter's lock is held, which is released
/// while waiting.
class Sampling {
public:
    Sampling();
    ~Sampling();
    Sampling(const Sampling&) = delete;
    Sampling& operator=(const Sampling&) = delete;
};

/// A scope in which objects may be deleted. May be nested.
class Deleting {
public:
    Deleting();
    ~Deleting();
    Deleting(const Deleting&) = delete;
    Deleting& operator=(const Deleting&) = delete;
};

/// Releases the interpreter's lock until the scope ends. At the end of the interpreter it is kept: a thread that comes
/// back to an interpreter that has ended would be ended within this scope, which ends the process.
class Unlocked {
public:
    enum When { UnlessEnding, Always };
    explicit Unlocked(When when = UnlessEnding);
    Unlocked(const Unlocked&) = delete;
    Unlocked& operator=(const Unlocked&) = delete;

private:
    /// With the lock held.
    struct Counted {
        Counted();
        ~Counted();
    };
    struct Released {
        Counted counted;
        py::gil_scoped_release released;
    };
    std::optional<Released> m_released;
};

/// A scope that calls Python, or works without the interpreter's lock. The interpreter's end waits for it, since a
/// thread that is ended within it ends the process; begun after that, it holds all threads but the one that ends.
class Staying {
public:
    Staying();
    ~Staying();
    Staying(const Staying&) = delete;
    Staying& operator=(const Staying&) = delete;
};

/// A scope in which this thread edits or reads objects without the interpreter's lock, and slots may call Python. What
/// `betweenWork` made is kept meanwhile, if other threads drop it.
class Working {
public:
    Working() = default;
    Working(const Working&) = delete;
    Working& operator=(const Working&) = delete;

private:
    Staying m_staying;
    Unlocked m_unlocked;
};

/// Keeps the object until no other thread works. To be called with the interpreter's lock held.
void leaveBehind(std::shared_ptr<void> last);

/// An object that notes itself in others, for example to know whether they are alive, and may be dropped by any thread.
template <class T, class... Arguments> std::shared_ptr<T> betweenWork(Arguments&&... arguments) {
    return {new T(std::forward<Arguments>(arguments)...), [](T* last) { leaveBehind(std::shared_ptr<void>(last)); }};
}

/// Waits until no other thread stays, or is without the interpreter's lock because of us. For the end of the
/// interpreter.
void stopWork();

/// What keeps objects alive for handles, and the thread that may edit them: a project, or one object made by Python.
class Keeper {
public:
    Keeper() = default;
    Keeper(const Keeper&) = delete;
    Keeper& operator=(const Keeper&) = delete;
    virtual ~Keeper();
    /// Null for what belongs to no project.
    virtual Home* home() { return nullptr; }
    bool isOwned() const { return owner == std::this_thread::get_id(); }

    std::thread::id owner = std::this_thread::get_id();
};
using KeeperPointer = std::shared_ptr<Keeper>;

/// Deletes a keeper on its own thread, when no thread samples; on another thread, later.
void bury(Keeper* keeper);
/// Deletes what waits: the keepers of this thread whose last handle was dropped on another thread, and what was left
/// behind while other threads worked.
void buryLeftBehind();

/// An object that Python made.
template <class T> class Made : public Keeper {
public:
    explicit Made(const boost::shared_ptr<T>& made) : object(made) {}
    boost::shared_ptr<T> object;
};

template <class K> std::shared_ptr<K> kept(K* keeper) {
    return std::shared_ptr<K>(keeper, [](K* last) { bury(last); });
}

} // namespace PrmPython
