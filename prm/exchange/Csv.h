#pragma once

#include "prm/Export.h"

#include <QByteArray>
#include <QString>
#include <QVariant>

#include <deque>
#include <string_view>
#include <vector>

namespace Prm::document {

/// A value in shortest exact form at the end of a text, between quotes where a spreadsheet needs them.
PRM_EXPORT void appendCsv(QString& text, const QVariant& value);

/// The rows of comma-separated values, one after the other. Commas, semicolons and tabs separate cells: what the first
/// row has most of. A cell between quotes may hold separators, line breaks, and quotes that are doubled.
class CsvReader {
public:
    /// The text has to stay as long as the reader.
    explicit CsvReader(const QByteArray& text);

    /// Reads the next row; false at the end. Rows of blanks are left out. Throws `Problem` for a quote that is not
    /// closed, and for text after one that is, beginning with the line.
    bool read();
    /// Of the row that was read last; they stay until the next one.
    const std::vector<std::string_view>& cells() const { return m_cells; }
    /// In which the row begins, counted from 1.
    int line() const { return m_line; }
    char separator() const { return m_separator; }
    /// From the first row on again.
    void rewind();

private:
    bool isAtEnd() const { return m_next == m_text.size(); }
    bool isAtCellEnd() const {
        return isAtEnd() || m_text[m_next] == m_separator || m_text[m_next] == '\n' || m_text[m_next] == '\r';
    }
    void skipLineEnd();
    void readCell();
    void readQuoted();

    std::string_view m_text;
    std::size_t m_next = 0;
    int m_line = 0;
    int m_nextLine = 1;
    char m_separator = ',';
    std::vector<std::string_view> m_cells;
    /// Cells with quotes in them, which are not in the text as they are meant.
    std::deque<QByteArray> m_unquoted;
};

} // namespace Prm::document
