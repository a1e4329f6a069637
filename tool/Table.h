#pragma once

#include "tool/Budget.h"

#include <QByteArray>
#include <QJsonValue>
#include <QStringList>
#include <QVariant>
#include <QVector>

#include <vector>

namespace Tool {

/// What a table of results is written as.
enum class TableForm { Plain, Csv, Json };

/// A value in shortest exact form: numbers that read back the same, points as two numbers, switches as 0 or 1, lists
/// with commas. Text is given as it is.
QString plainText(const QVariant& value);

/// The text, null where it is empty.
inline QVariant orNull(const QString& text) {
    return text.isEmpty() ? QVariant() : QVariant(text);
}

/// A value in the same form at the end of a text, between quotes where a spreadsheet needs them.
void appendCsv(QString& text, const QVariant& value);

/// The same in JSON: points as a list of two numbers.
QJsonValue jsonValue(const QVariant& value);

/// Rows of values under headings.
class Table {
public:
    explicit Table(const QStringList& headings) : m_headings(headings) {}

    /// Throws `Problem` when there is too much text.
    void add(const QVector<QVariant>& row);
    bool isEmpty() const { return m_rows.empty(); }
    /// Plain: columns side by side, at most so wide; a text with line breaks is escaped. JSON: a list of objects.
    QByteArray written(TableForm form) const;

private:
    QByteArray plain() const;
    QByteArray csv() const;
    QByteArray json() const;

    QStringList m_headings;
    std::vector<QVector<QVariant>> m_rows;
    TextBudget m_budget;
};

} // namespace Tool
