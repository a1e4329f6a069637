#pragma once

#include <memory>
#include <utility>
#include <vector>

namespace Prm::detail {

/// A list that mostly has at most one element: that one is in place, so it needs no memory of its own, and moving it
/// moves one pointer beside it.
template <class T> class ShortList {
public:
    ShortList() = default;
    /// One element, which is made of these.
    template <class... Parts>
    explicit ShortList(std::in_place_t, Parts&&... parts) : m_only{std::forward<Parts>(parts)...}, m_isSingle(true) {}
    ShortList(const ShortList& other)
        : m_only(other.m_only), m_many(other.m_many ? std::make_unique<std::vector<T>>(*other.m_many) : nullptr),
          m_isSingle(other.m_isSingle) {}
    ShortList(ShortList&& other) noexcept = default;
    ShortList& operator=(const ShortList& other) { return *this = ShortList(other); }
    ShortList& operator=(ShortList&& other) noexcept = default;
    ~ShortList() = default;

    int size() const { return m_many ? static_cast<int>(m_many->size()) : m_isSingle ? 1 : 0; }
    bool isEmpty() const { return size() == 0; }
    const T* begin() const { return m_many ? m_many->data() : &m_only; }
    const T* end() const { return begin() + size(); }

    void append(T element) { replace(size(), size(), std::move(element)); }
    /// Puts an element in the place of those from one position to another one, which may be the same.
    void replace(int from, int to, T element) {
        if (to - from == size()) {
            *this = ShortList(std::in_place, std::move(element));
            return;
        }
        if (!m_many)
            m_many = std::make_unique<std::vector<T>>(1, std::move(m_only));
        const auto first = m_many->begin() + from;
        if (from == to) {
            m_many->insert(first, std::move(element));
        } else {
            *first = std::move(element);
            m_many->erase(first + 1, m_many->begin() + to);
        }
    }

private:
    T m_only{};
    /// All elements where there are several, or were.
    std::unique_ptr<std::vector<T>> m_many;
    bool m_isSingle = false;
};

} // namespace Prm::detail
