#include "prm/exchange/ImportReport.h"

#include "prm/document/Problem.h"

#include <QStringList>

#include <algorithm>
#include <array>

namespace Prm::document {

namespace {

constexpr std::array<const char*, 3> outcomeNames{"held", "changed", "left out"};

/// What the user has to know of.
bool isLoss(const ImportEntry& entry) {
    return entry.outcome != ImportEntry::Held && !entry.isSetting;
}

} // namespace

bool ImportReport::hasLosses() const {
    return std::any_of(m_entries.begin(), m_entries.end(), isLoss);
}

void ImportReport::addMovedKeyframes(int keyframes, double farthest) {
    m_movedProperties += keyframes > 0 ? 1 : 0;
    m_movedKeyframes += keyframes;
    m_farthestMove = std::max(m_farthestMove, farthest);
}

QByteArray ImportReport::table() const {
    QByteArray text("json_path\tparameter\toutcome\twhy\n");
    for (const ImportEntry& entry : m_entries) {
        const QStringList cells{entry.jsonPath, entry.parameter, outcomeNames.at(entry.outcome), entry.reason};
        text += cells.join('\t').toUtf8() + '\n';
    }
    return text;
}

QStringList ImportReport::losses() const {
    QStringList losses;
    for (const ImportEntry& entry : m_entries) {
        const QString parameter = entry.parameter.isEmpty() ? QString() : message(" (%1)", entry.parameter);
        if (isLoss(entry))
            losses += message("%1: %2%3: %4", outcomeNames.at(entry.outcome), entry.jsonPath, parameter, entry.reason);
    }
    return losses;
}

QString ImportReport::summary() const {
    std::array<int, 3> counts{};
    int settings = 0;
    for (const ImportEntry& entry : m_entries) {
        ++counts.at(entry.outcome);
        settings += entry.isSetting ? 1 : 0;
    }
    QStringList lines = losses();
    lines += message("%1 held, %2 changed, %3 left out", counts[0], counts[1], counts[2]);
    if (settings > 0)
        lines.last() += message(" (%1 of them settings that do not animate)", settings);
    if (m_movedKeyframes > 0)
        lines += message("in project text, which rounds times, %1 keyframes of %2 properties move by up to %3 frames",
                         m_movedKeyframes, m_movedProperties, m_farthestMove);
    return lines.join('\n');
}

} // namespace Prm::document
