#include "tool/KeyframeDiff.h"

#include <QHash>
#include <QQueue>

namespace Tool {

namespace {

using Keys = std::vector<ParameterState::Keyframe>;

const ParameterState::Keyframe& at(const Keys& keys, int index) {
    return keys[static_cast<std::size_t>(index)];
}

bool looksLike(const ParameterState::Keyframe& a, const ParameterState::Keyframe& b) {
    return a.value == b.value && a.curve == b.curve;
}

QString look(const ParameterState::Keyframe& key) {
    return key.curve + QLatin1Char('\n') + key.value;
}

class Comparison {
public:
    Comparison(const Keys& from, const Keys& to) : m_from(from), m_to(to) {}

    KeyframeDiff holdingTimes() const {
        KeyframeDiff diff = paired([](bool) { return true; });
        moveAlike(diff);
        return diff;
    }

    KeyframeDiff holdingValues() const {
        KeyframeDiff diff = paired([](bool isAlike) { return isAlike; });
        moveAlike(diff);
        changeAtSameTimes(diff);
        return diff;
    }

private:
    /// Pairs keyframes at equal times where `mayPair`, given whether they look alike, lets it.
    template <class MayPair> KeyframeDiff paired(const MayPair& mayPair) const {
        KeyframeDiff diff;
        const auto pair = [&](int a, int b) {
            const bool isAlike = looksLike(at(m_from, a), at(m_to, b));
            if (mayPair(isAlike)) {
                if (!isAlike)
                    diff.changed.emplace_back(a, b);
            } else {
                diff.removed.push_back(a);
                diff.added.push_back(b);
            }
        };
        int a = 0;
        int b = 0;
        const int countA = static_cast<int>(m_from.size());
        const int countB = static_cast<int>(m_to.size());
        while (a < countA || b < countB) {
            if (b == countB || (a < countA && at(m_from, a).time < at(m_to, b).time))
                diff.removed.push_back(a++);
            else if (a == countA || at(m_to, b).time < at(m_from, a).time)
                diff.added.push_back(b++);
            else
                pair(a++, b++);
        }
        return diff;
    }

    /// What is gone and what is new, and looks alike, has moved; in order, so that keyframes do not pass each other.
    void moveAlike(KeyframeDiff& diff) const {
        QHash<QString, QQueue<int>> gone;
        for (const int a : diff.removed)
            gone[look(at(m_from, a))].enqueue(a);
        std::vector<bool> isMoved(m_from.size());
        std::vector<int> added;
        for (const int b : diff.added) {
            const auto alike = gone.find(look(at(m_to, b)));
            if (alike == gone.end() || alike->isEmpty()) {
                added.push_back(b);
                continue;
            }
            diff.moved.emplace_back(alike->dequeue(), b);
            isMoved[static_cast<std::size_t>(diff.moved.back().first)] = true;
        }
        std::vector<int> removed;
        for (const int a : diff.removed) {
            if (!isMoved[static_cast<std::size_t>(a)])
                removed.push_back(a);
        }
        diff.added.swap(added);
        diff.removed.swap(removed);
    }

    void changeAtSameTimes(KeyframeDiff& diff) const {
        std::vector<int> removed;
        std::vector<int> added;
        std::size_t next = 0;
        const auto addUpTo = [&](double time) {
            for (; next < diff.added.size() && at(m_to, diff.added[next]).time < time; ++next)
                added.push_back(diff.added[next]);
        };
        for (const int a : diff.removed) {
            addUpTo(at(m_from, a).time);
            if (next < diff.added.size() && at(m_to, diff.added[next]).time == at(m_from, a).time)
                diff.changed.emplace_back(a, diff.added[next++]);
            else
                removed.push_back(a);
        }
        added.insert(added.end(), diff.added.begin() + static_cast<std::ptrdiff_t>(next), diff.added.end());
        diff.added.swap(added);
        diff.removed.swap(removed);
    }

    const Keys& m_from;
    const Keys& m_to;
};

} // namespace

KeyframeDiff compareKeyframes(const Keys& from, const Keys& to) {
    const Comparison comparison(from, to);
    const KeyframeDiff byTime = comparison.holdingTimes();
    const KeyframeDiff byValue = comparison.holdingValues();
    return byValue.size() < byTime.size() ? byValue : byTime;
}

} // namespace Tool
