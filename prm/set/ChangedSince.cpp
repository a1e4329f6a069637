#include "prm/ChangedSince.h"

#include "prm/CompoundParameter.h"
#include "prm/MovedParameter.h"
#include "prm/set/ShownState.h"
#include "prm/track/CurveShapes.h"
#include "prm/untyped/PartialState.h"

#include <QHash>
#include <QSet>

#include <algorithm>
#include <optional>
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

/// A tree of members as they were, below one set.
class Watch {
public:
    explicit Watch(const ParameterSet& set) : m_root(Extent::Member{nullptr, nullptr, &set}) {
        static_cast<void>(take());
    }

    Extent take() {
        m_kindsChanged = m_kinds != kindRegistrations();
        m_kinds = kindRegistrations();
        m_visited.clear();
        if (m_root.guard.alive())
            compareMembers(m_root, *m_root.member.set);
        else
            forgetRoot();
        return std::exchange(m_extent, {});
    }

private:
    void forgetRoot() {
        for (const Node& one : std::exchange(m_root.members, {})) {
            m_extent.m_went.append(one.member);
            forget(one);
        }
    }

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
        /// Whether the members were never listed.
        bool isNew = true;
        /// Of a set and of a compound.
        std::vector<Node> members;
    };

    /// Returns whether the list of members has changed.
    bool compareMembers(Node& node, const ParameterSet& set) {
        // Several sets may list one.
        if (m_visited.contains(&set))
            return false;
        m_visited.insert(&set);
        std::size_t place = 0;
        bool isSame = true;
        forEachMember(set, [&](const Extent::Member& now) {
            isSame = isSame && place < node.members.size() && node.members[place].isOf(now);
            ++place;
        });
        isSame = isSame && place == node.members.size();
        if (!isSame)
            relist(node, set);
        node.isNew = false;
        for (Node& member : node.members)
            compare(member);
        return !isSame;
    }

    /// Of the members that stay, one that comes after another that was listed after it has moved.
    void relist(Node& node, const ParameterSet& set) {
        std::vector<Node> former = std::exchange(node.members, {});
        QHash<const void*, int> places;
        for (std::size_t i = 0; i < former.size(); ++i) {
            if (former[i].guard.alive())
                places.insert(addressOf(former[i].member), static_cast<int>(i));
        }
        int latest = -1;
        forEachMember(set, [&](const Extent::Member& now) {
            const auto found = places.find(addressOf(now));
            if (found == places.end()) {
                node.members.push_back(came(now));
                if (!node.isNew)
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
            node.members.push_back(std::move(former[static_cast<std::size_t>(place)]));
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
            compareMembers(node, *node.member.set);
        else if (const auto* const compound = dynamic_cast<const CompoundParameter*>(node.member.parameter))
            compareParts(node, *compound);
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
    void compareParts(Node& node, const CompoundParameter& compound) {
        if (compareMembers(node, compound))
            m_extent.add(&compound, everywhere());
        for (const auto& part : compound.parameters()) {
            if (const Reach* const reach = m_extent.reachOf(part.get()))
                m_extent.add(&compound, Reach(*reach));
        }
    }

    void forget(const Node& node) {
        if (node.member.parameter)
            m_extent.add(node.member.parameter, everywhere());
        for (const Node& one : node.members)
            forget(one);
    }

    Node m_root;
    quint64 m_kinds = 0;
    /// Of the present pass.
    bool m_kindsChanged = false;
    QSet<const ParameterSet*> m_visited;
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
