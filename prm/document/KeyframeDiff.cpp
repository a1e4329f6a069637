#include "prm/document/KeyframeDiff.h"

#include "prm/document/FileParameter.h"

#include <QHash>
#include <QQueue>

#include <algorithm>

namespace Prm::document {

namespace {

using Keys = std::vector<FileKeyframe>;

class Comparison {
public:
    Comparison(const Keys& from, const Keys& to) : m_from(from), m_to(to) {}

    KeyframeDiff holdingTimes() const {
        KeyframeDiff diff = paired(true);
        moveAlike(diff);
        return diff;
    }

    KeyframeDiff holdingValues() const {
        KeyframeDiff diff = paired(false);
        moveAlike(diff);
        changeAtSameTimes(diff);
        return diff;
    }

private:
    const FileKeyframe& from(int index) const { return m_from[static_cast<std::size_t>(index)]; }
    const FileKeyframe& to(int index) const { return m_to[static_cast<std::size_t>(index)]; }

    static bool haveSameCurve(const FileKeyframe& a, const FileKeyframe& b) {
        return a.interpolationData == b.interpolationData ||
               curveText(a.interpolationData) == curveText(b.interpolationData);
    }

    static QString look(const FileKeyframe& key) { return curveText(key.interpolationData) + '\n' + key.value.text; }

    /// Pairs keyframes at equal times: all of them, or those that look alike.
    KeyframeDiff paired(bool pairsAll) const {
        KeyframeDiff diff;
        const int countA = static_cast<int>(m_from.size());
        const int countB = static_cast<int>(m_to.size());
        for (int a = 0, b = 0; a < countA || b < countB;) {
            const bool isA = b == countB || (a < countA && from(a).time <= to(b).time);
            const bool isB = a == countA || (b < countB && to(b).time <= from(a).time);
            const bool isAlike = isA && isB && from(a).value == to(b).value && haveSameCurve(from(a), to(b));
            if (isA && isB && !isAlike && pairsAll)
                diff.changed.emplace_back(a, b);
            if (isA && !isAlike && !(isB && pairsAll))
                diff.removed.push_back(a);
            if (isB && !isAlike && !(isA && pairsAll))
                diff.added.push_back(b);
            a += isA ? 1 : 0;
            b += isB ? 1 : 0;
        }
        return diff;
    }

    /// What is gone and what is new, and looks alike, has moved; in order, so that keyframes do not pass each other.
    void moveAlike(KeyframeDiff& diff) const {
        QHash<QString, QQueue<int>> gone;
        for (const int a : diff.removed)
            gone[look(from(a))].enqueue(a);
        std::vector<int> added;
        for (const int b : diff.added) {
            const auto alike = gone.find(look(to(b)));
            if (alike == gone.end() || alike->isEmpty())
                added.push_back(b);
            else
                diff.moved.emplace_back(alike->dequeue(), b);
        }
        std::vector<int> removed;
        for (const QQueue<int>& rest : qAsConst(gone))
            removed.insert(removed.end(), rest.begin(), rest.end());
        std::sort(removed.begin(), removed.end());
        diff.added.swap(added);
        diff.removed.swap(removed);
    }

    void changeAtSameTimes(KeyframeDiff& diff) const {
        std::vector<int> removed;
        std::vector<int> added;
        auto a = diff.removed.begin();
        auto b = diff.added.begin();
        while (a != diff.removed.end() && b != diff.added.end()) {
            if (from(*a).time == to(*b).time)
                diff.changed.emplace_back(*a++, *b++);
            else if (from(*a).time < to(*b).time)
                removed.push_back(*a++);
            else
                added.push_back(*b++);
        }
        removed.insert(removed.end(), a, diff.removed.end());
        added.insert(added.end(), b, diff.added.end());
        diff.added.swap(added);
        diff.removed.swap(removed);
    }

    const Keys& m_from;
    const Keys& m_to;
};

} // namespace

KeyframeDiff compareKeyframes(const Keys& from, const Keys& to) {
    const Comparison comparison(from, to);
    KeyframeDiff byTime = comparison.holdingTimes();
    KeyframeDiff byValue = comparison.holdingValues();
    return byValue.size() < byTime.size() ? byValue : byTime;
}

} // namespace Prm::document
