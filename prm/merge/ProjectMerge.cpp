#include "prm/ProjectMerge.h"

#include "prm/document/ConflictMarkers.h"
#include "prm/document/Document.h"
#include "prm/document/Progress.h"
#include "prm/document/Upgrading.h"
#include "prm/document/ValueText.h"
#include "prm/merge/MasterMerge.h"
#include "prm/merge/MergedLines.h"
#include "prm/merge/ParameterMerge.h"
#include "prm/merge/Renames.h"

#include <QDateTime>

#include <algorithm>
#include <array>

namespace Prm::document {

namespace {

class ProjectMerge {
public:
    ProjectMerge(const std::array<QByteArray, 3>& texts, Resolver& resolver)
        : m_base(ProjectText(texts[Base])), m_ours(ProjectText(texts[Ours])), m_theirs(ProjectText(texts[Theirs])),
          m_resolver(resolver), m_lines(m_ours.text, m_theirs.text) {}

    QByteArray merged() {
        mergeHeader();
        m_earlierNames = earlierNames(m_ours.text);
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
        mergeMasters();
        mergeUnknown({unknownLines(m_base.text), unknownLines(m_ours.text), unknownLines(m_theirs.text)}, {});
        return m_lines.merged();
    }

private:
    const Document& text(Revision revision) const {
        return revision == Base ? m_base : revision == Ours ? m_ours : m_theirs;
    }
    Document& text(Revision revision) { return revision == Base ? m_base : revision == Ours ? m_ours : m_theirs; }

    bool isParameter(const Trio& trio, Revision revision) const {
        return trio[revision] != none && text(revision).text.node(trio[revision]).isParameter();
    }

    // --- the header and lines that belong to nothing -----------------------------------------------------------------

    static int lineOfTime(const ProjectText& text) {
        constexpr std::string_view start = "FileTimestamp.value=";
        for (int i = 0; i < text.lineCount(); ++i) {
            if (text.key(i) == Key::Header && text.line(i).compare(0, start.size(), start) == 0)
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
        const auto bytes = [this](Revision revision, int line) {
            return line == none ? QVariant() : QVariant(toBytes(text(revision).text.line(line)));
        };
        for (const NamedLine& each : sameLines(m_base.text, m_ours.text, m_theirs.text, lines)) {
            const auto& [base, ours, theirs] = each.lines;
            const QString name = path.isEmpty() ? toText(each.name) : path;
            const Resolver::Subject subject{name, {}, "line", {}, "the line"};
            const Side side = m_resolver.choose(subject, {bytes(Base, base), bytes(Ours, ours), bytes(Theirs, theirs)});
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
        else if (isBase && isOurs && chooseDeletion(trio, Ours) == Side::Theirs)
            dropOurs(trio[Ours]);
        else if (isTheirs && (!isBase || chooseDeletion(trio, Theirs) == Side::Theirs))
            m_lines.insert(m_theirs.text.node(trio[Theirs]).lines);
        else if (isTheirs)
            m_masters.deletedTheirs.insert(trio[Theirs]);
    }

    void dropOurs(int node) {
        m_lines.drop(m_ours.text.node(node).lines);
        m_masters.deletedOurs.insert(node);
    }

    /// The bytes where a text would lose some.
    static QVariant shown(std::string_view bytes) {
        const QString text = toText(bytes);
        return toView(text.toUtf8()) == bytes ? QVariant(text) : QVariant(toBytes(bytes));
    }

    void mergeName(const Trio& trio) {
        const auto lineIn = [&](Revision revision) {
            return trio[revision] == none ? none : text(revision).text.node(trio[revision]).nameLine;
        };
        const auto nameIn = [&](Revision revision) {
            return lineIn(revision) == none ? QVariant()
                                            : shown(textAfterEquals(text(revision).text.line(lineIn(revision))));
        };
        if (lineIn(Ours) == none && lineIn(Theirs) == none)
            return;
        const Resolver::Subject subject{pathOf(trio), {}, "name", {}, "the name"};
        if (m_resolver.choose(subject, {nameIn(Base), nameIn(Ours), nameIn(Theirs)}) == Side::Theirs) {
            m_lines.drop(m_earlierNames[trio[Ours]]);
            m_lines.take(lineIn(Ours), lineIn(Theirs));
        }
    }

    /// Of groups that are named again, by their nodes.
    static std::map<int, std::vector<int>> earlierNames(const ProjectText& text) {
        std::map<int, std::vector<int>> lines;
        for (int i = 0; i < text.lineCount(); ++i) {
            const int node = text.key(i) == Key::Name ? text.findNode(text.reading(i).path) : none;
            if (node != none && text.node(node).nameLine != i)
                lines[node].push_back(i);
        }
        return lines;
    }

    QString pathOf(const Trio& trio) const {
        const Revision revision = trio[Ours] != none ? Ours : trio[Theirs] != none ? Theirs : Base;
        return text(revision).text.path(trio[revision]);
    }

    QVariant contentIn(const Trio& trio, Revision revision) {
        if (!isParameter(trio, revision))
            return {};
        const FileParameter parameter = read(trio, revision);
        return contentOf(parameter.normalisedViews(parameter.kind()));
    }

    /// One side has deleted the parameter; the other may have left it alone.
    Side chooseDeletion(const Trio& trio, Revision rest) {
        const bool isEdited = !saySame(trio, Base, rest);
        const Resolver::Subject subject{pathOf(trio), {}, "parameter", {}, "the parameter"};
        // Texts are only made for conflicts.
        const QVariant restContent = isEdited ? contentIn(trio, rest) : QVariant("");
        return m_resolver.chooseDeletion(subject,
                                         {isEdited ? contentIn(trio, Base) : QVariant(""),
                                          rest == Ours ? restContent : QVariant(),
                                          rest == Theirs ? restContent : QVariant()},
                                         isEdited);
    }

    /// Most parameters of a large project are left alone: their lines are the same, and then mean the same.
    bool haveSameLines(const Trio& trio, Revision a, Revision b) const {
        if (trio[a] == none || trio[b] == none)
            return false;
        const auto& lines = text(a).text.node(trio[a]).lines;
        const auto& others = text(b).text.node(trio[b]).lines;
        return std::equal(lines.begin(), lines.end(), others.begin(), others.end(),
                          [&](int one, int other) { return text(a).text.line(one) == text(b).text.line(other); });
    }

    bool saySame(const Trio& trio, Revision a, Revision b) {
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

    FileParameter read(const Trio& trio, Revision revision) {
        return trio[revision] == none ? FileParameter({}, text(revision).text.version())
                                      : text(revision).kinds.read(trio[revision]);
    }

    void mergeParameter(const Trio& trio) {
        if (haveSameLines(trio, Ours, Theirs) || haveSameLines(trio, Base, Theirs))
            return;
        if (haveSameLines(trio, Base, Ours)) {
            m_lines.drop(m_ours.text.node(trio[Ours]).lines);
            m_lines.insert(m_theirs.text.node(trio[Theirs]).lines);
            m_masters.sides[{trio[Ours], trio[Theirs]}] = Side::Theirs;
            return;
        }
        std::array<FileParameter, 3> all{read(trio, Base), read(trio, Ours), read(trio, Theirs)};
        const bool isUtf8 = std::all_of(all.begin(), all.end(), [](const auto& each) { return each.isUtf8(); });
        Kind kind = commonKind(all[Ours].kind(), all[Theirs].kind());
        if (trio[Base] != none)
            kind = commonKind(kind, all[Base].kind());
        const auto ready = [&](Revision revision) {
            if (!isUtf8 && trio[revision] != none)
                all[revision] = FileParameter(text(revision).text, trio[revision], isUtf8);
            FileViews written = all[revision].views();
            FileViews normal = all[revision].normalisedViews(kind);
            return MergedParameter{std::move(all[revision]), std::move(written), std::move(normal)};
        };
        const MergedParameter base = ready(Base);
        const MergedParameter ours = ready(Ours);
        const MergedParameter theirs = ready(Theirs);
        mergeData(trio, base, ours, theirs);
        mergeSettings(trio, base.parameter, ours.parameter, theirs.parameter);
        mergeUnknown({base.parameter.refused(), ours.parameter.refused(), theirs.parameter.refused()},
                     ours.parameter.path());
    }

    void mergeData(const Trio& trio, const MergedParameter& base, const MergedParameter& ours,
                   const MergedParameter& theirs) {
        TimeLines timeLines;
        const FileViews merged = mergeViews(base, ours, theirs, m_resolver, timeLines);
        if (merged == ours.written)
            return;
        if (merged.empty())
            return takeData(trio, ours, theirs);
        try {
            setViews(ours.parameter.data(), merged);
            m_lines.change(changedLines(m_ours.text, ours.written, ours.parameter, m_ours.text.version(),
                                        otherLines(merged, ours.written, theirs.written, timeLines)));
        } catch (const Problem&) {
            const Resolver::Subject subject{ours.parameter.path(), {}, "keyframe", {}, {}};
            const Side side =
                m_resolver.settle(subject, {contentOf(base.normal), contentOf(ours.normal), contentOf(theirs.normal)},
                                  "project text cannot hold the keyframes of both, times have six digits");
            if (side == Side::Theirs)
                takeData(trio, ours, theirs);
        }
    }

    void takeData(const Trio& trio, const MergedParameter& ours, const MergedParameter& theirs) {
        m_lines.drop(dataLines(m_ours.text, trio[Ours], ours.parameter.refused()));
        m_lines.insert(dataLines(m_theirs.text, trio[Theirs], theirs.parameter.refused()));
    }

    /// Those that the parameter has read.
    static std::vector<int> dataLines(const ProjectText& text, int node, const std::vector<int>& refused) {
        std::vector<int> lines;
        for (const int line : text.node(node).lines) {
            const Key key = text.key(line);
            const bool isData = key == Key::Views || key == Key::Keyframe || key == Key::Value || key == Key::Keyframed;
            if (isData && std::find(refused.begin(), refused.end(), line) == refused.end())
                lines.push_back(line);
        }
        return lines;
    }

    QByteArray entryOf(int line) const {
        return line < FileValue::noLine ? entryWithoutView(m_theirs.text, theirLine(line))
                                        : entryWithoutView(m_ours.text, line);
    }

    /// The keyframes of theirs, and those whose time is written in another line than the rest.
    OtherLines otherLines(const FileViews& merged, const FileViews& ours, const FileViews& theirs,
                          const TimeLines& timeLines) const {
        OtherLines others;
        for (const auto& [view, data] : theirs) {
            for (const FileKeyframe& key : data.keys)
                others[theirLine(key.value.line)] = {key, entryOf(theirLine(key.value.line))};
        }
        for (const auto& [view, data] : ours) {
            for (const FileKeyframe& key : data.keys) {
                if (timeLines.count(key.value.line) > 0)
                    others[key.value.line] = {key, entryOf(key.value.line)};
            }
        }
        for (const auto& [view, data] : merged) {
            for (const FileKeyframe& key : data.keys) {
                const auto timeLine = timeLines.find(key.value.line);
                if (timeLine == timeLines.end())
                    continue;
                KeyframeLine& line = others.at(key.value.line);
                line.key.time = key.time;
                line.entry = withTime(line.entry, entryOf(timeLine->second));
            }
        }
        return others;
    }

    static QByteArray withTime(QByteArray entry, const QByteArray& other) {
        const std::string_view time = keyframeTimeText(toView(entry));
        const auto start = static_cast<int>(time.data() - entry.constData());
        return entry.replace(start, static_cast<int>(time.size()), toBytes(keyframeTimeText(toView(other))));
    }

    void mergeSettings(const Trio& trio, const FileParameter& base, const FileParameter& ours,
                       const FileParameter& theirs) {
        const auto merge = [&](Key key, const char* what, const char* words, const auto& valueOf) {
            const Resolver::Subject subject{ours.path(), {}, what, {}, words};
            const QVariant former = trio[Base] == none ? QVariant() : valueOf(base);
            if (m_resolver.choose(subject, {former, valueOf(ours), valueOf(theirs)}) == Side::Theirs)
                takeSetting(trio, key);
        };
        using Parameter = const FileParameter&;
        merge(Key::Before, "before", "the extrapolation before",
              [](Parameter each) { return QVariant(each.before()); });
        merge(Key::After, "after", "the extrapolation after", [](Parameter each) { return QVariant(each.after()); });
        merge(Key::Hidden, "hidden", "the setting hidden", [](Parameter each) { return QVariant(each.isHidden()); });
        merge(Key::Master, "master", "the master", [](Parameter each) { return orNull(each.master()); });
    }

    /// After all parameters, as each may be the master of any other.
    void mergeMasters() {
        const MergedMasters before = m_masters;
        m_masters = withoutBrokenMasters(m_base.text, m_ours.text, m_theirs.text, std::move(m_masters), m_resolver);
        for (const int node : before.deletedOurs) {
            if (m_masters.deletedOurs.count(node) == 0)
                m_lines.restore(m_ours.text.node(node).lines, {});
        }
        for (const int node : before.deletedTheirs) {
            if (m_masters.deletedTheirs.count(node) == 0)
                m_lines.insert(m_theirs.text.node(node).lines);
        }
        for (const auto& [place, side] : m_masters.sides) {
            const auto former = before.sides.find(place);
            if (former == before.sides.end() || former->second != side)
                setMaster(place, side);
        }
    }

    void setMaster(const MergedNode& place, Side side) {
        const auto lines = [](const ProjectText& text, int node) {
            return node == none ? std::vector<int>() : linesOf(text, node, Key::Master);
        };
        const std::vector<int> ours = lines(m_ours.text, place.first);
        const std::vector<int> theirs = lines(m_theirs.text, place.second);
        m_lines.restore(ours, theirs);
        if (side == Side::Theirs) {
            m_lines.drop(ours);
            m_lines.insert(theirs);
        }
    }

    /// The last line of a setting counts.
    void takeSetting(const Trio& trio, Key key) {
        const std::vector<int> theirs = linesOf(m_theirs.text, trio[Theirs], key);
        m_lines.drop(linesOf(m_ours.text, trio[Ours], key));
        if (!theirs.empty())
            m_lines.insert({theirs.back()});
        if (key == Key::Master)
            m_masters.sides[{trio[Ours], trio[Theirs]}] = Side::Theirs;
    }

    Document m_base;
    Document m_ours;
    Document m_theirs;
    Resolver& m_resolver;
    MergedLines m_lines;
    MergedMasters m_masters;
    std::map<int, std::vector<int>> m_earlierNames;
};

bool hasViewLists(const ProjectText& text) {
    return text.version().streamVersion >= StreamVersion::anyViewList;
}

/// Lines mean the same in all three only where all are read alike.
void upgradeUnlessAlike(std::array<QByteArray, 3>& texts) {
    const std::array<ProjectText, 3> read{ProjectText(texts[Base]), ProjectText(texts[Ours]),
                                          ProjectText(texts[Theirs])};
    if (std::none_of(read.begin(), read.end(), hasViewLists))
        return;
    for (const Revision revision : {Base, Ours, Theirs}) {
        if (!hasViewLists(read[revision]))
            texts[revision] = bytesWith(read[revision], upgradingChanges(read[revision], {}));
    }
}

/// In place of a text without lines, so that lines of another one can follow.
QByteArray headerOf(const QByteArray& bytes) {
    const ProjectText text(bytes);
    QByteArray header;
    for (int i = 0; i < text.lineCount(); ++i)
        header += text.key(i) == Key::Header ? toBytes(text.raw(i)) : QByteArray();
    return header.isEmpty() ? QByteArray("\n") : header;
}

} // namespace

} // namespace Prm::document

Prm::MergedProject Prm::mergeProjects(const QByteArray& base, const QByteArray& ours, const QByteArray& theirs,
                                      const MergeSettlement& settlement) {
    using namespace document;
    refuseConflicts(base, "base");
    refuseConflicts(ours, "ours");
    refuseConflicts(theirs, "theirs");
    if (ours == theirs || theirs == base)
        return {ours, {}};
    if (ours == base)
        return {theirs, {}};
    Resolver resolver(settlement ? settlement : [](const QString&) { return std::nullopt; });
    std::array<QByteArray, 3> texts{base, ours.isEmpty() ? headerOf(theirs) : ours, theirs};
    upgradeUnlessAlike(texts);
    texts = withSamePaths(ProjectText(texts[Base]), ProjectText(texts[Ours]), ProjectText(texts[Theirs]), resolver);
    QByteArray text = document::ProjectMerge(texts, resolver).merged();
    return {std::move(text), resolver.takeConflicts()};
}
