#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <utility>

namespace Product::detail {

/// A function that can be replaced while other threads call it. A call under way finishes with the function that it
/// began with, which lives until then; no lock is held while a function runs, so it may itself call or replace.
template <class Signature> class Replaceable;

template <class Result, class... Arguments> class Replaceable<Result(Arguments...)> {
public:
    using Function = std::function<Result(Arguments...)>;

    explicit Replaceable(Function standard)
        : m_standard(std::make_shared<const Function>(std::move(standard))), m_current(m_standard) {}

    /// Null puts the standard function back.
    void replace(Function function) {
        std::shared_ptr<const Function> next =
            function ? std::make_shared<const Function>(std::move(function)) : m_standard;
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_current.swap(next);
    }

    Result operator()(Arguments... arguments) const { return (*current())(arguments...); }

private:
    std::shared_ptr<const Function> current() const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_current;
    }

    const std::shared_ptr<const Function> m_standard;
    std::shared_ptr<const Function> m_current;
    mutable std::mutex m_mutex;
};

} // namespace Product::detail
