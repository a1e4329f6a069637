#include "prm/exchange/Csv.h"

#include "prm/ValueType.h"
#include "prm/document/LineReading.h"
#include "prm/document/Problem.h"
#include "prm/document/ValueText.h"

#include <algorithm>
#include <map>

namespace Prm::document {

namespace {

constexpr std::string_view lineEnds = "\r\n";
constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

char separatorOf(std::string_view text) {
    std::map<char, int> counts;
    bool isQuoted = false;
    for (const char c : text.substr(0, text.find_first_of(lineEnds))) {
        isQuoted = isQuoted != (c == '"');
        counts[c] += isQuoted ? 0 : 1;
    }
    char best = ',';
    for (const char each : {';', '\t'}) {
        if (counts[each] > counts[best])
            best = each;
    }
    return best;
}

/// As an editor counts lines.
int lineEndsIn(std::string_view text) {
    int count = 0;
    for (std::size_t i = text.find_first_of(lineEnds); i < text.size(); i = text.find_first_of(lineEnds, i + 1))
        count += text[i] == '\n' && i > 0 && text[i - 1] == '\r' ? 0 : 1;
    return count;
}

bool isBlank(const std::vector<std::string_view>& cells) {
    return cells.size() == 1 && cells.front().find_first_not_of(" \t") == std::string_view::npos;
}

} // namespace

CsvReader::CsvReader(const QByteArray& text) : m_text(toView(text)) {
    if (m_text.substr(0, byteOrderMark.size()) == byteOrderMark)
        m_text.remove_prefix(byteOrderMark.size());
    m_separator = separatorOf(m_text);
}

void CsvReader::rewind() {
    m_next = 0;
    m_nextLine = 1;
}

bool CsvReader::read() {
    do {
        if (isAtEnd())
            return false;
        m_cells.clear();
        m_unquoted.clear();
        m_line = m_nextLine;
        bool isRow = true;
        while (isRow) {
            readCell();
            isRow = !isAtEnd() && m_text[m_next] == m_separator;
            m_next += isRow ? 1 : 0;
        }
        skipLineEnd();
    } while (isBlank(m_cells));
    return true;
}

/// Of a line as any system ends it: by a line feed, a carriage return, or both.
void CsvReader::skipLineEnd() {
    const bool isReturn = !isAtEnd() && m_text[m_next] == '\r';
    m_next += isReturn ? 1 : 0;
    m_next += !isAtEnd() && m_text[m_next] == '\n' ? 1 : 0;
    ++m_nextLine;
}

void CsvReader::readCell() {
    const std::size_t start = m_next;
    if (!isAtEnd() && m_text[start] == '"')
        return readQuoted();
    while (!isAtCellEnd())
        ++m_next;
    m_cells.push_back(m_text.substr(start, m_next - start));
}

void CsvReader::readQuoted() {
    QByteArray& cell = m_unquoted.emplace_back();
    const int line = m_nextLine;
    for (++m_next;; ++m_next) {
        const std::size_t end = m_text.find('"', m_next);
        if (end == std::string_view::npos)
            throw Problem("%1: a quote is not closed", line);
        const std::string_view part = m_text.substr(m_next, end - m_next);
        m_nextLine += lineEndsIn(part);
        cell.append(part.data(), static_cast<int>(part.size()));
        m_next = end + 1;
        if (isAtEnd() || m_text[m_next] != '"')
            break;
        cell += '"';
    }
    while (!isAtCellEnd() && (m_text[m_next] == ' ' || m_text[m_next] == '\t'))
        ++m_next;
    if (!isAtCellEnd())
        throw Problem("%1: text follows the quotes of a cell; a quote in a cell is doubled", m_nextLine);
    m_cells.push_back(toView(cell));
}

void appendCsv(QString& text, const QVariant& value) {
    if (value.userType() == QMetaType::Double)
        return ValueType<double>::write(text, value.toDouble());
    QString cell = plainText(value);
    const QString special = ",;\t\"\r\n";
    if (std::any_of(cell.begin(), cell.end(), [&](QChar c) { return special.contains(c); }))
        cell = '"' + cell.replace('"', "\"\"") + '"';
    text += cell;
}

} // namespace Prm::document
