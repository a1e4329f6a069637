#include "tool/merge/ProjectMerge.h"

#include "tool/Progress.h"
#include "tool/Project.h"
#include "tool/Table.h"
#include "tool/edit/Upgrading.h"
#include "tool/merge/MergedLines.h"
#include "tool/merge/ParameterMerge.h"
#include "tool/merge/Renames.h"

#include <QDateTime>

#include <algorithm>
#include <array>

namespace Tool {

namespace {

/// One of the three texts.
struct MergedText {
    explicit MergedText(const QByteArray& bytes) : text(bytes), kinds(text) {}

    ProjectText text;
    Kinds kinds;
};

class ProjectMerge {
public:
    ProjectMerge(const std::array<QByteArray, 3>& texts, Judge& judge)
        : m_base(texts[Base]), m_ours(texts[Ours]), m_theirs(texts[Theirs]), m_judge(judge),
          m_lines(m_ours.text, m_theirs.text) {}

    QByteArray merged() {
        mergeHeader();
        const std::vector<int> baseInOurs = m_base.text.counterpartsIn(m_ours.text);
        const std::vector<int> baseInTheirs = m_base.text.counterpartsIn(m_theirs.text);
        Progress progress("merging", baseInOurs.size());
        for (int node = 1; node < m_base.text.nodeCount(); ++node) {
            progress.step();
            mergeNode({node, baseInOurs[static_cast<std::size_t>(node)], baseInTheirs[static_cast<std::size_t>(node)]});
        }
        const std::vector<int> theirsInBase = m_theirs.text.counterpartsIn(m_base.text);
        const std::vector<int> theirsInOurs = m_theirs.text.counterpartsIn(m_ours.text);
        for (int node = 1; node < m_theirs.text.nodeCount(); ++node) {
            const auto place = static_cast<std::size_t>(node);
            if (theirsInBase[place] == none)
                mergeNode({none, theirsInOurs[place], node});
            m_lines.pairNodes(theirsInOurs[place], node);
        }
        mergeUnknown({unknownLines(m_base.text), unknownLines(m_ours.text), unknownLines(m_theirs.text)}, {});
        return m_lines.merged();
    }

private:
    const MergedText& text(Which which) const { return which == Base ? m_base : which == Ours ? m_ours : m_theirs; }
    MergedText& text(Which which) { return which == Base ? m_base : which == Ours ? m_ours : m_theirs; }

    bool isParameter(const Trio& trio, Which which) const {
        return trio[which] != none && text(which).text.node(trio[which]).isParameter();
    }

    // --- the header and lines that belong to nothing -----------------------------------------------------------------

    static int lineOfTime(const ProjectText& text) {
        constexpr std::string_view start = "FileTimestamp.value=";
        for (int i = 0; i < text.lineCount() && text.key(i) == Key::Header; ++i) {
            if (text.line(i).compare(0, start.size(), start) == 0)
                return i;
        }
        return none;
    }

    static QDateTime timeOfWriting(const ProjectText& text, int line) {
        const QString time = toText(textAfterEquals(text.line(line))).remove('"').trimmed();
        return QDateTime::fromString(time, Qt::ISODate);
    }

    /// The header of ours, with the later time.
    void mergeHeader() {
        const int ours = lineOfTime(m_ours.text);
        const int theirs = lineOfTime(m_theirs.text);
        if (ours != none && theirs != none && timeOfWriting(m_theirs.text, theirs) > timeOfWriting(m_ours.text, ours))
            m_lines.replace(ours, theirs);
    }

    static std::vector<int> unknownLines(const ProjectText& text) {
        std::vector<int> lines;
        for (int i = 0; i < text.lineCount(); ++i) {
            if (text.key(i) == Key::None && !text.line(i).empty())
                lines.push_back(i);
        }
        return lines;
    }

    void mergeUnknown(const std::array<std::vector<int>, 3>& lines, const QString& path) {
        const auto bytes = [this](Which which, int line) {
            return line == none ? QVariant() : QVariant(toBytes(text(which).text.line(line)));
        };
        for (const NamedLine& each : sameLines(m_base.text, m_ours.text, m_theirs.text, lines)) {
            const auto& [base, ours, theirs] = each.lines;
            const QString name = path.isEmpty() ? toText(each.name) : path;
            const Judge::Subject subject{name, {}, "line", {}, "the line"};
            const Side side = m_judge.choose(subject, {bytes(Base, base), bytes(Ours, ours), bytes(Theirs, theirs)});
            if (side == Side::Theirs)
                m_lines.take(ours, theirs);
            m_lines.pairLines(ours, theirs);
        }
    }

    // --- groups and parameters ---------------------------------------------------------------------------------------

    void mergeNode(const Trio& trio) {
        mergeName(trio);
        const bool isBase = isParameter(trio, Base);
        const bool isOurs = isParameter(trio, Ours);
        const bool isTheirs = isParameter(trio, Theirs);
        if (isOurs && isTheirs)
            mergeParameter({isBase ? trio[Base] : none, trio[Ours], trio[Theirs]});
        else if (isBase && isOurs && chooseGone(trio, Ours) == Side::Theirs)
            m_lines.drop(m_ours.text.node(trio[Ours]).lines);
        else if (isTheirs && (!isBase || chooseGone(trio, Theirs) == Side::Theirs))
            m_lines.insert(m_theirs.text.node(trio[Theirs]).lines);
    }

    void mergeName(const Trio& trio) {
        const auto lineIn = [&](Which which) {
            return trio[which] == none ? none : text(which).text.node(trio[which]).nameLine;
        };
        const auto nameIn = [&](Which which) {
            return trio[which] == none ? QVariant() : orNull(text(which).text.groupName(trio[which]));
        };
        if (lineIn(Ours) == none && lineIn(Theirs) == none)
            return;
        const Judge::Subject subject{pathOf(trio), {}, "name", {}, "the name"};
        if (m_judge.choose(subject, {nameIn(Base), nameIn(Ours), nameIn(Theirs)}) == Side::Theirs)
            m_lines.take(lineIn(Ours), lineIn(Theirs));
    }

    QString pathOf(const Trio& trio) const {
        const Which which = trio[Ours] != none ? Ours : trio[Theirs] != none ? Theirs : Base;
        return text(which).text.path(trio[which]);
    }

    /// One side has deleted the parameter; the other may have left it alone.
    Side chooseGone(const Trio& trio, Which rest) {
        const bool isDeletedHere = rest == Theirs;
        if (saySame(trio, Base, rest))
            return isDeletedHere ? Side::Ours : Side::Theirs;
        const Judge::Subject subject{pathOf(trio), {}, "parameter", {}, "the parameter"};
        const Judge::Deed deleted{"deleted", {}};
        const Judge::Deed edited{"edited", {}};
        return m_judge.settle(subject, {}, isDeletedHere ? deleted : edited, isDeletedHere ? edited : deleted);
    }

    /// Most parameters of a large project are left alone: their lines are the same, and then mean the same.
    bool haveSameLines(const Trio& trio, Which a, Which b) const {
        if (trio[a] == none || trio[b] == none)
            return false;
        const auto& lines = text(a).text.node(trio[a]).lines;
        const auto& others = text(b).text.node(trio[b]).lines;
        return std::equal(lines.begin(), lines.end(), others.begin(), others.end(),
                          [&](int one, int other) { return text(a).text.line(one) == text(b).text.line(other); });
    }

    bool saySame(const Trio& trio, Which a, Which b) {
        if (haveSameLines(trio, a, b))
            return true;
        const FileParameter one = text(a).kinds.read(trio[a]);
        const FileParameter other = text(b).kinds.read(trio[b]);
        const Kind kind = commonKind(one.kind(), other.kind());
        return one.normalisedViews(kind) == other.normalisedViews(kind) && one.before() == other.before() &&
               one.after() == other.after() && one.isHidden() == other.isHidden() && one.master() == other.master() &&
               one.refused().empty() && other.refused().empty();
    }

    // --- one parameter -----------------------------------------------------------------------------------------------

    FileParameter read(const Trio& trio, Which which) {
        return trio[which] == none ? FileParameter({}, text(which).text.version())
                                   : text(which).kinds.read(trio[which]);
    }

    void mergeParameter(const Trio& trio) {
        if (haveSameLines(trio, Ours, Theirs) || haveSameLines(trio, Base, Theirs))
            return;
        if (haveSameLines(trio, Base, Ours)) {
            m_lines.drop(m_ours.text.node(trio[Ours]).lines);
            m_lines.insert(m_theirs.text.node(trio[Theirs]).lines);
            return;
        }
        std::array<FileParameter, 3> all{read(trio, Base), read(trio, Ours), read(trio, Theirs)};
        const bool isUtf8 = std::all_of(all.begin(), all.end(), [](const auto& each) { return each.isUtf8(); });
        Kind kind = commonKind(all[Ours].kind(), all[Theirs].kind());
        if (trio[Base] != none)
            kind = commonKind(kind, all[Base].kind());
        const auto ready = [&](Which which) {
            if (!isUtf8 && trio[which] != none)
                all[which] = FileParameter(text(which).text, trio[which], isUtf8);
            FileViews written = all[which].views();
            FileViews normal = all[which].normalisedViews(kind);
            return MergedParameter{std::move(all[which]), std::move(written), std::move(normal)};
        };
        const MergedParameter base = ready(Base);
        const MergedParameter ours = ready(Ours);
        const MergedParameter theirs = ready(Theirs);
        mergeData(base, ours, theirs);
        mergeSettings(trio, base.parameter, ours.parameter, theirs.parameter);
        mergeUnknown({base.parameter.refused(), ours.parameter.refused(), theirs.parameter.refused()},
                     ours.parameter.path());
    }

    void mergeData(const MergedParameter& base, const MergedParameter& ours, const MergedParameter& theirs) {
        const FileViews merged = mergeViews(base, ours, theirs, m_judge);
        if (merged == ours.written)
            return;
        OtherLines others;
        for (const auto& [view, data] : theirs.written) {
            for (const FileKeyframe& key : data.keys)
                others[theirLine(key.value.line)] = {key, entryWithoutView(m_theirs.text, key.value.line)};
        }
        try {
            setViews(ours.parameter.data(), merged);
            m_lines.change(changedLines(m_ours.text, ours.written, ours.parameter, m_ours.text.version(), others));
        } catch (const Problem&) {
            const Judge::Subject subject{ours.parameter.path(), {}, "keyframe", {}, {}};
            m_judge.settle(subject, {}, "project text cannot hold the keyframes of both, times have six digits");
        }
    }

    void mergeSettings(const Trio& trio, const FileParameter& base, const FileParameter& ours,
                       const FileParameter& theirs) {
        const auto merge = [&](Key key, const char* what, const char* words, const auto& valueOf) {
            const Judge::Subject subject{ours.path(), {}, what, {}, words};
            const QVariant former = trio[Base] == none ? QVariant() : valueOf(base);
            if (m_judge.choose(subject, {former, valueOf(ours), valueOf(theirs)}) == Side::Theirs)
                takeSetting(trio, key);
        };
        using Parameter = const FileParameter&;
        merge(Key::Before, "before", "the extrapolation before",
              [](Parameter each) { return QVariant(each.before()); });
        merge(Key::After, "after", "the extrapolation after", [](Parameter each) { return QVariant(each.after()); });
        merge(Key::Hidden, "hidden", "the setting hidden", [](Parameter each) { return QVariant(each.isHidden()); });
        merge(Key::Master, "master", "the master", [](Parameter each) { return orNull(each.master()); });
    }

    /// The last line of a setting counts.
    void takeSetting(const Trio& trio, Key key) {
        const auto& ours = m_ours.text.node(trio[Ours]).lines;
        const auto& theirs = m_theirs.text.node(trio[Theirs]).lines;
        for (const int line : ours) {
            if (m_ours.text.key(line) == key)
                m_lines.drop({line});
        }
        const auto last =
            std::find_if(theirs.rbegin(), theirs.rend(), [&](int line) { return m_theirs.text.key(line) == key; });
        if (last != theirs.rend())
            m_lines.insert({*last});
    }

    MergedText m_base;
    MergedText m_ours;
    MergedText m_theirs;
    Judge& m_judge;
    MergedLines m_lines;
};

bool hasViewLists(const ProjectText& text) {
    return text.version().streamVersion >= Prm::StreamVersion::anyViewList;
}

/// Lines mean the same in all three only where all are read alike.
void upgradeUnlessAlike(std::array<QByteArray, 3>& texts) {
    const std::array<ProjectText, 3> read{ProjectText(texts[Base]), ProjectText(texts[Ours]),
                                          ProjectText(texts[Theirs])};
    if (std::none_of(read.begin(), read.end(), hasViewLists))
        return;
    for (const Which which : {Base, Ours, Theirs}) {
        if (!hasViewLists(read[which]))
            texts[which] = bytesWith(read[which], upgradingChanges(read[which], {}));
    }
}

/// In place of a text without lines, so that lines of another one can follow.
QByteArray headerOf(const QByteArray& bytes) {
    const ProjectText text(bytes);
    QByteArray header;
    for (int i = 0; i < text.lineCount() && text.key(i) == Key::Header; ++i)
        header += toBytes(text.raw(i));
    return header.isEmpty() ? QByteArray("\n") : header;
}

} // namespace

Merge merge(const QByteArray& base, const QByteArray& ours, const QByteArray& theirs, const Settlement& settlement) {
    if (ours == theirs || theirs == base)
        return {ours, {}};
    if (ours == base)
        return {theirs, {}};
    Judge judge(settlement);
    std::array<QByteArray, 3> texts{base, ours.isEmpty() ? headerOf(theirs) : ours, theirs};
    upgradeUnlessAlike(texts);
    texts = withSamePaths(ProjectText(texts[Base]), ProjectText(texts[Ours]), ProjectText(texts[Theirs]), judge);
    QByteArray text = ProjectMerge(texts, judge).merged();
    return {std::move(text), judge.takeConflicts()};
}

} // namespace Tool
