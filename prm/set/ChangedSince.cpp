#include "prm/ChangedSince.h"

#include "prm/CompoundParameter.h"
#include "prm/MovedParameter.h"
#include "prm/set/ShownState.h"
#include "prm/track/CurveShapes.h"
#include "prm/untyped/PartialState.h"

#include <QHash>

#include <algorithm>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

namespace Prm {

namespace detail {

namespace {

/// Calls the function for the parameters of a set, those that do not animate, and the subsets.
template <class Function> void forEachMember(const ParameterSet& set, const Function& function) {
    for (const auto& parameter : set.parameters())
        function(Extent::Member{&set, parameter.get(), nullptr});
    for (const BasicParameter* const parameter : set.basicParameters())
        function(Extent::Member{&set, parameter, nullptr});
    for (const ParameterSet* const subset : set.subsets())
        function(Extent::Member{&set, nullptr, subset});
}

} // namespace

/// The members as they were, below one set.
class Watch {
public:
    explicit Watch(const ParameterSet& set) : m_root(set), m_guard(set) { static_cast<void>(take()); }

    Extent take() {
        m_kindsChanged = m_kinds != kindRegistrations();
        m_kinds = kindRegistrations();
        ++m_pass;
        if (m_guard.alive())
            compareMembers(m_root);
        else
            loseRoot();
        forgetUnlisted();
        return std::exchange(m_extent, {});
    }

private:
    struct Node {
        explicit Node(const Extent::Member& of)
            : member(of), animated(qobject_cast<const ParameterWithoutType*>(of.parameter)),
              guard(of.set ? LifeGuard(*of.set) : LifeGuard(*of.parameter)) {}

        bool isOf(const Extent::Member& now) const {
            return guard.alive() && member.parameter == now.parameter && member.set == now.set;
        }

        Extent::Member member;
        /// The parameter if it animates.
        const ParameterWithoutType* animated;
        LifeGuard guard;
        QString scriptName;
        QString displayName;
        /// Of a parameter that animates, unless it is a compound.
        std::optional<ShownState> shown;
        /// Of one that does not.
        std::optional<QVariant> value;
    };

    /// The members of a set or a compound, which several sets may list.
    struct List {
        explicit List(const ParameterSet& set) : guard(set) {}

        LifeGuard guard;
        /// In which it was visited last; 0 before the first.
        quint64 pass = 0;
        std::vector<Node> members;
    };

    void loseRoot() {
        const auto found = m_lists.find(&m_root);
        if (found == m_lists.end())
            return;
        for (const Node& one : found->second.members)
            m_extent.m_went.append(one.member);
    }

    /// What was listed by sets that were not visited.
    void forgetUnlisted() {
        for (auto list = m_lists.begin(); list != m_lists.end();) {
            if (list->second.pass == m_pass) {
                ++list;
                continue;
            }
            forget(list->second);
            list = m_lists.erase(list);
        }
    }
    void forget(const List& list) {
        for (const Node& one : list.members)
            forget(one);
    }

    /// Another set may have the address of one that was deleted.
    List& listOf(const ParameterSet& set) {
        List& list = m_lists.try_emplace(&set, set).first->second;
        if (list.guard.alive())
            return list;
        forget(list);
        m_lists.erase(&set);
        return m_lists.try_emplace(&set, set).first->second;
    }

    /// Returns whether the list of members has changed.
    bool compareMembers(const ParameterSet& set) {
        List& list = listOf(set);
        const quint64 former = std::exchange(list.pass, m_pass);
        if (former == m_pass)
            return false;
        std::size_t place = 0;
        bool isSame = true;
        forEachMember(set, [&](const Extent::Member& now) {
            isSame = isSame && place < list.members.size() && list.members[place].isOf(now);
            ++place;
        });
        isSame = isSame && place == list.members.size();
        if (!isSame)
            relist(list, set, former == 0);
        for (Node& member : list.members)
            compare(member);
        return !isSame;
    }

    /// Of the members that stay, one that comes after another that was listed after it has moved.
    void relist(List& list, const ParameterSet& set, bool isNew) {
        std::vector<Node> former = std::exchange(list.members, {});
        QHash<const void*, int> places;
        for (std::size_t i = 0; i < former.size(); ++i) {
            if (former[i].guard.alive())
                places.insert(addressOf(former[i].member), static_cast<int>(i));
        }
        int latest = -1;
        forEachMember(set, [&](const Extent::Member& now) {
            const auto found = places.find(addressOf(now));
            if (found == places.end()) {
                list.members.push_back(came(now));
                if (!isNew)
                    m_extent.m_came.append(now);
                return;
            }
            const int place = *found;
            places.erase(found);
            if (place < latest) {
                m_extent.m_went.append(now);
                m_extent.m_came.append(now);
            }
            latest = std::max(latest, place);
            list.members.push_back(std::move(former[static_cast<std::size_t>(place)]));
        });
        for (const Node& one : former) {
            const bool isLeft = !one.guard.alive() || places.contains(addressOf(one.member));
            if (!isLeft)
                continue;
            m_extent.m_went.append(one.member);
            forget(one);
        }
    }
    static const void* addressOf(const Extent::Member& member) {
        return member.set ? static_cast<const void*>(member.set) : member.parameter;
    }

    Node came(const Extent::Member& member) {
        Node node(member);
        if (member.parameter)
            m_extent.add(member.parameter, everywhere());
        learn(node);
        return node;
    }
    static void learn(Node& node) {
        static_cast<void>(takeNames(node));
        const BasicParameter* const parameter = node.member.parameter;
        if (node.animated && !dynamic_cast<const CompoundParameter*>(node.animated))
            node.shown.emplace(*node.animated);
        else if (parameter && !node.animated && !dynamic_cast<const MovedParameter*>(parameter))
            node.value = parameter->variantValue(Context(), std::nothrow);
    }
    /// Returns whether they are new.
    static bool takeNames(Node& node) {
        const ParameterSet* const set = node.member.set;
        const QString& scriptName = set ? set->scriptName() : node.member.parameter->scriptName();
        const QString& displayName = set             ? set->displayName()
                                     : node.animated ? node.animated->displayName()
                                                     : node.displayName;
        if (scriptName == node.scriptName && displayName == node.displayName)
            return false;
        node.scriptName = scriptName;
        node.displayName = displayName;
        return true;
    }

    void compare(Node& node) {
        if (takeNames(node))
            m_extent.m_renamed.append(node.member);
        if (node.shown)
            compareShown(node, *node.animated);
        else if (node.value)
            compareValue(node);
        else if (node.member.set)
            compareMembers(*node.member.set);
        else if (const auto* const compound = dynamic_cast<const CompoundParameter*>(node.member.parameter))
            compareParts(*compound);
    }
    void compareShown(Node& node, const ParameterWithoutType& parameter) {
        if (m_kindsChanged && node.shown->hasCustomKinds())
            m_extent.add(&parameter, everywhere());
        if (node.shown->isOf(parameter))
            return;
        ShownState now(parameter);
        m_extent.add(&parameter, node.shown->differenceTo(now));
        node.shown = std::move(now);
    }
    void compareValue(Node& node) {
        QVariant now = node.member.parameter->variantValue(Context(), std::nothrow);
        if (!sameVariants(*node.value, now))
            m_extent.add(node.member.parameter, everywhere());
        node.value = std::move(now);
    }
    void compareParts(const CompoundParameter& compound) {
        if (compareMembers(compound))
            m_extent.add(&compound, everywhere());
        for (const auto& part : compound.parameters()) {
            if (const Reach* const reach = m_extent.reachOf(part.get()))
                m_extent.add(&compound, Reach(*reach));
        }
    }

    void forget(const Node& node) {
        if (node.member.parameter)
            m_extent.add(node.member.parameter, everywhere());
    }

    const ParameterSet& m_root;
    const LifeGuard m_guard;
    std::unordered_map<const ParameterSet*, List> m_lists;
    quint64 m_kinds = 0;
    /// Of the present pass.
    bool m_kindsChanged = false;
    quint64 m_pass = 0;
    Extent m_extent;
};

} // namespace detail

ChangedSince::ChangedSince(ParameterSet& set) : m_watch(std::make_unique<detail::Watch>(set)) {}

ChangedSince::~ChangedSince() = default;
ChangedSince::ChangedSince(ChangedSince&&) noexcept = default;
ChangedSince& ChangedSince::operator=(ChangedSince&&) noexcept = default;

Extent ChangedSince::take() {
    return m_watch->take();
}

} // namespace Prm
