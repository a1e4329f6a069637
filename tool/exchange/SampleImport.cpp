#include "tool/Table.h"
#include "tool/edit/Upgrading.h"
#include "tool/exchange/Csv.h"
#include "tool/exchange/SampleTable.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <map>
#include <set>

namespace Tool {

namespace {

using Cell = std::string_view;

constexpr std::size_t longestPath = 1000;
constexpr qint64 mostBytes = 1LL << 30;

Cell trimmed(Cell cell) {
    const std::size_t first = cell.find_first_not_of(" \t");
    return first == Cell::npos ? Cell() : cell.substr(first, cell.find_last_not_of(" \t") + 1 - first);
}

/// A cell without what project text has not: a sign before a positive number, and a comma as its point, which it may
/// have where commas do not separate cells.
struct Number {
    Number(Cell cell, char separator) : text(trimmed(cell)) {
        if (!text.empty() && text.front() == '+')
            text.remove_prefix(1);
        if (separator != ',' && text.find(',') != Cell::npos) {
            changed = toBytes(text).replace(',', '.');
            text = toView(changed);
        }
        const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), value);
        isOne = !text.empty() && stop == text.data() + text.size() && error == std::errc();
    }

    Cell text;
    QByteArray changed;
    double value = 0;
    bool isOne = false;
};

void append(QByteArray& line, Cell text) {
    line.append(text.data(), static_cast<int>(text.size()));
}

// Each appends the value of a cell as project text has it, if it is of that kind.

bool appendNumber(QByteArray& line, Cell cell, char separator) {
    const Number number(cell, separator);
    append(line, number.isOne ? number.text : Cell());
    return number.isOne;
}

bool appendPoint(QByteArray& line, Cell cell, char separator) {
    const Cell text = trimmed(cell);
    const std::size_t blank = std::min(text.find(' '), text.size());
    const Number x(text.substr(0, blank), separator);
    const Number y(text.substr(blank), separator);
    if (!x.isOne || !y.isOne)
        return false;
    append(line, x.text);
    line += ' ';
    append(line, y.text);
    return true;
}

bool appendSwitch(QByteArray& line, Cell cell, char /*separator*/) {
    const QByteArray text = toBytes(trimmed(cell)).toLower();
    if (text != "true" && text != "false")
        return false;
    line += text == "true" ? '1' : '0';
    return true;
}

bool appendText(QByteArray& line, Cell cell, char /*separator*/) {
    QString text;
    Prm::ValueType<QString>::write(text, toText(cell));
    line += text.toUtf8();
    return true;
}

/// What the cells of a column are, if all of them are that.
struct CellKind {
    bool (*append)(QByteArray& line, Cell cell, char separator);
    const char* interpolation;
};

constexpr CellKind kinds[] = {{appendNumber, ", Linear ) )\n"},
                              {appendPoint, ", Linear ) )\n"},
                              {appendSwitch, ", Constant ) )\n"},
                              {appendText, ", Constant ) )\n"}};

struct Column {
    QByteArray path;
    /// Of the lines of keyframes.
    QByteArray prefix;
    quint32 view = 0;
    /// The first that all cells are of.
    const CellKind* kind = std::begin(kinds);
    QByteArray first;
    bool isOneValue = true;
    int count = 0;
    QByteArray keyframes;
};

/// A path that lines can begin with: what they cannot is replaced.
QByteArray pathOf(const QByteArray& heading) {
    QByteArray path = heading.trimmed();
    for (char& c : path) {
        const bool isAscii = static_cast<unsigned char>(c) < 0x80;
        if (isAscii && !std::isalnum(static_cast<unsigned char>(c)) && c != '.' && c != '_' && c != '-')
            c = '_';
    }
    return path;
}

class Samples {
public:
    Samples(const QByteArray& table, double framesPerSecond) : m_reader(table), m_framesPerSecond(framesPerSecond) {}

    SampleImport imported() {
        if (!m_reader.read())
            throw Problem("1: the table is empty");
        readHeadings();
        readRows([this](Cell cell, Column& column) { classify(cell, column); });
        m_reader.rewind();
        m_reader.read();
        readRows([this](Cell cell, Column& column) { addKeyframe(cell, column); });
        m_result.text = written();
        if (m_roundedTimes > 0)
            m_result.changes +=
                message("times are written with six digits: %1 move by up to %2", m_roundedTimes, m_farthest);
        std::sort(m_times.begin(), m_times.end());
        const auto repeated = std::distance(std::unique(m_times.begin(), m_times.end()), m_times.end());
        if (repeated > 0)
            m_result.changes += message("rows at the time of another one, of which the last counts: %1", repeated);
        return std::move(m_result);
    }

private:
    [[noreturn]] void fail(const QString& text) const { throw Problem("%1: %2", m_reader.line(), text); }

    // --- headings ----------------------------------------------------------------------------------------------------

    void readHeadings() {
        const auto& cells = m_reader.cells();
        m_framesPerUnit = framesPerUnit(toText(cells.front()).trimmed());
        std::set<std::pair<QByteArray, quint32>> used;
        for (std::size_t i = 1; i < cells.size(); ++i) {
            Column column = columnOf(toBytes(cells[i]), static_cast<int>(i) + 1);
            if (!used.emplace(column.path, column.view).second)
                fail(message("column %1: '%2' has a column already", i + 1, QString::fromUtf8(column.path)));
            m_columns.push_back(std::move(column));
        }
        if (m_columns.empty())
            fail("there is only one column");
    }

    double framesPerUnit(const QString& heading) const {
        const QString unit = heading.toLower();
        if (unit.contains("frame"))
            return 1;
        if (!unit.contains("second") && !unit.endsWith("(s)") && unit != "s")
            fail(message("the first column gives the time and is called 'frame' or 'seconds', not '%1'", heading));
        if (!(m_framesPerSecond > 0))
            fail("the times are seconds; --fps gives the frames per second");
        return m_framesPerSecond;
    }

    Column columnOf(const QByteArray& heading, int number) const {
        Column column;
        const int at = heading.lastIndexOf('@');
        bool isView = false;
        const uint view = heading.mid(at + 1).trimmed().toUInt(&isView);
        if (at >= 0 && isView && Prm::View(view).isValid())
            column.view = view;
        column.path = pathOf(at >= 0 && isView ? heading.left(at) : heading);
        const QByteArray line = column.path + ".value=0";
        const LineReading reading = readLine(toView(line));
        if (reading.key != Key::Value || reading.path != toView(column.path) || column.path.size() > int(longestPath))
            fail(
                message("column %1: '%2' is not the path of a parameter", number, QString::fromUtf8(heading.left(60))));
        column.prefix = column.path + '.';
        if (column.view != Prm::View::defaultViewId())
            column.prefix += Prm::View(column.view).toString().toLatin1();
        return column;
    }

    // --- rows --------------------------------------------------------------------------------------------------------

    template <class Visit> void readRows(const Visit& visit) {
        while (m_reader.read()) {
            const auto& cells = m_reader.cells();
            if (cells.size() > m_columns.size() + 1)
                fail(message("%1 cells, but %2 headings", cells.size(), m_columns.size() + 1));
            m_time = timeIn(cells.front());
            for (std::size_t i = 1; i < cells.size(); ++i) {
                if (!trimmed(cells[i]).empty())
                    visit(cells[i], m_columns[i - 1]);
            }
        }
    }

    double timeIn(Cell cell) const {
        const Number number(cell, m_reader.separator());
        const double frame = number.value * m_framesPerUnit;
        if (!number.isOne || !Prm::Time::fromDouble(frame).isValid())
            fail(message("'%1' is not a time", toText(cell).left(60)));
        return frame;
    }

    void classify(Cell cell, Column& column) {
        QByteArray value;
        while (!column.kind->append(value, cell, m_reader.separator()))
            ++column.kind;
        if (column.count++ == 0)
            column.first = toBytes(cell);
        column.isOneValue = column.isOneValue && toView(column.first) == cell;
    }

    void addKeyframe(Cell cell, Column& column) {
        if (column.isOneValue)
            return;
        if (m_timeLine != m_reader.line())
            writeTime();
        QByteArray& lines = column.keyframes;
        const int before = lines.size();
        lines += column.prefix;
        lines += "keyframes.append( Key( ";
        lines += m_timeText;
        lines += ", ";
        column.kind->append(lines, cell, m_reader.separator());
        lines += column.kind->interpolation;
        m_budget.spend(lines.size() - before);
        ++m_result.keyframes;
    }

    void writeTime() {
        m_timeLine = m_reader.line();
        m_timeText = QByteArray::number(m_time);
        const Prm::Time time = Prm::Time::fromDouble(m_time);
        const Prm::Time written = Prm::writtenTime(time);
        m_roundedTimes += written != time ? 1 : 0;
        m_farthest = std::max(m_farthest, std::abs(written - time));
        m_times.push_back(written.toDouble());
    }

    // --- the text ----------------------------------------------------------------------------------------------------

    QByteArray written() {
        QByteArray text;
        for (const QByteArray& line : newestHeader())
            text += line + '\n';
        std::map<QByteArray, std::vector<const Column*>> parameters;
        std::vector<QByteArray> order;
        for (const Column& column : m_columns) {
            std::vector<const Column*>& views = parameters[column.path];
            if (views.empty())
                order.push_back(column.path);
            if (column.count > 0)
                views.push_back(&column);
        }
        for (const QByteArray& path : order)
            text += linesOf(path, parameters.at(path));
        return text;
    }

    QByteArray linesOf(const QByteArray& path, const std::vector<const Column*>& views) {
        if (views.empty())
            return {};
        ++m_result.parameters;
        const auto valueOf = [this](const Column& column) {
            QByteArray value;
            column.kind->append(value, toView(column.first), m_reader.separator());
            return value;
        };
        if (views.size() == 1 && views.front()->view == 0 && views.front()->isOneValue)
            return path + ".value=" + valueOf(*views.front()) + '\n';
        QByteArray list;
        QByteArray values;
        QByteArray keyframes;
        for (const Column* const column : views) {
            const QByteArray id = QByteArray::number(column->view);
            list += (list.isEmpty() ? "" : ", ") + id;
            keyframes += column->keyframes;
            values += path + ".view[" + id + "].value=" + valueOf(*column) + '\n';
        }
        return path + ".views=[" + list + "]\n" + keyframes + values;
    }

    CsvReader m_reader;
    const double m_framesPerSecond;
    double m_framesPerUnit = 1;
    std::vector<Column> m_columns;
    SampleImport m_result;
    double m_time = 0;
    /// Of the time that is written in the lines.
    int m_timeLine = 0;
    QByteArray m_timeText;
    /// As project text has them.
    std::vector<double> m_times;
    int m_roundedTimes = 0;
    double m_farthest = 0;
    Budget m_budget{mostBytes, "more than %1 bytes of project text"};
};

} // namespace

SampleImport importSamples(const QByteArray& table, double framesPerSecond) {
    return Samples(table, framesPerSecond).imported();
}

} // namespace Tool
