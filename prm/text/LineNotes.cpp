#include "prm/text/LineNotes.h"

namespace Prm::detail {

namespace {

thread_local LineNotes* t_notes = nullptr;

QString shortened(QStringView text) {
    constexpr int longest = 60;
    return text.size() <= longest ? text.toString() : text.left(longest).toString() + QChar(0x2026);
}

} // namespace

LineNotes::LineNotes() : m_former(t_notes) {
    t_notes = this;
}

LineNotes::~LineNotes() {
    t_notes = m_former;
}

void LineNotes::addLoss(const char* what, QStringView text, const char* problem) {
    if (t_notes)
        t_notes->losses.append(QLatin1String(what) + QLatin1String(" '") + shortened(text) + QLatin1String("' ") +
                               QLatin1String(problem));
}

void LineNotes::addLoss(const char* loss) {
    if (t_notes)
        t_notes->losses.append(QLatin1String(loss));
}

void LineNotes::addMaster(QObject& parameter, const QString& id) {
    if (t_notes)
        t_notes->masters.append({&parameter, id});
}

void LineNotes::addWaiting(QObject& parameter) {
    if (t_notes)
        t_notes->waitingIn = &parameter;
}

void LineNotes::addInsertion() {
    if (t_notes)
        t_notes->hasInserted = true;
}

void LineNotes::clear() {
    if (!losses.isEmpty())
        losses.clear();
    if (!masters.isEmpty())
        masters.clear();
    if (waitingIn)
        waitingIn.clear();
    hasInserted = false;
}

} // namespace Prm::detail
