#include "prm/document/Budget.h"
#include "prm/document/Problem.h"
#include "prm/document/ValueText.h"
#include "prm/exchange/Csv.h"
#include "prm/exchange/SampleHeading.h"
#include "prm/exchange/SampleTable.h"

#include <algorithm>
#include <cmath>

namespace Prm::document {

namespace {

/// Rows whose values are in memory at once.
constexpr int rowsAtOnce = 4096;

} // namespace

SampleExport::SampleExport(Document& document, const std::vector<int>& nodes) {
    document.forEach(nodes, "reading", [&](const FileParameter& parameter) {
        const Evaluability found = evaluability(parameter);
        if (!found.note.isEmpty())
            m_notes.push_back(found);
        if (!found.isGiven) {
            m_isComplete = false;
            return;
        }
        const TypedParameter shown = document.kinds.shown(parameter);
        m_columns.push_back({sampleHeading(parameter.path(), View()), shown.sample, View()});
        for (const View view : shown.parameter->viewList()) {
            if (view != View()) {
                m_columns.push_back({sampleHeading(parameter.path(), view), shown.sample, view});
            }
            const unsigned int count = shown.parameter->keyframeCount(view);
            if (count == 0)
                continue;
            m_first = std::min(m_first, shown.parameter->keyframeTime(0, view).time.toDouble());
            m_last = std::max(m_last, shown.parameter->keyframeTime(count - 1, view).time.toDouble());
        }
    });
}

QVector<Time> SampleExport::wholeFrames() const {
    if (m_first > m_last)
        return {Time::fromInt(0)};
    const double first = std::floor(m_first);
    const double count = std::ceil(m_last) - first + 1;
    Budget(Most::frames, "more than %1 frames; --frames chooses some").spend(static_cast<qint64>(count));
    QVector<Time> times;
    times.reserve(static_cast<int>(count));
    for (int i = 0; i < count; ++i)
        times.append(Time::fromDouble(first + i));
    return times;
}

QByteArray SampleExport::table(const QVector<Time>& times) const {
    Budget(Most::values, "more than %1 values; --frames or a pattern chooses some")
        .spend(times.size() * static_cast<qint64>(m_columns.size()));
    QString rows = "frame";
    for (const Column& column : m_columns)
        appendCsv(rows += ',', column.heading);
    rows += '\n';
    QByteArray text = rows.toUtf8();
    std::vector<QVector<QVariant>> values(m_columns.size());
    for (int start = 0; start < times.size(); start += rowsAtOnce) {
        const QVector<Time> part = times.mid(start, rowsAtOnce);
        for (std::size_t i = 0; i < values.size(); ++i)
            values[i] = m_columns[i].sample(part, m_columns[i].view);
        rows.resize(0);
        for (int row = 0; row < part.size(); ++row) {
            appendCsv(rows, part[row].toDouble());
            for (const QVector<QVariant>& column : values)
                appendCsv(rows += ',', column[row]);
            rows += '\n';
        }
        text += rows.toUtf8();
    }
    return text;
}

} // namespace Prm::document
