// Moving many keyframes at once.

#include "host/bsc/CompositeCommand.h"
#include "prm/CompoundParameter.h"
#include "prm/ParameterEdits.h"
#include "prm/ParameterSet.h"
#include "prm/edits/KeyframeMoves.h"
#include "prm/track/SelectedKeyframes.h"

#include <algorithm>
#include <limits>
#include <map>
#include <utility>

namespace Prm {

namespace {

/// The keyframes of one view, as far as a retiming concerns them.
class ViewMove {
public:
    ViewMove(const ParameterWithoutType& parameter, const View& view, const Retiming& retiming)
        : m_view(view), m_before(detail::keyframeTimes(parameter, view)) {
        m_after.reserve(m_before.size());
        for (const Time time : m_before)
            m_after.push_back(retiming.moved(time));
    }

    bool movesAny() const { return m_before != m_after; }
    bool isPossible() const {
        // Project text has times in single precision.
        constexpr auto farthest = static_cast<double>(std::numeric_limits<float>::max());
        return std::all_of(m_after.begin(), m_after.end(),
                           [](Time time) { return time.isValid() && time.toDouble() >= -farthest; });
    }
    /// Whether no keyframe is passed or replaced.
    bool keepsOrder() const {
        const auto notAscending = [](Time a, Time b) { return !(a < b); };
        return std::adjacent_find(m_after.begin(), m_after.end(), notAscending) == m_after.end();
    }
    /// From the first to the last keyframe that is moved, before and after.
    detail::Place place() const {
        detail::Place place = detail::Place::staticValue(m_view);
        for (std::size_t i = 0; i < m_before.size(); ++i) {
            if (m_before[i] == m_after[i])
                continue;
            const auto [first, last] = std::minmax(m_before[i], m_after[i]);
            place.first = place.hasTimes() ? std::min(place.first, first) : first;
            place.last = place.last.isValid() ? std::max(place.last, last) : last;
        }
        return place;
    }

    void announce(ParameterWithoutType& parameter) const {
        if (!movesAny())
            return;
        if (keepsOrder())
            announceMove(parameter);
        else
            announceEach(parameter);
    }

private:
    void announceMove(ParameterWithoutType& parameter) const {
        QList<unsigned int> moved;
        for (std::size_t i = 0; i < m_before.size(); ++i) {
            if (m_after[i] != m_before[i])
                moved.append(static_cast<unsigned int>(i));
        }
        ParameterChange::keyframeMoved(parameter, moved, m_view);
    }

    /// What has gone from the end on, then what has come and what was replaced from the start on, so that an observer
    /// who follows with a list of its own has the positions right.
    void announceEach(ParameterWithoutType& parameter) const {
        const detail::LifeGuard guard(parameter);
        const std::vector<Time> now = detail::keyframeTimes(parameter, m_view);
        for (std::size_t i = m_before.size(); i-- > 0 && guard.alive();) {
            if (!std::binary_search(now.begin(), now.end(), m_before[i]))
                ParameterChange::keyframeRemoved(parameter, static_cast<int>(i), Context(m_before[i], m_view));
        }
        std::vector<Time> targets;
        for (std::size_t i = 0; i < m_before.size(); ++i) {
            if (m_after[i] != m_before[i])
                targets.push_back(m_after[i]);
        }
        std::sort(targets.begin(), targets.end());
        targets.erase(std::unique(targets.begin(), targets.end()), targets.end());
        for (const Time target : targets) {
            if (guard.alive())
                announceTarget(parameter, Context(target, m_view));
        }
    }
    void announceTarget(ParameterWithoutType& parameter, const Context& target) const {
        unsigned int position = 0;
        if (!parameter.bNearestKeyframeIndex(target, position) || parameter.keyframeTime(position, m_view) != target)
            return;
        const auto index = static_cast<int>(position);
        if (!std::binary_search(m_before.begin(), m_before.end(), target.time))
            return ParameterChange::keyframeAdded(parameter, index, m_view);
        const detail::LifeGuard guard(parameter);
        ParameterChange::keyframeChangedValue(parameter, index, m_view);
        if (guard.alive())
            ParameterChange::keyframeChangedInterpolation(parameter, index, m_view);
    }

    View m_view;
    std::vector<Time> m_before;
    std::vector<Time> m_after;
};

std::vector<ViewMove> movesOf(const ParameterWithoutType& parameter, const Retiming& retiming) {
    std::vector<ViewMove> moves;
    const std::vector<View>& views = parameter.viewList();
    moves.reserve(views.size());
    for (const View view : views)
        moves.emplace_back(parameter, view, retiming);
    return moves;
}

} // namespace

/// What is moved where, of the parameter as it shows its keyframes, and of the parts of a compound each.
class detail::RetimingPlan {
public:
    RetimingPlan(ParameterWithoutType& parameter, const Retiming& retiming) : m_shown(movesOf(parameter, retiming)) {
        for (const auto& owner : ownersOf(parameter))
            m_owned.push_back({owner, owner == &parameter ? m_shown : movesOf(*owner, retiming)});
    }

    bool movesAny() const {
        return std::any_of(m_owned.begin(), m_owned.end(), [](const Owned& owned) { return owned.movesAny(); });
    }
    bool isPossible() const {
        return allMoves([](const ViewMove& move) { return move.isPossible(); });
    }
    bool keepsOrder() const {
        return allMoves([](const ViewMove& move) { return move.keepsOrder(); });
    }
    /// One for each view. The parameter may show, and announce, keyframes of a part in views in which that has no data.
    Places places() const {
        std::map<View, Place> places;
        const auto add = [&](const ViewMove& move) {
            const Place place = move.place();
            Place& all = places.emplace(place.view, place).first->second;
            if (place.hasTimes() && all.hasTimes())
                all = {all.view, std::min(all.first, place.first), std::max(all.last, place.last)};
            else if (place.hasTimes())
                all = place;
            return true;
        };
        std::for_each(m_shown.begin(), m_shown.end(), add);
        allMoves(add);
        Places list;
        for (const auto& [view, place] : places)
            list.push_back(place);
        return list;
    }
    /// The parts of a compound first, whose changes the compound itself announces as its own.
    void announce(ParameterWithoutType& parameter) const {
        const LifeGuard guard(parameter);
        for (const Owned& owned : m_owned) {
            if (guard.alive() && owned.owner && owned.owner != &parameter && owned.movesAny())
                ParameterChange::parameterAssigned(*owned.owner);
        }
        for (const ViewMove& move : m_shown) {
            if (guard.alive())
                move.announce(parameter);
        }
    }

private:
    struct Owned {
        QPointer<ParameterWithoutType> owner;
        std::vector<ViewMove> moves;

        bool movesAny() const {
            return std::any_of(moves.begin(), moves.end(), [](const ViewMove& move) { return move.movesAny(); });
        }
    };
    template <class Test> bool allMoves(const Test& test) const {
        return std::all_of(m_owned.begin(), m_owned.end(), [&](const Owned& owned) {
            return std::all_of(owned.moves.begin(), owned.moves.end(), test);
        });
    }

    std::vector<ViewMove> m_shown;
    std::vector<Owned> m_owned;
};

ParameterRetimeEdit::ParameterRetimeEdit(ParameterWithoutType& parameter, const Retiming& retiming)
    : ParameterSnapshotEdit(&parameter, retiming.scale == 1.0
                                            ? EditWords{"Move %n keyframe of %p", "Move %n keyframes of %p"}
                                            : EditWords{"Retime %n keyframe of %p", "Retime %n keyframes of %p"}),
      m_retiming(retiming) {}

ParameterRetimeEdit::~ParameterRetimeEdit() = default;

QString ParameterRetimeEdit::refusal() const {
    if (!m_retiming.isUsable())
        return QStringLiteral("the scale must be above 0, and all numbers finite");
    const bool isPossible = !parameter() || detail::RetimingPlan(*parameter(), m_retiming).isPossible();
    return QString::fromLatin1(isPossible ? nullptr : detail::isOutOfRange);
}

bool ParameterRetimeEdit::applies() {
    if (!m_retiming.isUsable())
        return false;
    m_plan = std::make_unique<const detail::RetimingPlan>(*parameter(), m_retiming);
    return m_plan->movesAny() && m_plan->isPossible();
}

void ParameterRetimeEdit::apply() {
    const std::unique_ptr<const detail::RetimingPlan> plan = std::move(m_plan);
    const auto mapping = [retiming = m_retiming](Time time) { return retiming.moved(time); };
    if (plan->keepsOrder())
        parameter()->adjustKeyframesTime(mapping);
    else
        parameter()->retimeKeyframes(mapping);
    if (parameter())
        plan->announce(*parameter());
}

int ParameterRetimeEdit::countNow() const {
    return parameter() ? detail::countKeyframes(*parameter(), View::INVALID(), m_retiming.first, m_retiming.last) : 0;
}

detail::Places ParameterRetimeEdit::places() const {
    return m_plan->places();
}

Bsc::CompositeCommand& ParameterRetimeEdit::appendToCommand(ParameterWithoutType& parameter, const Retiming& retiming,
                                                            Bsc::CompositeCommand& command) {
    command.push_back(new ParameterRetimeEdit(parameter, retiming));
    return command;
}

Bsc::CompositeCommand& ParameterRetimeEdit::appendToCommand(CompoundParameter& parameter, const Retiming& retiming,
                                                            Bsc::CompositeCommand& command) {
    return appendToCommand(static_cast<ParameterWithoutType&>(parameter), retiming, command);
}

Bsc::CompositeCommand& ParameterRetimeEdit::appendToCommand(ParameterSet& set, const Retiming& retiming,
                                                            Bsc::CompositeCommand& command) {
    if (auto* const compound = dynamic_cast<CompoundParameter*>(&set))
        return appendToCommand(*compound, retiming, command);
    set.forEachParameter([&](ParameterWithoutType* parameter) { appendToCommand(*parameter, retiming, command); },
                         true);
    return command;
}

} // namespace Prm
