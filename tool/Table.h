#pragma once

#include "prm/document/Budget.h"
#include "prm/document/ValueText.h"
#include "prm/exchange/Csv.h"
#include "tool/Problem.h"

#include <QByteArray>
#include <QHash>
#include <QJsonValue>
#include <QStringList>
#include <QVariant>
#include <QVector>

#include <vector>

namespace Tool {

/// What a table of results is written as.
enum class TableForm { Plain, Csv, Json };

/// A value in JSON: points as a list of two numbers; numbers that JSON does not have as "inf", "-inf" and "nan".
QJsonValue jsonValue(const QVariant& value);

/// Rows of values under headings.
class Table {
public:
    explicit Table(const QStringList& headings = {}) : m_headings(headings) {}

    /// Throws `Problem` when there is too much text.
    void add(const QVector<QVariant>& row);
    /// The rows of another table, with the name of a file before each. Columns of one heading are one column.
    void append(const QString& file, const Table& other);
    bool isEmpty() const { return m_rows.empty(); }
    /// Plain: columns side by side, at most so wide; a text with line breaks is escaped. JSON: a list of objects.
    QByteArray written(TableForm form) const;

private:
    QByteArray plain() const;
    QByteArray csv() const;
    QByteArray json() const;

    int columnOf(const QString& heading);

    QStringList m_headings;
    /// Of a table to which others were appended.
    QHash<QString, int> m_columns;
    std::vector<QVector<QVariant>> m_rows;
    TextBudget m_budget;
};

} // namespace Tool
