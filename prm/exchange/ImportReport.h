#pragma once

#include "prm/Export.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVector>

namespace Prm::document {

/// What became of one entry of the animation file.
struct ImportEntry {
    enum Outcome { Held, Changed, LeftOut };
    QString jsonPath;
    /// The path of the parameter, or of the compound of a vector's components; empty when left out.
    QString parameter;
    Outcome outcome = Held;
    /// Empty for what is held.
    QString reason;
    /// Something that could not animate in the first place; counted, but not worth a line on the terminal.
    bool isSetting = false;
};

/// Every entry of the file that animates, or could, with what became of it.
class PRM_EXPORT ImportReport {
public:
    void add(const ImportEntry& entry) { m_entries.append(entry); }
    const QVector<ImportEntry>& entries() const { return m_entries; }
    /// Whether anything that animates, or could, is not held as it is.
    bool hasLosses() const;

    /// Of one property, those whose times project text writes differently, with six digits.
    void addMovedKeyframes(int keyframes, double farthest);

    /// A line for each entry, columns separated by tabs, after a line with their names.
    QByteArray table() const;
    /// What is not held, one line each.
    QStringList losses() const;
    /// The same, and the counts.
    QString summary() const;

private:
    QVector<ImportEntry> m_entries;
    int m_movedProperties = 0;
    int m_movedKeyframes = 0;
    double m_farthestMove = 0.0;
};

} // namespace Prm::document
