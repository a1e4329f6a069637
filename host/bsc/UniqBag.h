#pragma once

#include <QHashFunctions>

#include <cstddef>
#include <initializer_list>
#include <list>
#include <unordered_map>
#include <utility>

namespace Bsc {

/// A collection without repeats; adding, finding and removing take constant time. Iteration is in the order in which
/// the elements were first added, so that it is the same in every run.
///
/// T is copyable, has `==`, and a `qHash` in its namespace; both must not change while an element is in the bag.
/// Iterators and references stay valid until their element is removed or the bag is assigned to.
///
/// \snippet host_services.cpp bag
/// \threads As a standard container: any number of threads may read a bag that none changes.
template <class T> class UniqBag {
public:
    using value_type = T;
    using const_iterator = typename std::list<T>::const_iterator;
    using iterator = const_iterator;

    UniqBag() = default;
    UniqBag(std::initializer_list<T> values) {
        for (const T& value : values)
            insert(value);
    }
    UniqBag(const UniqBag& other) {
        for (const T& value : other)
            insert(value);
    }
    UniqBag(UniqBag&& other) noexcept { swap(other); }
    UniqBag& operator=(UniqBag other) noexcept {
        swap(other);
        return *this;
    }
    ~UniqBag() = default;

    /// Returns whether the value was new. An exception changes nothing.
    bool insert(const T& value) {
        if (contains(value))
            return false;
        std::list<T> added{value};
        m_positions.emplace(&added.front(), added.cbegin());
        m_values.splice(m_values.cend(), added);
        return true;
    }

    /// Returns whether the value was there. The argument may be a reference to the element itself.
    bool erase(const T& value) {
        const auto found = m_positions.find(&value);
        if (found == m_positions.end())
            return false;
        const const_iterator position = found->second;
        m_positions.erase(found);
        m_values.erase(position);
        return true;
    }

    void clear() noexcept {
        m_positions.clear();
        m_values.clear();
    }

    bool contains(const T& value) const { return m_positions.find(&value) != m_positions.end(); }
    std::size_t size() const noexcept { return m_values.size(); }
    bool empty() const noexcept { return m_values.empty(); }
    const_iterator begin() const noexcept { return m_values.begin(); }
    const_iterator end() const noexcept { return m_values.end(); }

    void swap(UniqBag& other) noexcept {
        m_values.swap(other.m_values);
        m_positions.swap(other.m_positions);
    }

    /// Whether both have the same elements, in any order.
    friend bool operator==(const UniqBag& a, const UniqBag& b) { return a.size() == b.size() && b.holdsAllOf(a); }
    friend bool operator!=(const UniqBag& a, const UniqBag& b) { return !(a == b); }

private:
    struct HashOfValue {
        std::size_t operator()(const T* value) const {
            using ::qHash; // hidden by those of this namespace, for types that have none beside them
            return qHash(*value);
        }
    };
    struct SameValue {
        bool operator()(const T* a, const T* b) const { return *a == *b; }
    };

    bool holdsAllOf(const UniqBag& other) const {
        for (const T& value : other) {
            if (!contains(value))
                return false;
        }
        return true;
    }

    // The keys point at the elements, so each element is stored once; declared last, so that they go first.
    std::list<T> m_values;
    std::unordered_map<const T*, const_iterator, HashOfValue, SameValue> m_positions;
};

} // namespace Bsc
