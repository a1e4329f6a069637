#pragma once

#include <QStringView>
#include <QVarLengthArray>
#include <boost/icl/interval_set.hpp>

#include <algorithm>
#include <map>
#include <set>
#include <tuple>
#include <unordered_map>

namespace Prm::detail {

/// The members of a set by the hashes of their script names. Different names may have equal hashes, so the caller
/// compares the names of what is found. Members are stored as addresses, which are only compared.
class NameIndex {
public:
    using Key = quint64;
    using Keys = QVarLengthArray<Key, 8>;
    struct Entry {
        Key key;
        const void* member;
        int list;

        friend bool operator<(const Entry& a, const Entry& b) {
            return std::tie(a.key, a.member) < std::tie(b.key, b.member);
        }
    };

    void add(QStringView name, const void* member, int list) {
        m_longest = std::max(m_longest, static_cast<int>(name.size()));
        insert({keyOf(name), member, list});
    }
    /// For a member that may take any line, or whose name may change unseen.
    void addForAnyName(const void* member, int list) { insert({anyName, member, list}); }
    /// How many of those there are.
    int countForAnyName() const { return m_countForAnyName; }
    /// Takes the member out, under all its names.
    void remove(const void* member) {
        const auto [first, last] = m_keys.equal_range(member);
        for (auto key = first; key != last; ++key) {
            m_entries.erase({key->second, member, 0});
            m_countForAnyName -= key->second == anyName ? 1 : 0;
        }
        m_keys.erase(first, last);
    }

    Keys keysOfName(QStringView name) const {
        Keys keys;
        keys << anyName << keyOf(name);
        return keys;
    }
    /// Of the names before each dot of the text.
    Keys keysOfPrefixes(QStringView text) const {
        Keys keys;
        keys << anyName;
        Key hash = seed;
        const int end = std::min(static_cast<int>(text.size()), m_longest + 1);
        for (int i = 0; i < end; ++i) {
            if (text[i] == QLatin1Char('.') && has(hash | 1))
                keys << (hash | 1);
            hash = add(hash, text[i]);
        }
        return keys;
    }
    template <class Act> void forEach(Key key, const Act& act) const {
        for (auto entry = m_entries.lower_bound({key, nullptr, 0}); entry != m_entries.end() && entry->key == key;
             ++entry)
            act(*entry);
    }

    // The numbers after the stems of numbered names, as runs.
    void takeNumber(const QString& stem, quint64 number) { m_numbers[stem].add(number); }
    void freeNumber(const QString& stem, quint64 number) {
        const auto runs = m_numbers.find(stem);
        if (runs == m_numbers.end())
            return;
        runs->second.subtract(number);
        if (runs->second.empty())
            m_numbers.erase(runs);
    }
    quint64 freeNumberFrom(const QString& stem, quint64 number) const {
        const auto runs = m_numbers.find(stem);
        if (runs == m_numbers.end())
            return number;
        const auto run = runs->second.find(number);
        return run == runs->second.end() ? number : boost::icl::last(*run) + 1;
    }

    friend bool operator==(const NameIndex& a, const NameIndex& b) {
        const auto isSame = [](const Entry& x, const Entry& y) {
            return std::tie(x.key, x.member, x.list) == std::tie(y.key, y.member, y.list);
        };
        return a.m_entries.size() == b.m_entries.size() && a.m_keys.size() == b.m_keys.size() &&
               std::equal(a.m_entries.begin(), a.m_entries.end(), b.m_entries.begin(), isSame) &&
               a.m_numbers == b.m_numbers;
    }

private:
    // FNV-1a, of UTF-16 units; odd, so that 0 is no name's.
    static constexpr Key anyName = 0;
    static constexpr Key seed = 14695981039346656037u;
    static Key add(Key hash, QChar character) { return (hash ^ character.unicode()) * 1099511628211u; }
    static Key keyOf(QStringView name) {
        Key hash = seed;
        for (const QChar character : name)
            hash = add(hash, character);
        return hash | 1;
    }

    bool has(Key key) const {
        const auto entry = m_entries.lower_bound({key, nullptr, 0});
        return entry != m_entries.end() && entry->key == key;
    }
    void insert(const Entry& entry) {
        if (!m_entries.insert(entry).second)
            return;
        m_keys.emplace(entry.member, entry.key);
        m_countForAnyName += entry.key == anyName ? 1 : 0;
    }

    std::set<Entry> m_entries;
    std::unordered_multimap<const void*, Key> m_keys;
    std::map<QString, boost::icl::interval_set<quint64>> m_numbers;
    int m_longest = 0;
    int m_countForAnyName = 0;
};

} // namespace Prm::detail
