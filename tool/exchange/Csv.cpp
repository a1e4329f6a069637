#include "tool/exchange/Csv.h"

#include "tool/LineReading.h"
#include "tool/Problem.h"

#include <algorithm>
#include <map>

namespace Tool {

namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

char separatorOf(std::string_view text) {
    std::map<char, int> counts;
    bool isQuoted = false;
    for (const char c : text.substr(0, text.find('\n'))) {
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
        m_next = std::min(m_text.find('\n', m_next), m_text.size() - 1) + 1;
        ++m_nextLine;
    } while (isBlank(m_cells));
    return true;
}

void CsvReader::readCell() {
    const std::size_t start = m_next;
    if (!isAtEnd() && m_text[start] == '"')
        return readQuoted();
    while (!isAtEnd() && m_text[m_next] != m_separator && m_text[m_next] != '\n')
        ++m_next;
    std::string_view cell = m_text.substr(start, m_next - start);
    if (!cell.empty() && cell.back() == '\r')
        cell.remove_suffix(1);
    m_cells.push_back(cell);
}

void CsvReader::readQuoted() {
    QByteArray& cell = m_unquoted.emplace_back();
    const int line = m_nextLine;
    for (++m_next;; ++m_next) {
        const std::size_t end = m_text.find('"', m_next);
        if (end == std::string_view::npos)
            throw Problem("%1: a quote is not closed", line);
        const std::string_view part = m_text.substr(m_next, end - m_next);
        m_nextLine += static_cast<int>(std::count(part.begin(), part.end(), '\n'));
        cell.append(part.data(), static_cast<int>(part.size()));
        m_next = end + 1;
        if (isAtEnd() || m_text[m_next] != '"')
            break;
        cell += '"';
    }
    // What follows the quotes belongs to nothing, save the end of the line.
    while (!isAtEnd() && m_text[m_next] != m_separator && m_text[m_next] != '\n')
        ++m_next;
    m_cells.push_back(toView(cell));
}

} // namespace Tool
