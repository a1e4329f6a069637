#include "prm/ParameterEdit.h"

#include "prm/untyped/State.h"

#include <algorithm>

namespace Prm {

ParameterEdit::ParameterEdit(BasicParameter* edited, const EditWords& words)
    : m_edited(edited), m_hadParameter(edited != nullptr), m_words(words),
      m_scriptName(edited ? edited->scriptName() : QString()) {}

ParameterEdit::~ParameterEdit() = default;

QString ParameterEdit::usageLogInfo() const {
    if (m_edited)
        return m_edited->scriptName();
    return m_hadParameter ? m_scriptName + QLatin1String(" (deleted)") : QString();
}

EditSummary ParameterEdit::summary() const {
    EditSummary summary;
    summary.one = QString::fromUtf8(m_words.one);
    summary.several = QString::fromUtf8(m_words.several);
    summary.count = m_count < 0 && m_edited ? countNow() : std::max(m_count, 0);
    if (!m_isCounted)
        summary.count = 0;
    summary.subjects = {{m_edited.data(), m_edited ? m_edited->path() : m_scriptName}};
    return summary;
}

void ParameterEdit::describeAs(const EditWords& words, bool isCounted) {
    m_words = words;
    m_isCounted = isCounted;
}

int ParameterEdit::countNow() const {
    return 1;
}

void ParameterEdit::takeCount(int count) {
    m_count = count;
}

ParameterSnapshotEdit::ParameterSnapshotEdit(BasicParameter* edited, const EditWords& words)
    : ParameterEdit(edited, words) {}

ParameterSnapshotEdit::~ParameterSnapshotEdit() = default;

void ParameterSnapshotEdit::doIt() {
    m_former.reset();
    if (edited())
        change();
    noteDone();
}

void ParameterSnapshotEdit::change() {
    const int count = countNow();
    if (applies())
        m_former = takeState().changed([this] { apply(); });
    takeCount(m_former ? std::max(count, 1) : 0);
}

void ParameterSnapshotEdit::undoIt() {
    noteUndone();
    if (!edited() || !m_former || !mayUndo(*m_former))
        return;
    m_former->present().changeOrPutBack([this] { m_former->putBack(); });
}

detail::Places ParameterSnapshotEdit::places() const {
    return {};
}

detail::State ParameterSnapshotEdit::takeState() const {
    return {*edited(), places()};
}

bool ParameterSnapshotEdit::mayUndo(const detail::State&) const {
    return true;
}

bool ParameterSnapshotEdit::isReplacedBy(const ParameterSnapshotEdit&) const {
    return false;
}

void ParameterSnapshotEdit::takeWanted(ParameterSnapshotEdit&) {}

std::vector<const void*> ParameterSnapshotEdit::restored() const {
    const auto all = m_former ? m_former->parameters() : std::vector<const BasicParameter*>();
    return {all.begin(), all.end()};
}

bool ParameterSnapshotEdit::dependsOnValues() const {
    const std::vector<const void*> changed = restored();
    return std::any_of(changed.begin(), changed.end(), [this](const void* object) { return object != edited(); });
}

namespace {

bool showsMasters(const detail::State& state) {
    const auto all = state.parameters();
    return std::any_of(all.begin(), all.end(), [](const BasicParameter* parameter) {
        const auto* const animated = qobject_cast<const ParameterWithoutType*>(parameter);
        return animated && animated->masterParameter();
    });
}

} // namespace

/// Where this edit has changed nothing, the state before the next one is that before both, unless another edit of the
/// step has changed the same. Done again, it must find the values that it found: an edit before it sets others now.
std::function<void()> ParameterSnapshotEdit::mergerWith(UndoableEdit& next, const Others& others) {
    auto& later = static_cast<ParameterSnapshotEdit&>(next);
    const bool isAlone = !others.shareBefore && !others.shareAfter;
    if (!edited() || later.edited() != edited() || !isReplacedBy(later))
        return {};
    if (others.comeBefore && dependsOnValues() && (others.shareBefore || showsMasters(*m_former)))
        return {};
    const std::vector<const void*> known = restored();
    const std::vector<const void*> changed = later.restored();
    const auto isKnown = [&](const void* object) {
        return std::find(known.begin(), known.end(), object) != known.end();
    };
    const bool isCovered = std::all_of(changed.begin(), changed.end(), isKnown);
    if (!isCovered && (m_former || !isAlone))
        return {};
    auto former = m_former ? m_former : later.m_former;
    const bool isNothing = former && former->equals();
    // Done again it would change nothing, so that no other parts would be keyed.
    if (former && !isNothing && former->equalsEdited())
        return {};
    if (isAlone && isNothing)
        former.reset();
    const int count = former ? std::max(takenCount(), later.takenCount()) : 0;
    return [this, &later, former, count] {
        m_former = former;
        takeCount(count);
        takeWanted(later);
    };
}

} // namespace Prm
