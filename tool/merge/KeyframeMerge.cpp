#include "tool/merge/KeyframeMerge.h"

#include "tool/FileParameter.h"
#include "tool/KeyframeDiff.h"
#include "tool/Table.h"

#include <algorithm>
#include <map>

namespace Tool {

namespace {

constexpr int gone = -1;

const FileKeyframe& at(const FileKeyframes& keys, int index) {
    return keys[static_cast<std::size_t>(index)];
}

bool isAlike(const FileKeyframe& a, const FileKeyframe& b) {
    return a.value == b.value && curveText(a.interpolationData) == curveText(b.interpolationData);
}

QVariant frameOf(const FileKeyframe& key) {
    return key.time.toDouble();
}

/// Where the keyframes of the base are on a side.
struct Fates {
    /// For each of the base, its place or `gone`.
    std::vector<int> places;
    std::vector<int> added;
};

Fates fatesOf(const FileKeyframes& base, const FileKeyframes& side) {
    constexpr int unchanged = -2;
    const KeyframeDiff diff = compareKeyframes(base, side);
    Fates fates{std::vector<int>(base.size(), unchanged), diff.added};
    for (const auto* const pairs : {&diff.moved, &diff.changed}) {
        for (const auto& [before, after] : *pairs)
            fates.places[static_cast<std::size_t>(before)] = after;
    }
    for (const int before : diff.removed)
        fates.places[static_cast<std::size_t>(before)] = gone;
    int next = 0;
    for (std::size_t i = 0; i < base.size(); ++i) {
        if (fates.places[i] != unchanged)
            continue;
        while (at(side, next).time != base[i].time)
            ++next;
        fates.places[i] = next;
    }
    return fates;
}

/// A keyframe of the result.
struct Merged {
    FileKeyframe key;
    /// Where it comes from, `gone` where the side has none.
    int ours = gone;
    int theirs = gone;
};

class KeyframeMerge {
public:
    KeyframeMerge(const FileKeyframes& base, const MergedSide& ours, const MergedSide& theirs, Judge& judge,
                  const Judge::Subject& place)
        : m_base(base), m_ours(ours), m_theirs(theirs), m_judge(judge), m_place(place) {}

    FileKeyframes merged() {
        const Fates ours = fatesOf(m_base, m_ours.normal);
        const Fates theirs = fatesOf(m_base, m_theirs.normal);
        for (std::size_t i = 0; i < m_base.size(); ++i)
            mergeOne(m_base[i], ours.places[i], theirs.places[i]);
        for (const int index : ours.added)
            m_merged.push_back({at(m_ours.written, index), index, gone});
        for (const int index : theirs.added)
            m_merged.push_back({at(m_theirs.written, index), gone, index});
        return placed();
    }

private:
    Judge::Subject subject(const QString& what, const FileKeyframe& key, const char* words) const {
        Judge::Subject subject = m_place;
        subject.what = what;
        subject.frame = frameOf(key);
        subject.words = message(words, plainText(frameOf(key)));
        return subject;
    }

    void mergeOne(const FileKeyframe& base, int ours, int theirs) {
        if (ours != gone && theirs != gone)
            m_merged.push_back({withBoth(base, ours, theirs), ours, theirs});
        else if (ours != gone && chooseGone(base, ours, theirs) == Side::Ours)
            m_merged.push_back({at(m_ours.written, ours), ours, gone});
        else if (theirs != gone && chooseGone(base, ours, theirs) == Side::Theirs)
            m_merged.push_back({at(m_theirs.written, theirs), gone, theirs});
    }

    /// One side has deleted it; the other may have left it alone.
    Side chooseGone(const FileKeyframe& base, int ours, int theirs) {
        const FileKeyframe& rest = ours == gone ? at(m_theirs.normal, theirs) : at(m_ours.normal, ours);
        const Side deleter = ours == gone ? Side::Ours : Side::Theirs;
        if (rest.time == base.time && isAlike(rest, base))
            return deleter;
        const bool isMoved = rest.time != base.time && isAlike(rest, base);
        const Judge::Deed edited{isMoved ? "moved" : "edited", isMoved ? plainText(frameOf(rest)) : QString()};
        const Judge::Deed deleted{"deleted", {}};
        const bool isOurs = deleter == Side::Ours;
        return m_judge.settle(
            subject("keyframe", base, "the keyframe at %1"),
            {keyframeText(base), isOurs ? QVariant() : keyframeText(rest), isOurs ? keyframeText(rest) : QVariant()},
            isOurs ? deleted : edited, isOurs ? edited : deleted);
    }

    FileKeyframe withBoth(const FileKeyframe& base, int oursIndex, int theirsIndex) {
        const FileKeyframe& ours = at(m_ours.normal, oursIndex);
        const FileKeyframe& theirs = at(m_theirs.normal, theirsIndex);
        Judge::Subject time = subject("time", base, "the keyframe at %1");
        time.verb = "moved";
        const Side sideOfTime = m_judge.choose(time, {frameOf(base), frameOf(ours), frameOf(theirs)});
        const Side sideOfValue = m_judge.choose(subject("value", base, "the value of the keyframe at %1"),
                                                {base.value.text, ours.value.text, theirs.value.text});
        const Side sideOfCurve =
            m_judge.choose(subject("interpolation", base, "the interpolation of the keyframe at %1"),
                           {curveText(base.interpolationData), curveText(ours.interpolationData),
                            curveText(theirs.interpolationData)});
        const auto from = [&](Side side) -> const FileKeyframe& {
            return side == Side::Ours ? at(m_ours.written, oursIndex) : at(m_theirs.written, theirsIndex);
        };
        FileKeyframe key = from(sideOfCurve);
        key.time = from(sideOfTime).time;
        key.value.text = from(sideOfValue).value.text;
        return key;
    }

    // --- one keyframe to a time --------------------------------------------------------------------------------------

    bool isWhereOursIs(const Merged& merged) const {
        return merged.ours != gone && merged.key.time == at(m_ours.normal, merged.ours).time;
    }

    /// First those that are where ours has them, of which no two meet; then the others, as far as there is room.
    FileKeyframes placed() {
        const auto arriving = std::stable_partition(m_merged.begin(), m_merged.end(),
                                                    [this](const Merged& merged) { return isWhereOursIs(merged); });
        for (auto each = m_merged.begin(); each != arriving; ++each)
            m_places.emplace(each->key.time, &*each);
        for (auto each = arriving; each != m_merged.end(); ++each)
            place(&*each);
        FileKeyframes keys;
        keys.reserve(m_places.size());
        for (const auto& [time, merged] : m_places)
            keys.push_back(merged->key);
        return keys;
    }

    /// What finds no room goes back to where ours has it, where another one has to make room for it.
    void place(Merged* arriving) {
        while (arriving) {
            const auto [there, isFree] = m_places.emplace(arriving->key.time, arriving);
            if (isFree)
                return;
            Merged*& holder = there->second;
            if (isWhereOursIs(*arriving))
                std::swap(holder, arriving);
            if (chooseHolder(*holder, *arriving) == Side::Theirs) {
                holder = arriving;
                return;
            }
            arriving = backWhereOursIs(arriving);
        }
    }

    Merged* backWhereOursIs(Merged* merged) const {
        if (merged->ours == gone)
            return nullptr;
        merged->key.time = at(m_ours.normal, merged->ours).time;
        return merged;
    }

    /// Both sides may have added the same keyframe.
    Side chooseHolder(const Merged& holder, const Merged& arriving) {
        if (arriving.ours == gone && isAlike(normal(holder), normal(arriving)))
            return Side::Ours;
        const QString ours = keyframeText(normal(holder));
        const QString theirs = keyframeText(normal(arriving));
        const QString frame = plainText(frameOf(arriving.key));
        return m_judge.settle(subject("keyframe", arriving.key, "%1"), {QVariant(), ours, theirs},
                              message("two keyframes arrive at %1: %2 here and %3 there", frame, ours, theirs));
    }

    const FileKeyframe& normal(const Merged& merged) const {
        return merged.ours == gone ? at(m_theirs.normal, merged.theirs) : at(m_ours.normal, merged.ours);
    }

    const FileKeyframes& m_base;
    const MergedSide& m_ours;
    const MergedSide& m_theirs;
    Judge& m_judge;
    const Judge::Subject& m_place;
    std::vector<Merged> m_merged;
    std::map<Prm::Time, Merged*> m_places;
};

} // namespace

FileKeyframes mergeKeyframes(const FileKeyframes& base, const MergedSide& ours, const MergedSide& theirs, Judge& judge,
                             const Judge::Subject& place) {
    return KeyframeMerge(base, ours, theirs, judge, place).merged();
}

} // namespace Tool
