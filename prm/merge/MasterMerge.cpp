#include "prm/merge/MasterMerge.h"

#include "prm/document/ValueText.h"
#include "prm/merge/MergedLines.h"

#include <QStringList>

#include <algorithm>

namespace Prm::document {

namespace {

constexpr MergedNode nowhere{none, none};

Side otherThan(Side side) {
    return side == Side::Ours ? Side::Theirs : Side::Ours;
}

/// The path that a node names as its master, empty without one.
std::string_view masterPath(const ProjectText& text, int node) {
    return node < 0 ? std::string_view() : text.masterPath(node);
}

class MasterMerge {
public:
    MasterMerge(const ProjectText& base, const ProjectText& ours, const ProjectText& theirs, MergedMasters masters,
                Resolver& resolver)
        : m_base(base), m_ours(ours), m_theirs(theirs), m_masters(std::move(masters)), m_resolver(resolver) {
        const std::vector<int> oursInTheirs = ours.counterpartsIn(theirs);
        const std::vector<int> theirsInOurs = theirs.counterpartsIn(ours);
        for (int node = 1; node < ours.nodeCount(); ++node)
            addFollower({node, oursInTheirs[static_cast<std::size_t>(node)]});
        for (int node = 1; node < theirs.nodeCount(); ++node) {
            if (theirsInOurs[static_cast<std::size_t>(node)] == none)
                addFollower({none, node});
        }
    }

    /// A choice may lead to another fault. No choice is made twice, so this ends.
    MergedMasters resolved() {
        for (bool isChanged = true; isChanged;) {
            isChanged = false;
            for (const MergedNode& follower : m_followers)
                isChanged |= resolveDeleted(follower);
            m_walks.clear();
            for (const MergedNode& follower : m_followers)
                isChanged |= resolveCircle(follower);
        }
        return std::move(m_masters);
    }

private:
    const ProjectText& text(Side side) const { return side == Side::Ours ? m_ours : m_theirs; }
    static int nodeIn(const MergedNode& place, Side side) { return side == Side::Ours ? place.first : place.second; }
    std::set<int>& deleted(Side side) { return side == Side::Ours ? m_masters.deletedOurs : m_masters.deletedTheirs; }

    bool isParameterIn(const MergedNode& place, Side side) const {
        const int node = nodeIn(place, side);
        return node >= 0 && text(side).node(node).isParameter();
    }

    Side holderOf(const MergedNode& place) const {
        return isParameterIn(place, Side::Ours) ? Side::Ours : Side::Theirs;
    }

    bool isInResult(const MergedNode& place) {
        const Side holder = holderOf(place);
        return isParameterIn(place, holder) && deleted(holder).count(nodeIn(place, holder)) == 0;
    }

    void addFollower(const MergedNode& place) {
        if (!masterIn(place, Side::Ours).empty() || !masterIn(place, Side::Theirs).empty())
            m_followers.push_back(place);
    }

    std::string_view masterIn(const MergedNode& place, Side side) const {
        return masterPath(text(side), nodeIn(place, side));
    }

    Side sideOf(const MergedNode& place) const {
        const auto noted = m_masters.sides.find(place);
        return noted == m_masters.sides.end() ? holderOf(place) : noted->second;
    }

    /// `nowhere` without one.
    MergedNode masterOf(const MergedNode& place) {
        const std::string_view path = masterIn(place, sideOf(place));
        const MergedNode master = path.empty() ? nowhere : MergedNode(m_ours.findNode(path), m_theirs.findNode(path));
        return isInResult(master) ? master : nowhere;
    }

    QString pathOf(const MergedNode& place) const { return text(holderOf(place)).path(nodeIn(place, holderOf(place))); }

    Side settle(const MergedNode& place, const QString& words) {
        const int inBase = m_base.findNode(toView(bytePath(text(holderOf(place)), nodeIn(place, holderOf(place)))));
        const auto shown = [](std::string_view path) { return orNull(toText(path)); };
        return m_resolver.settle({pathOf(place), {}, "master", {}, {}},
                                 {shown(masterPath(m_base, inBase)), shown(masterIn(place, Side::Ours)),
                                  shown(masterIn(place, Side::Theirs))},
                                 words);
    }

    // --- faults ------------------------------------------------------------------------------------------------------

    /// The master is there on the side that gives it, and the other side has deleted it.
    bool resolveDeleted(const MergedNode& place) {
        const Side side = sideOf(place);
        const std::string_view path = masterIn(place, side);
        if (!isInResult(place) || path.empty() || path == masterIn(place, otherThan(side)) ||
            masterOf(place) != nowhere)
            return false;
        const int master = text(side).masterOf(nodeIn(place, side));
        if (master < 0)
            return false;
        const QString words = message(side == Side::Ours ? "the master is %1 here, which was deleted there"
                                                         : "the master is %1 there, which was deleted here",
                                      toText(path));
        const Side chosen = m_settled.insert(place).second ? settle(place, words) : side;
        if (chosen == side)
            deleted(side).erase(master);
        else
            m_masters.sides[place] = chosen;
        return true;
    }

    bool resolveCircle(const MergedNode& start) {
        MergedNode place = isInResult(start) ? start : nowhere;
        while (place != nowhere && m_walks.emplace(place, start).second)
            place = masterOf(place);
        if (place == nowhere || m_walks.at(place) != start)
            return false;
        std::vector<MergedNode> circle;
        do {
            circle.push_back(place);
            place = masterOf(place);
        } while (place != circle.front());
        if (isCircleOf(Side::Ours, circle) || isCircleOf(Side::Theirs, circle))
            return false;
        breakCircle(circle);
        return true;
    }

    bool isCircleOf(Side side, const std::vector<MergedNode>& circle) const {
        return std::all_of(circle.begin(), circle.end(), [&](const MergedNode& place) {
            return masterIn(place, side) == masterIn(place, sideOf(place));
        });
    }

    void breakCircle(const std::vector<MergedNode>& circle) {
        QStringList links;
        for (const MergedNode& place : circle)
            links.append(message(sideOf(place) == Side::Ours ? "%1 follows %2 here" : "%1 follows %2 there",
                                 pathOf(place), toText(masterIn(place, sideOf(place)))));
        const Side chosen = settle(circle.front(), "the masters lead in a circle: " + links.join(", "));
        const auto take = [&](Side side, bool takesAll) {
            bool isBroken = false;
            for (const MergedNode& place : circle) {
                if (m_settled.insert(place).second || takesAll) {
                    isBroken |= masterIn(place, side) != masterIn(place, sideOf(place));
                    m_masters.sides[place] = side;
                }
            }
            return isBroken;
        };
        // Settlements that differ for its parts may keep it.
        if (!take(chosen, false))
            take(Side::Ours, true);
    }

    const ProjectText& m_base;
    const ProjectText& m_ours;
    const ProjectText& m_theirs;
    MergedMasters m_masters;
    Resolver& m_resolver;
    std::vector<MergedNode> m_followers;
    std::set<MergedNode> m_settled;
    /// The walk from master to master that has passed a node, by its start.
    std::map<MergedNode, MergedNode> m_walks;
};

} // namespace

MergedMasters withoutBrokenMasters(const ProjectText& base, const ProjectText& ours, const ProjectText& theirs,
                                   MergedMasters masters, Resolver& resolver) {
    return MasterMerge(base, ours, theirs, std::move(masters), resolver).resolved();
}

} // namespace Prm::document
