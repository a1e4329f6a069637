#include "prm/UndoableEdit.h"

#include "host/bsc/CompositeCommand.h"

#include <QHash>

#include <algorithm>
#include <iterator>
#include <type_traits>
#include <typeinfo>
#include <utility>

namespace Prm {

namespace {

thread_local quint64 lastStep = 0;

bool isSame(const EditSummary::Subject& a, const EditSummary::Subject& b) {
    return a.object == b.object && a.path == b.path;
}

QString named(const std::vector<EditSummary::Subject>& subjects) {
    if (subjects.size() == 1)
        return subjects.front().path;
    const auto sets = std::count_if(subjects.begin(), subjects.end(), [](const auto& one) { return one.isSet; });
    const bool areSets = sets > 0 && sets == static_cast<std::ptrdiff_t>(subjects.size());
    const QLatin1String kind(areSets ? "subsets" : sets > 0 ? "members" : "parameters");
    return QString::number(subjects.size()) + QLatin1Char(' ') + kind;
}

/// The sum of several: of one kind, or else only of what is changed.
class Sum {
public:
    void add(const EditSummary& summary) {
        if (m_isEmpty || summary.one != m_all.one)
            m_kinds += 1;
        if (m_isEmpty)
            m_all = {summary.one, summary.several, 0, {}};
        m_isEmpty = false;
        m_all.count += summary.count;
        for (const EditSummary::Subject& subject : summary.subjects)
            add(subject);
    }
    QString toString() const {
        if (m_kinds < 2)
            return m_isEmpty ? QString() : m_all.toString();
        const QString change = QStringLiteral("Change %p");
        return EditSummary{change, change, 1, m_all.subjects}.toString();
    }

private:
    void add(const EditSummary::Subject& subject) {
        const auto [first, last] = std::as_const(m_places).equal_range(subject.object);
        const auto isKnown = [&](int place) {
            return isSame(m_all.subjects[static_cast<std::size_t>(place)], subject);
        };
        if (std::any_of(first, last, isKnown))
            return;
        m_places.insert(subject.object, static_cast<int>(m_all.subjects.size()));
        m_all.subjects.push_back(subject);
    }

    EditSummary m_all;
    QMultiHash<const void*, int> m_places;
    int m_kinds = 0;
    bool m_isEmpty = true;
};

/// A host's own class of composite commands need not list them.
template <class Composite, class = void> struct ListsCommands : std::false_type {};
template <class Composite>
struct ListsCommands<Composite, std::void_t<decltype(std::declval<const Composite&>().commands())>> : std::true_type {};

/// Calls the function for each command that is not a composite of others.
template <class Composite, class Command, class Function> void forEachLeaf(Command& command, const Function& function) {
    if constexpr (ListsCommands<Composite>::value) {
        if (const auto* const composite = dynamic_cast<const Composite*>(&command)) {
            for (const auto& one : composite->commands())
                forEachLeaf<Composite>(*one, function);
            return;
        }
    }
    function(command);
}

/// Empty if one of them is not such an edit.
std::vector<UndoableEdit*> editsOf(Bsc::Command& command) {
    std::vector<UndoableEdit*> edits;
    bool areAll = true;
    forEachLeaf<Bsc::CompositeCommand>(command, [&](Bsc::Command& leaf) {
        auto* const edit = dynamic_cast<UndoableEdit*>(&leaf);
        areAll = areAll && edit;
        edits.push_back(edit);
    });
    return areAll ? edits : std::vector<UndoableEdit*>();
}

} // namespace

QString EditSummary::toString() const {
    const QString& sentence = count == 1 ? one : several;
    QString text;
    for (int i = 0; i < sentence.size(); ++i) {
        const QStringView rest = QStringView(sentence).mid(i);
        if (!rest.startsWith(u"%n") && !rest.startsWith(u"%p")) {
            text += sentence.at(i);
            continue;
        }
        text += rest.at(1) == QLatin1Char('n') ? QString::number(count) : named(subjects);
        ++i;
    }
    return text;
}

UndoableEdit::~UndoableEdit() = default;

void UndoableEdit::noteDone() {
    m_step = ++lastStep;
}

void UndoableEdit::noteUndone() {
    ++lastStep;
    m_step = 0;
}

std::vector<const void*> UndoableEdit::restored() const {
    return {};
}

std::function<void()> UndoableEdit::mergerWith(UndoableEdit&, const Others&) {
    return {};
}

QString undoText(const Bsc::Command& command) {
    std::vector<EditSummary> all;
    forEachLeaf<Bsc::CompositeCommand>(command, [&](const Bsc::Command& leaf) {
        if (const auto* const edit = dynamic_cast<const UndoableEdit*>(&leaf))
            all.push_back(edit->summary());
    });
    const bool changesAny = std::any_of(all.begin(), all.end(), [](const auto& one) { return one.count > 0; });
    Sum sum;
    for (const EditSummary& one : all) {
        if (one.count > 0 || !changesAny)
            sum.add(one);
    }
    return sum.toString();
}

bool mergeEdits(Bsc::Command& done, Bsc::Command& next) {
    const std::vector<UndoableEdit*> first = editsOf(done);
    const std::vector<UndoableEdit*> second = editsOf(next);
    if (first.empty() || first.size() != second.size() || &done == &next)
        return false;
    // One after the other, up to the last step of all.
    quint64 step = lastStep - 2 * first.size();
    for (const auto* const edits : {&first, &second}) {
        const auto isNext = [&](const UndoableEdit* edit) { return edit->m_step == ++step && edit->m_step != 0; };
        if (!std::all_of(edits->begin(), edits->end(), isNext))
            return false;
    }
    std::vector<UndoableEdit::Others> others(first.size());
    QHash<const void*, std::size_t> restoredBy;
    for (std::size_t i = 0; i < first.size() && first.size() > 1; ++i) {
        others[i].comeBefore = i > 0;
        for (const UndoableEdit* const edit : {first[i], second[i]}) {
            for (const void* const object : edit->restored()) {
                const std::size_t former = restoredBy.value(object, i);
                others[i].shareBefore = others[i].shareBefore || former != i;
                others[former].shareAfter = others[former].shareAfter || former != i;
                restoredBy.insert(object, i);
            }
        }
    }
    std::vector<std::function<void()>> mergers;
    for (std::size_t i = 0; i < first.size(); ++i) {
        UndoableEdit& former = *first[i];
        UndoableEdit& later = *second[i];
        if (typeid(former) != typeid(later))
            return false;
        mergers.push_back(former.mergerWith(later, others[i]));
        if (!mergers.back())
            return false;
    }
    for (std::size_t i = 0; i < first.size(); ++i) {
        mergers[i]();
        first[i]->m_step = second[i]->m_step;
        second[i]->m_step = 0;
    }
    return true;
}

} // namespace Prm
