#include "prm/document/Budget.h"
#include "prm/document/Problem.h"
#include "prm/document/Upgrading.h"
#include "prm/document/ValueText.h"
#include "prm/exchange/Csv.h"
#include "prm/exchange/SampleHeading.h"
#include "prm/exchange/SampleTable.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <map>
#include <set>

namespace Prm::document {

namespace {

using Cell = std::string_view;

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
        isOne = !text.empty() && stop == text.data() + text.size() && error == std::errc() && std::isfinite(value);
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
    ValueType<QString>::write(text, toText(cell));
    line += text.toUtf8();
    return true;
}

/// "1 000", as people write a number; the blank may also be one that does not break a line, or an apostrophe.
bool hasThousands(Cell cell) {
    QByteArray text = toBytes(trimmed(cell));
    for (const char* const blank : {"\xC2\xA0", "\xE2\x80\xAF", "\xE2\x80\x89", "'"})
        text.replace(blank, " ");
    const int dot = static_cast<int>(std::min(toView(text).find_first_of(".,"), static_cast<std::size_t>(text.size())));
    const QList<QByteArray> groups = text.left(dot).split(' ');
    for (int i = 0; i < groups.size(); ++i) {
        const bool isSigned = i == 0 && (groups[i].startsWith('-') || groups[i].startsWith('+'));
        const QByteArray digits = groups[i].mid(isSigned ? 1 : 0);
        const bool areDigits = std::all_of(digits.begin(), digits.end(), [](char c) { return c >= '0' && c <= '9'; });
        if (!areDigits || digits.isEmpty() || digits.size() > 3 || (i > 0 && digits.size() != 3))
            return false;
    }
    return groups.size() > 1;
}

/// What the cells of a column are, if all of them are that. No cell is of two kinds, save texts.
struct CellKind {
    bool (*append)(QByteArray& line, Cell cell, char separator);
    const char* interpolation;
};

constexpr CellKind kinds[] = {{appendNumber, ", Linear ) )\n"},
                              {appendPoint, ", Linear ) )\n"},
                              {appendSwitch, ", Constant ) )\n"},
                              {appendText, ", Constant ) )\n"}};
constexpr const CellKind* texts = std::end(kinds) - 1;

const CellKind* kindOf(Cell cell, char separator) {
    QByteArray value;
    return std::find_if(std::begin(kinds), texts,
                        [&](const CellKind& kind) { return kind.append(value, cell, separator); });
}

struct Column {
    QByteArray path;
    /// Of the lines of keyframes.
    QByteArray prefix;
    quint32 view = 0;
    /// A column without a heading has no cells.
    bool isEmpty = false;
    const CellKind* kind = texts;
    /// The first line in which a cell is of another kind than those before, 0 without one.
    int mixedLine = 0;
    bool areThousands = true;
    QByteArray first;
    bool isOneValue = true;
    int count = 0;
    QByteArray keyframes;
};

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
        noteKinds();
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
        const auto said = [this](const QString& place, const Problem& problem) { fail(place + problem.text()); };
        try {
            m_framesPerUnit = framesPerUnit(toText(cells.front()), m_framesPerSecond);
        } catch (const Problem& problem) {
            said({}, problem);
        }
        for (std::size_t i = 1; i < cells.size(); ++i) {
            try {
                m_columns.push_back(columnOf(toBytes(cells[i])));
            } catch (const Problem& problem) {
                said(message("column %1: '%2' ", i + 1, toText(cells[i]).left(60)), problem);
            }
        }
        if (std::all_of(m_columns.begin(), m_columns.end(), [](const Column& column) { return column.isEmpty; }))
            fail("there is only one column");
        checkNames();
    }

    Column columnOf(const QByteArray& heading) {
        Column column;
        column.isEmpty = trimmed(toView(heading)).empty();
        if (column.isEmpty)
            return column;
        const SampleHeading read = readSampleHeading(heading);
        if (!m_names[read.path].insert(read.view.id()).second)
            throw Problem("has a column already");
        column.path = read.path;
        column.view = read.view.id();
        column.prefix = column.path + '.';
        if (read.view != View())
            column.prefix += read.view.toString().toLatin1();
        return column;
    }

    /// Readers of project text take "a.values" for a value of a, if there is an a.
    void checkNames() const {
        for (const auto& [path, views] : m_names) {
            for (int dot = path.indexOf('.'); dot > 0; dot = path.indexOf('.', dot + 1)) {
                const QByteArray line = path.left(dot) + '.' + path.mid(dot + 1).replace('.', '_') + "=0";
                if (m_names.count(path.left(dot)) != 0 && readLine(toView(line)).key != Key::None)
                    fail(message("'%1': readers take it for a line of '%2'; one of them needs another name",
                                 QString::fromUtf8(path), QString::fromUtf8(path.left(dot))));
            }
        }
    }

    // --- rows --------------------------------------------------------------------------------------------------------

    template <class Visit> void readRows(const Visit& visit) {
        while (m_reader.read()) {
            const auto& cells = m_reader.cells();
            if (areBlank(cells, 0))
                continue;
            m_time = timeIn(cells.front());
            if (cells.size() > m_columns.size() + 1 && !areBlank(cells, m_columns.size() + 1))
                fail(message("%1 cells, but %2 headings", cells.size(), m_columns.size() + 1));
            const std::size_t count = std::min(cells.size(), m_columns.size() + 1);
            for (std::size_t i = 1; i < count; ++i) {
                if (trimmed(cells[i]).empty())
                    continue;
                if (m_columns[i - 1].isEmpty)
                    fail(message("column %1 has no heading", i + 1));
                visit(cells[i], m_columns[i - 1]);
            }
        }
    }

    /// Spreadsheets fill rows and columns up with empty cells.
    static bool areBlank(const std::vector<Cell>& cells, std::size_t first) {
        return std::all_of(cells.begin() + static_cast<std::ptrdiff_t>(first), cells.end(),
                           [](Cell cell) { return trimmed(cell).empty(); });
    }

    double timeIn(Cell cell) const {
        const Number number(cell, m_reader.separator());
        const double frame = number.value * m_framesPerUnit;
        if (!number.isOne || !Time::fromDouble(frame).isValid())
            fail(message("'%1' is not a time", toText(cell).left(60)));
        return frame;
    }

    void classify(Cell cell, Column& column) {
        if (column.count++ == 0) {
            column.first = toBytes(cell);
            column.kind = kindOf(cell, m_reader.separator());
        } else if (column.mixedLine == 0) {
            checkKind(cell, column);
        }
        column.isOneValue = column.isOneValue && toView(column.first) == cell;
        column.areThousands = column.areThousands && column.kind != std::begin(kinds) && hasThousands(cell);
    }

    void checkKind(Cell cell, Column& column) {
        QByteArray value;
        const bool isOther = column.kind == texts ? appendNumber(value, cell, m_reader.separator())
                                                  : !column.kind->append(value, cell, m_reader.separator());
        if (!isOther)
            return;
        column.kind = texts;
        column.mixedLine = m_reader.line();
    }

    void noteKinds() {
        for (const Column& column : m_columns) {
            const QString path = QString::fromUtf8(column.path);
            if (column.mixedLine > 0)
                m_result.changes += message("'%1' has cells of different kinds, as line %2 shows, and is read as texts",
                                            path, column.mixedLine);
            else if (column.count > 0 && column.areThousands)
                m_result.changes += message("'%1' is read as %2, because a number has no blanks between digits", path,
                                            QString(column.kind == texts ? "texts" : "points"));
        }
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
        const Time time = Time::fromDouble(m_time);
        const Time written = writtenTime(time);
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
            if (column.isEmpty)
                continue;
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
    /// The views of each parameter.
    std::map<QByteArray, std::set<quint32>> m_names;
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

int firstLineOutsideUtf8(const QByteArray& table) {
    const QList<QByteArray> lines = table.split('\n');
    const auto found = std::find_if(lines.begin(), lines.end(), [](const auto& line) { return !isUtf8(toView(line)); });
    return static_cast<int>(std::distance(lines.begin(), found)) + 1;
}

} // namespace

SampleImport importSamples(const QByteArray& table, double framesPerSecond) {
    if (!isUtf8(toView(table)))
        throw Problem("%1: the table is not UTF-8; save it as UTF-8", firstLineOutsideUtf8(table));
    return Samples(table, framesPerSecond).imported();
}

} // namespace Prm::document
