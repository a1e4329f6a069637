#include "prm/KeyframeSelectionEdit.h"

#include "prm/set/SelectionPlan.h"

#include <QStringList>

#include <algorithm>
#include <optional>

namespace Prm {

KeyframeSelectionEdit::KeyframeSelectionEdit(const KeyframeSelection& selection, const KeyframeChange& change)
    : m_selection(selection), m_change(change) {
    for (const KeyframeSelection::OfView& one : selection.views()) {
        const bool isNew = m_names.empty() || m_names.back().first != one.parameter;
        if (one.parameter && isNew)
            m_names.emplace_back(one.parameter, one.parameter->scriptName());
    }
}

KeyframeSelectionEdit::~KeyframeSelectionEdit() = default;

QString KeyframeSelectionEdit::refusal() const {
    return QString::fromLatin1(detail::SelectionPlan(m_selection).compute(m_change));
}

void KeyframeSelectionEdit::doIt() {
    m_former.reset();
    detail::SelectionPlan plan(m_selection);
    const bool isRefused = plan.compute(m_change) != nullptr;
    const detail::State::EditedPlaces places = isRefused ? detail::State::EditedPlaces() : plan.places();
    if (!places.empty())
        m_former = detail::State(places).changed([&] { plan.apply(); });
    m_isUseless = !m_former;
    noteDone();
}

void KeyframeSelectionEdit::undoIt() {
    noteUndone();
    if (m_former)
        m_former->present().changeOrPutBack([this] { m_former->putBack(); });
}

QString KeyframeSelectionEdit::usageLogInfo() const {
    QStringList names;
    for (const auto& [parameter, name] : m_names)
        names.append(parameter ? parameter->scriptName() : name + QLatin1String(" (deleted)"));
    return names.join(QLatin1String(", "));
}

namespace {

/// In the order of the sentence's words: what is done with the keyframes, if that is one thing.
const char* actOf(const KeyframeChange& change) {
    const bool changesValues =
        change.valueScale != 1.0 ||
        std::any_of(change.valueShift.begin(), change.valueShift.end(), [](double shift) { return shift != 0.0; });
    const bool shifts = change.retiming && change.retiming->scale == 1.0;
    if (change.deletes)
        return "Delete";
    if (change.handles)
        return changesValues || change.shape || change.retiming ? "Change" : "Change handles of";
    if (change.shape)
        return changesValues || change.retiming ? "Change" : "Change interpolation of";
    if (changesValues)
        return shifts && change.valueScale == 1.0 ? "Move" : change.retiming ? "Change" : "Change values of";
    return shifts || !change.retiming ? "Move" : "Retime";
}

} // namespace

EditSummary KeyframeSelectionEdit::summary() const {
    EditSummary summary;
    summary.one = QLatin1String(actOf(m_change)) + QLatin1String(" %n keyframe of %p");
    summary.several = QLatin1String(actOf(m_change)) + QLatin1String(" %n keyframes of %p");
    summary.count = m_isUseless ? 0 : static_cast<int>(m_selection.count());
    for (const auto& [parameter, name] : m_names)
        summary.subjects.push_back({parameter.data(), parameter ? parameter->path() : name});
    return summary;
}

/// Survives the edit's deletion by an observer.
class InteractiveKeyframeEdit::Drag {
public:
    explicit Drag(const KeyframeSelection& selection) : m_selection(selection), m_plan(selection) {}

    bool preview(const KeyframeChange& change) {
        if (m_isBusy)
            return false;
        refusal = QString::fromLatin1(m_plan.compute(change));
        if (!refusal.isEmpty())
            return false;
        m_shown = change;
        run([this] { m_plan.apply(); });
        return true;
    }
    void cancel() {
        m_cancelsLater = m_isBusy;
        if (m_isBusy || !m_shown)
            return;
        m_shown.reset();
        run([this] { m_plan.putBack(); });
    }
    std::unique_ptr<Bsc::Command> commit() {
        if (m_isBusy || !m_shown)
            return {};
        auto edit = std::make_unique<KeyframeSelectionEdit>(m_selection, *m_shown);
        cancel();
        return edit;
    }

    QString refusal;

private:
    template <class Act> void run(const Act& act) {
        m_isBusy = true;
        try {
            act();
        } catch (...) {
            try {
                m_plan.putBack();
            } catch (...) { // NOLINT(bugprone-empty-catch)
            }
            m_shown.reset();
            m_isBusy = false;
            throw;
        }
        m_isBusy = false;
        if (m_cancelsLater)
            cancel();
    }

    KeyframeSelection m_selection;
    detail::SelectionPlan m_plan;
    std::optional<KeyframeChange> m_shown;
    bool m_isBusy = false;
    bool m_cancelsLater = false;
};

InteractiveKeyframeEdit::InteractiveKeyframeEdit(const KeyframeSelection& selection)
    : m_drag(std::make_shared<Drag>(selection)) {}

InteractiveKeyframeEdit::~InteractiveKeyframeEdit() {
    try {
        m_drag->cancel();
    } catch (...) { // NOLINT(bugprone-empty-catch)
    }
}

bool InteractiveKeyframeEdit::preview(const KeyframeChange& change) {
    const std::shared_ptr<Drag> drag = m_drag;
    return drag->preview(change);
}

QString InteractiveKeyframeEdit::refusal() const {
    return m_drag->refusal;
}

void InteractiveKeyframeEdit::cancel() {
    const std::shared_ptr<Drag> drag = m_drag;
    drag->cancel();
}

std::unique_ptr<Bsc::Command> InteractiveKeyframeEdit::commit() {
    const std::shared_ptr<Drag> drag = m_drag;
    return drag->commit();
}

} // namespace Prm
