#include "tool/import/ImportReport.h"

#include <QTextStream>

#include <algorithm>

namespace Tool {

namespace {

QString outcomeName(ImportEntry::Outcome outcome) {
    switch (outcome) {
    case ImportEntry::Held:
        return QStringLiteral("held");
    case ImportEntry::Changed:
        return QStringLiteral("changed");
    default:
        return QStringLiteral("left out");
    }
}

} // namespace

int ImportReport::count(ImportEntry::Outcome outcome) const {
    return static_cast<int>(std::count_if(m_entries.begin(), m_entries.end(),
                                          [&](const ImportEntry& entry) { return entry.outcome == outcome; }));
}

int ImportReport::settingsLeftOut() const {
    return static_cast<int>(
        std::count_if(m_entries.begin(), m_entries.end(), [](const ImportEntry& entry) { return entry.isSetting; }));
}

bool ImportReport::hasLosses() const {
    return std::any_of(m_entries.begin(), m_entries.end(),
                       [](const ImportEntry& entry) { return entry.outcome != ImportEntry::Held && !entry.isSetting; });
}

void ImportReport::addShiftedTimes(int keyframes, double greatestShift) {
    ++m_shiftedProperties;
    m_shiftedKeyframes += keyframes;
    m_greatestShift = std::max(m_greatestShift, greatestShift);
}

QByteArray ImportReport::table() const {
    QByteArray text("json_path\tparameter\toutcome\twhy\n");
    for (const ImportEntry& entry : m_entries) {
        text += entry.jsonPath.toUtf8() + '\t' + entry.parameter.toUtf8() + '\t' + outcomeName(entry.outcome).toUtf8() +
                '\t' + entry.reason.toUtf8() + '\n';
    }
    return text;
}

void ImportReport::summarise(QTextStream& out) const {
    for (const ImportEntry& entry : m_entries) {
        if (entry.outcome == ImportEntry::Held || entry.isSetting)
            continue;
        out << outcomeName(entry.outcome) << ": " << entry.jsonPath;
        if (!entry.parameter.isEmpty())
            out << " (" << entry.parameter << ')';
        out << ": " << entry.reason << '\n';
    }
    out << count(ImportEntry::Held) << " held, " << count(ImportEntry::Changed) << " changed, "
        << count(ImportEntry::LeftOut) << " left out";
    if (settingsLeftOut() > 0)
        out << " (" << settingsLeftOut() << " of them settings that do not animate)";
    out << '\n';
    if (m_shiftedKeyframes > 0)
        out << "in project text, which rounds times, " << m_shiftedKeyframes << " keyframes of " << m_shiftedProperties
            << " properties move by up to " << m_greatestShift << " frames\n";
}

} // namespace Tool
