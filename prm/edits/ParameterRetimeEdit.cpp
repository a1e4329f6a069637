// Moving many keyframes at once.

#include "host/bsc/CompositeCommand.h"
#include "prm/CompoundParameter.h"
#include "prm/ParameterEdits.h"
#include "prm/ParameterSet.h"
#include "prm/SerialisedKeyframe.h"
#include "prm/edits/KeyframeMoves.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace Prm {

namespace {

constexpr Time earliest = Time::fromDouble(-std::numeric_limits<double>::infinity());

/// Keyframes as they shall be: those that are moved, and all.
struct Target {
    detail::SerialisedKeyframes moved;
    detail::SerialisedKeyframes all;
};

/// The keyframes of one view, as far as a retiming concerns them.
class ViewMove {
public:
    ViewMove(const ParameterWithoutType& parameter, const View& view, const Retiming& retiming)
        : m_view(view), m_before(detail::keyframeTimes(parameter, view)) {
        m_after.reserve(m_before.size());
        for (const Time time : m_before)
            m_after.push_back(retiming.concerns(time) ? retiming(time) : time);
        for (std::size_t i = 0; i < m_before.size(); ++i) {
            if (m_after[i] != m_before[i])
                m_moved.append(static_cast<unsigned int>(i));
        }
    }

    bool movesAny() const { return !m_moved.isEmpty(); }
    bool isPossible() const {
        // Keyframes are shifted in single precision.
        constexpr auto farthest = static_cast<double>(std::numeric_limits<float>::max());
        return std::all_of(m_after.begin(), m_after.end(),
                           [](Time time) { return time.isValid() && time.toDouble() >= -farthest; });
    }
    /// Whether no keyframe is passed or replaced.
    bool keepsOrder() const {
        const auto notAscending = [](Time a, Time b) { return !(a < b); };
        return std::adjacent_find(m_after.begin(), m_after.end(), notAscending) == m_after.end();
    }

    void tell(ParameterWithoutType& parameter) {
        QList<unsigned int> moved = m_moved;
        if (movesAny())
            ParameterChange::keyframeMoved(parameter, moved, m_view);
    }

    /// Adds before it removes, so that the view never loses its last keyframe, whose value it would keep as static one.
    void moveOneByOne(ParameterWithoutType& parameter) const {
        const detail::LifeGuard guard(parameter);
        const Target target = targetIn(parameter);
        if (target.all.empty())
            return;
        detail::importAll(parameter, target.moved);
        std::vector<Time> taken = m_after;
        std::sort(taken.begin(), taken.end());
        for (const unsigned int i : m_moved) {
            if (guard.alive() && !std::binary_search(taken.begin(), taken.end(), m_before[i]))
                parameter.vDeleteKeyframe(Context::Explicit(m_before[i], m_view));
        }
        if (guard.alive())
            detail::mendAll(parameter, target.all);
    }

private:
    /// Where several come to one time, a moved one wins, the last of them; it stands last among its like.
    std::vector<std::size_t> inOrder(const std::vector<bool>& moves) const {
        std::vector<std::size_t> order(moves.size());
        std::iota(order.begin(), order.end(), 0);
        std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
            if (m_after[a] != m_after[b])
                return m_after[a] < m_after[b];
            return moves[a] != moves[b] ? moves[b] : a < b;
        });
        return order;
    }

    Target targetIn(const ParameterWithoutType& parameter) const {
        const detail::SerialisedKeyframes keyframes = detail::serialised(parameter, m_view, m_before);
        if (keyframes.size() != m_before.size())
            return {};
        std::vector<bool> moves(keyframes.size(), false);
        for (const unsigned int i : m_moved) {
            detail::shiftTo(*keyframes[i], m_after[i]);
            moves[i] = true;
        }
        Target target;
        const std::vector<std::size_t> order = inOrder(moves);
        for (std::size_t i = 0; i < order.size(); ++i) {
            if (i + 1 < order.size() && m_after[order[i]] == m_after[order[i + 1]])
                continue;
            target.all.push_back(keyframes[order[i]]);
            if (moves[order[i]])
                target.moved.push_back(keyframes[order[i]]);
        }
        return target;
    }

    View m_view;
    std::vector<Time> m_before;
    std::vector<Time> m_after;
    QList<unsigned int> m_moved;
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

Retiming Retiming::shifted(double frames) {
    return {earliest, Time::LAST, Time(), 1.0, frames};
}

Retiming Retiming::scaled(double factor, Time pivot) {
    return {earliest, Time::LAST, pivot, factor, 0.0};
}

Retiming Retiming::between(Time from, Time to) const {
    return {from, to, pivot, scale, shift};
}

bool Retiming::isUsable() const {
    return scale > 0.0 && std::isfinite(scale) && std::isfinite(shift) && std::isfinite(pivot.toDouble());
}

Time Retiming::operator()(Time time) const {
    const double about = pivot.toDouble();
    const double scaled = scale == 1.0 ? time.toDouble() : about + scale * (time.toDouble() - about);
    return Time::fromDouble(scaled + shift);
}

ParameterRetimeEdit::ParameterRetimeEdit(ParameterWithoutType& parameter, const Retiming& retiming)
    : ParameterSnapshotEdit(&parameter), m_retiming(retiming) {}

bool ParameterRetimeEdit::applies() const {
    if (!m_retiming.isUsable())
        return false;
    const std::vector<ViewMove> moves = movesOf(*parameter(), m_retiming);
    return std::any_of(moves.begin(), moves.end(), [](const ViewMove& move) { return move.movesAny(); }) &&
           std::all_of(moves.begin(), moves.end(), [](const ViewMove& move) { return move.isPossible(); });
}

bool ParameterRetimeEdit::apply() {
    std::vector<ViewMove> moves = movesOf(*parameter(), m_retiming);
    const bool inOneGo =
        std::all_of(moves.begin(), moves.end(), [](const ViewMove& move) { return move.keepsOrder(); });
    if (inOneGo) {
        parameter()->adjustKeyframesTime(
            [this](Time time) { return m_retiming.concerns(time) ? m_retiming(time) : time; });
    }
    for (ViewMove& move : moves) {
        if (!parameter())
            break;
        if (inOneGo)
            move.tell(*parameter());
        else if (move.movesAny())
            move.moveOneByOne(*parameter());
    }
    return true;
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
    set.forEachParameter([&](ParameterWithoutType* parameter) { appendToCommand(*parameter, retiming, command); },
                         true);
    return command;
}

} // namespace Prm
