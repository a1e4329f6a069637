#include "tool/Table.h"

#include "prm/ValueType.h"
#include "tool/Streams.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPointF>

#include <algorithm>
#include <cmath>

namespace Tool {

namespace {

/// Columns are not filled up beyond this, so that one long cell does not widen all rows.
constexpr int widestColumn = 48;

/// For people: a line break would end the row.
QString shownText(const QVariant& value) {
    QString text = plainText(value);
    const bool isBroken = std::any_of(text.begin(), text.end(), [](QChar c) { return c < ' '; });
    if (!isBroken)
        return printable(text);
    QString escaped;
    Prm::ValueType<QString>::write(escaped, text);
    return printable(escaped);
}

} // namespace

QJsonValue jsonValue(const QVariant& value) {
    if (value.userType() == QMetaType::QPointF)
        return QJsonArray{jsonValue(value.toPointF().x()), jsonValue(value.toPointF().y())};
    if (value.userType() == QMetaType::Double && !std::isfinite(value.toDouble()))
        return plainText(value);
    if (value.userType() == QMetaType::QVariantList) {
        QJsonArray parts;
        for (const QVariant& part : value.toList())
            parts.append(jsonValue(part));
        return parts;
    }
    return QJsonValue::fromVariant(value);
}

void Table::add(const QVector<QVariant>& row) {
    for (const QVariant& value : row) {
        if (value.userType() == QMetaType::QString)
            m_budget.spend(value.toString().size());
    }
    m_rows.push_back(row);
}

int Table::columnOf(const QString& heading) {
    const auto found = m_columns.find(heading);
    if (found != m_columns.end())
        return *found;
    m_headings.append(heading);
    return *m_columns.insert(heading, m_headings.size() - 1);
}

void Table::append(const QString& file, const Table& other) {
    if (m_headings.isEmpty())
        m_headings.append("file");
    QVector<int> columns;
    for (const QString& heading : other.m_headings)
        columns.append(columnOf(heading));
    for (const QVector<QVariant>& row : other.m_rows) {
        QVector<QVariant> wider(m_headings.size());
        wider[0] = file;
        for (int i = 0; i < row.size(); ++i)
            wider[columns[i]] = row[i];
        add(wider);
    }
}

QByteArray Table::written(TableForm form) const {
    switch (form) {
    case TableForm::Csv:
        return csv();
    case TableForm::Json:
        return json();
    case TableForm::Plain:
        break;
    }
    return plain();
}

QByteArray Table::plain() const {
    if (m_headings.isEmpty())
        return {};
    std::vector<int> widths;
    for (const QString& heading : m_headings)
        widths.push_back(std::min(heading.size(), widestColumn));
    for (const QVector<QVariant>& row : m_rows) {
        for (int i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], std::min(shownText(row[i]).size(), widestColumn));
    }
    QByteArray text;
    const auto addRow = [&](const auto& cellAt, int count) {
        QString line;
        for (int i = 0; i < count; ++i)
            line += cellAt(i).leftJustified(widths[i] + 2);
        while (line.endsWith(' '))
            line.chop(1);
        text += line.toUtf8() + '\n';
    };
    addRow([&](int i) { return m_headings[i]; }, m_headings.size());
    for (const QVector<QVariant>& row : m_rows)
        addRow([&](int i) { return shownText(row[i]); }, row.size());
    return text;
}

QByteArray Table::csv() const {
    QByteArray text;
    if (m_headings.isEmpty())
        return text;
    const auto addRow = [&](const auto& cells) {
        QString line;
        for (const auto& cell : cells) {
            line += line.isNull() ? "" : ",";
            appendCsv(line, cell);
        }
        line += QString(m_headings.size() - cells.size(), ',');
        text += line.toUtf8() + '\n';
    };
    addRow(m_headings);
    for (const QVector<QVariant>& row : m_rows)
        addRow(row);
    return text;
}

QByteArray Table::json() const {
    QByteArray text = "[";
    for (const QVector<QVariant>& row : m_rows) {
        QJsonObject object;
        for (int i = 0; i < row.size(); ++i)
            object.insert(m_headings[i], jsonValue(row[i]));
        text += text.size() == 1 ? "\n" : ",\n";
        text += QJsonDocument(object).toJson(QJsonDocument::Compact);
    }
    return text + "\n]\n";
}

} // namespace Tool
