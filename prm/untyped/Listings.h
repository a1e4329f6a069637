#pragma once

#include <QVector>

#include <algorithm>

namespace Prm {
class ParameterSet;
}

namespace Prm::detail {

/// One set that lists a member, in which of its lists, and the place where the member was found there last.
struct Listing {
    ParameterSet* set;
    int list;
    mutable int place;
};

} // namespace Prm::detail

Q_DECLARE_TYPEINFO(Prm::detail::Listing, Q_PRIMITIVE_TYPE);

namespace Prm::detail {

/// The sets that list one member. Removing allocates nothing.
class Listings {
public:
    const Listing* of(const ParameterSet* set) const {
        const auto found = std::find_if(begin(), end(), [=](const Listing& entry) { return entry.set == set; });
        return found == end() ? nullptr : found;
    }
    bool contains(const ParameterSet* set) const { return of(set) != nullptr; }
    void add(const Listing& entry) { m_entries.append(entry); }
    void remove(const ParameterSet* set) {
        if (const Listing* entry = of(set))
            m_entries.remove(static_cast<int>(entry - begin()));
    }
    bool isEmpty() const { return m_entries.isEmpty(); }
    int size() const { return m_entries.size(); }
    const Listing& last() const { return m_entries.last(); }
    const Listing* begin() const { return m_entries.constData(); }
    const Listing* end() const { return begin() + size(); }

private:
    QVector<Listing> m_entries;
};

} // namespace Prm::detail
