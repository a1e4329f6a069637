#include "tool/Table.h"

#include "prm/ValueType.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPointF>

#include <algorithm>

namespace Tool {

namespace {

/// Columns are not filled up beyond this, so that one long cell does not widen all rows.
constexpr int widestColumn = 48;

template <class T> QString valueText(const QVariant& value) {
    QString text;
    Prm::ValueType<T>::write(text, value.value<T>());
    return text;
}

/// For people: a line break would end the row.
QString shownText(const QVariant& value) {
    QString text = plainText(value);
    const bool isBroken = std::any_of(text.begin(), text.end(), [](QChar c) { return c < ' '; });
    return isBroken ? valueText<QString>(text) : text;
}

} // namespace

void appendCsv(QString& text, const QVariant& value) {
    if (value.userType() == QMetaType::Double)
        return Prm::ValueType<double>::write(text, value.toDouble());
    QString cell = plainText(value);
    const QString special = ",;\t\"\r\n";
    if (std::any_of(cell.begin(), cell.end(), [&](QChar c) { return special.contains(c); }))
        cell = '"' + cell.replace('"', "\"\"") + '"';
    text += cell;
}

QJsonValue jsonValue(const QVariant& value) {
    if (value.userType() == QMetaType::QPointF)
        return QJsonArray{value.toPointF().x(), value.toPointF().y()};
    return QJsonValue::fromVariant(value);
}

QString plainText(const QVariant& value) {
    switch (value.userType()) {
    case QMetaType::Bool:
        return valueText<bool>(value);
    case QMetaType::Double:
        return valueText<double>(value);
    case QMetaType::QPointF:
        return valueText<QPointF>(value);
    case QMetaType::QVariantList: {
        QStringList texts;
        for (const QVariant& part : value.toList())
            texts.append(plainText(part));
        return texts.join(", ");
    }
    default:
        return value.toString();
    }
}

void Table::add(const QVector<QVariant>& row) {
    for (const QVariant& value : row) {
        if (value.userType() == QMetaType::QString)
            m_budget.spend(value.toString().size());
    }
    m_rows.push_back(row);
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
    const auto addRow = [&](const auto& cells) {
        QString line;
        for (const auto& cell : cells) {
            line += line.isNull() ? "" : ",";
            appendCsv(line, cell);
        }
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
