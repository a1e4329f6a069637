#include "prm/merge/KeyframeMerge.h"

#include "prm/document/FileParameter.h"
#include "prm/document/KeyframeDiff.h"
#include "prm/document/ValueText.h"

#include <QStringList>

#include <algorithm>
#include <map>
#include <set>

namespace Prm::document {

namespace {

const FileKeyframe& at(const FileKeyframes& keys, int index) {
    return keys[static_cast<std::size_t>(index)];
}

bool isAlike(const FileKeyframe& a, const FileKeyframe& b) {
    return a.value == b.value && curveText(a.interpolationData) == curveText(b.interpolationData);
}

double frameOf(const FileKeyframe& key) {
    return key.time.toDouble();
}

/// Where the keyframes of the base are on a side.
struct Counterparts {
    /// For each of the base, its place or `none`.
    std::vector<int> places;
    std::vector<int> added;
    /// For removed ones, those added between the same neighbours, where these are not as many.
    std::map<int, std::vector<int>> replacements;
};

/// Those between two keyframes that a side has kept.
struct Gap {
    std::vector<int> removed;
    std::vector<int> added;
};

/// By the kept keyframes of the base before and after them.
std::map<std::pair<int, int>, Gap> gapsOf(const Counterparts& side, std::size_t sideSize) {
    std::map<std::pair<int, int>, Gap> gaps;
    const auto fill = [&gaps](const std::vector<int>& keptOf, std::vector<int> Gap::*list) {
        const int size = static_cast<int>(keptOf.size());
        for (int start = 0, before = none; start < size; ++start) {
            const int first = start;
            while (start < size && keptOf[static_cast<std::size_t>(start)] == none)
                ++start;
            const int after = start < size ? keptOf[static_cast<std::size_t>(start)] : size;
            for (int i = first; i < start; ++i)
                (gaps[{before, start < size ? after : none}].*list).push_back(i);
            before = after;
        }
    };
    std::vector<int> ofBase(side.places.size(), none);
    std::vector<int> ofSide(sideSize, none);
    for (std::size_t i = 0; i < side.places.size(); ++i) {
        if (side.places[i] == none)
            continue;
        ofBase[i] = static_cast<int>(i);
        ofSide[static_cast<std::size_t>(side.places[i])] = static_cast<int>(i);
    }
    fill(ofBase, &Gap::removed);
    fill(ofSide, &Gap::added);
    return gaps;
}

/// What has moved and changed was not paired by its time, nor by what it is.
void pairWithinGaps(Counterparts& side, std::size_t sideSize) {
    side.added.clear();
    for (const auto& [neighbours, gap] : gapsOf(side, sideSize)) {
        const bool isPaired = gap.removed.size() == gap.added.size();
        for (std::size_t i = 0; i < gap.removed.size(); ++i) {
            if (isPaired)
                side.places[static_cast<std::size_t>(gap.removed[i])] = gap.added[i];
            else if (!gap.added.empty())
                side.replacements[gap.removed[i]] = gap.added;
        }
        if (!isPaired)
            side.added.insert(side.added.end(), gap.added.begin(), gap.added.end());
    }
    std::sort(side.added.begin(), side.added.end());
}

Counterparts counterpartsOf(const FileKeyframes& base, const FileKeyframes& side) {
    constexpr int unchanged = -2;
    const KeyframeDiff diff = compareKeyframes(base, side);
    Counterparts counterparts{std::vector<int>(base.size(), unchanged), {}, {}};
    for (const auto* const pairs : {&diff.moved, &diff.changed}) {
        for (const auto& [before, after] : *pairs)
            counterparts.places[static_cast<std::size_t>(before)] = after;
    }
    for (const int before : diff.removed)
        counterparts.places[static_cast<std::size_t>(before)] = none;
    int next = 0;
    for (std::size_t i = 0; i < base.size(); ++i) {
        if (counterparts.places[i] != unchanged)
            continue;
        while (at(side, next).time != base[i].time)
            ++next;
        counterparts.places[i] = next;
    }
    pairWithinGaps(counterparts, side.size());
    return counterparts;
}

/// A keyframe of the result.
struct Merged {
    FileKeyframe key;
    /// Where it comes from, `none` where the side has none.
    int ours = none;
    int theirs = none;
};

class KeyframeMerge {
public:
    KeyframeMerge(const FileKeyframes& base, const MergedSide& ours, const MergedSide& theirs, Resolver& resolver,
                  const Resolver::Subject& place)
        : m_base(base), m_ours(ours), m_theirs(theirs), m_resolver(resolver), m_place(place),
          m_kept(resolver.kept(place.path)), m_other(m_kept == Side::Ours ? Side::Theirs : Side::Ours) {}

    FileKeyframes merged(TimeLines& timeLines) {
        const Counterparts ours = counterpartsOf(m_base, m_ours.normal);
        const Counterparts theirs = counterpartsOf(m_base, m_theirs.normal);
        chooseReplacements(ours, theirs);
        for (std::size_t i = 0; i < m_base.size(); ++i)
            mergeOne(m_base[i], ours.places[i], theirs.places[i]);
        for (const int index : ours.added) {
            if (m_leftOut.count({Side::Ours, index}) == 0)
                m_merged.push_back({at(m_ours.written, index), index, none});
        }
        for (const int index : theirs.added) {
            if (m_leftOut.count({Side::Theirs, index}) == 0)
                m_merged.push_back({at(m_theirs.written, index), none, index});
        }
        return placed(timeLines);
    }

private:
    Resolver::Subject subject(const QString& what, const FileKeyframe& key, const char* words) const {
        Resolver::Subject subject = m_place;
        subject.what = what;
        subject.frame = frameOf(key);
        subject.words = message(words, frameText(frameOf(key)));
        return subject;
    }

    void mergeOne(const FileKeyframe& base, int ours, int theirs) {
        if (ours != none && theirs != none)
            m_merged.push_back({withBoth(base, ours, theirs), ours, theirs});
        else if (ours != none && chooseDeletion(base, ours, theirs) == Side::Ours)
            m_merged.push_back({at(m_ours.written, ours), ours, none});
        else if (theirs != none && chooseDeletion(base, ours, theirs) == Side::Theirs)
            m_merged.push_back({at(m_theirs.written, theirs), none, theirs});
    }

    /// One side has deleted it; the other may have left it alone.
    Side chooseDeletion(const FileKeyframe& base, int ours, int theirs) {
        const FileKeyframe& rest = ours == none ? at(m_theirs.normal, theirs) : at(m_ours.normal, ours);
        const bool isMoved = rest.time != base.time;
        const bool isChanged = !isAlike(rest, base);
        const Resolver::Change edit = isMoved && !isChanged ? Resolver::Change{"moved", frameText(frameOf(rest))}
                                                            : Resolver::Change{"edited", {}};
        const auto text = [](const FileKeyframes& keys, int index) {
            return index == none ? QVariant() : QVariant(keyframeText(at(keys, index)));
        };
        return m_resolver.chooseDeletion(subject("keyframe", base, "the keyframe at %1"),
                                         {keyframeText(base), text(m_ours.normal, ours), text(m_theirs.normal, theirs)},
                                         isMoved || isChanged, edit);
    }

    static QString textOf(const FileKeyframes& keys, const std::vector<int>& places) {
        QStringList texts;
        for (const int place : places)
            texts.append(message("%1 at %2", keyframeText(at(keys, place)), frameText(frameOf(at(keys, place)))));
        return texts.join(", ");
    }

    /// Where both sides have put other keyframes in place of the same one, those of one side are left out.
    void chooseReplacements(const Counterparts& ours, const Counterparts& theirs) {
        std::set<std::pair<std::vector<int>, std::vector<int>>> chosen;
        for (const auto& [base, here] : ours.replacements) {
            const auto found = theirs.replacements.find(base);
            if (found == theirs.replacements.end() || !chosen.insert({here, found->second}).second)
                continue;
            const std::vector<int>& there = found->second;
            const FileKeyframe& key = at(m_base, base);
            const QString oursText = textOf(m_ours.normal, here);
            const QString theirsText = textOf(m_theirs.normal, there);
            if (oursText == theirsText)
                continue;
            const Side side = m_resolver.settle(
                subject("keyframe", key, "the keyframe at %1"), {keyframeText(key), oursText, theirsText},
                Resolver::Change{"replaced by " + oursText, {}}, Resolver::Change{"by " + theirsText, {}});
            for (const int index : side == Side::Ours ? there : here)
                m_leftOut.insert({side == Side::Ours ? Side::Theirs : Side::Ours, index});
        }
    }

    FileKeyframe withBoth(const FileKeyframe& base, int oursIndex, int theirsIndex) {
        const FileKeyframe& ours = at(m_ours.normal, oursIndex);
        const FileKeyframe& theirs = at(m_theirs.normal, theirsIndex);
        Resolver::Subject time = subject("time", base, "the keyframe at %1");
        time.verb = "moved";
        const Side sideOfTime = m_resolver.choose(time, {frameOf(base), frameOf(ours), frameOf(theirs)});
        const Side sideOfValue = m_resolver.choose(subject("value", base, "the value of the keyframe at %1"),
                                                   {base.value.text, ours.value.text, theirs.value.text});
        const Side sideOfCurve =
            m_resolver.choose(subject("interpolation", base, "the interpolation of the keyframe at %1"),
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

    static int placeOn(Side side, const Merged& merged) { return side == Side::Ours ? merged.ours : merged.theirs; }

    /// As the side has it.
    const FileKeyframe& normal(Side side, const Merged& merged) const {
        return side == Side::Ours ? at(m_ours.normal, merged.ours) : at(m_theirs.normal, merged.theirs);
    }
    const FileKeyframe& normal(const Merged& merged) const {
        return normal(merged.ours == none ? Side::Theirs : Side::Ours, merged);
    }
    bool isWhere(Side side, const Merged& merged) const {
        return placeOn(side, merged) != none && merged.key.time == normal(side, merged).time;
    }

    /// First those that are where the kept side has them, of which no two meet; then the others, as far as there is
    /// room.
    FileKeyframes placed(TimeLines& timeLines) {
        const auto arriving = std::stable_partition(m_merged.begin(), m_merged.end(),
                                                    [this](const Merged& merged) { return isWhere(m_kept, merged); });
        for (auto each = m_merged.begin(); each != arriving; ++each)
            m_places.emplace(each->key.time, &*each);
        for (auto each = arriving; each != m_merged.end(); ++each)
            place(&*each);
        FileKeyframes keys;
        keys.reserve(m_places.size());
        for (const auto& [time, merged] : m_places) {
            keys.push_back(merged->key);
            const int line = isWhere(Side::Ours, *merged) ? at(m_ours.written, merged->ours).value.line
                                                          : at(m_theirs.written, merged->theirs).value.line;
            if (line != merged->key.value.line)
                timeLines[merged->key.value.line] = line;
        }
        return keys;
    }

    /// What finds no room goes back to where the kept side has it, where another one has to make room for it.
    void place(Merged* arriving) {
        while (arriving) {
            const auto [there, isFree] = m_places.emplace(arriving->key.time, arriving);
            if (isFree)
                return;
            Merged*& holder = there->second;
            if (isWhere(m_kept, *arriving))
                std::swap(holder, arriving);
            if (areSame(*holder, *arriving))
                return;
            tellMeeting(*holder, *arriving);
            arriving = back(arriving);
        }
    }

    Merged* back(Merged* merged) const {
        if (placeOn(m_kept, *merged) == none)
            return nullptr;
        merged->key.time = normal(m_kept, *merged).time;
        return merged;
    }

    /// Whether both sides have the same keyframe there, which on one side may be another one that has only moved.
    bool areSame(const Merged& holder, const Merged& arriving) const {
        if (!isWhere(m_kept, holder) || !isWhere(m_other, arriving))
            return false;
        const FileKeyframe& other = normal(m_other, arriving);
        return isAlike(normal(m_kept, holder), other) &&
               (placeOn(m_kept, arriving) == none || isAlike(normal(m_kept, arriving), other));
    }

    void tellMeeting(const Merged& holder, const Merged& arriving) {
        const bool isOursThere = m_kept == Side::Ours;
        const QString ours = keyframeText(normal(isOursThere ? holder : arriving));
        const QString theirs = keyframeText(normal(isOursThere ? arriving : holder));
        const QString frame = frameText(frameOf(arriving.key));
        m_resolver.settle(subject("keyframe", arriving.key, "%1"), {QVariant(), ours, theirs},
                          message("two keyframes arrive at %1: %2 here and %3 there", frame, ours, theirs));
    }

    const FileKeyframes& m_base;
    const MergedSide& m_ours;
    const MergedSide& m_theirs;
    Resolver& m_resolver;
    const Resolver::Subject& m_place;
    const Side m_kept;
    const Side m_other;
    std::vector<Merged> m_merged;
    /// Of those added.
    std::set<std::pair<Side, int>> m_leftOut;
    std::map<Time, Merged*> m_places;
};

} // namespace

FileKeyframes mergeKeyframes(const FileKeyframes& base, const MergedSide& ours, const MergedSide& theirs,
                             Resolver& resolver, const Resolver::Subject& place, TimeLines& timeLines) {
    return KeyframeMerge(base, ours, theirs, resolver, place).merged(timeLines);
}

} // namespace Prm::document
