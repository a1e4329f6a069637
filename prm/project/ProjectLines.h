#pragma once

#include "prm/Export.h"

#include <QByteArray>
#include <QString>
#include <QVector>

namespace Prm::detail {

/// One line of a text that is being read. It is copied only if it has to be kept.
struct ProjectLine {
    int number = 0;
    const char* start = nullptr;
    int size = 0;

    QByteArray bytes() const { return {start, size}; }
    QString text() const;
    /// Takes the memory of a former text, if it is not shared. False for bytes that are no UTF-8.
    bool readInto(QString& text) const;
    /// Whether the line begins as those that version control writes around the sides of a conflict: with seven or
    /// more of one of the characters `<=>|`, then a blank or the end.
    bool isConflictMarker() const;
    /// Whether the line has one of the keys of project text after a path.
    bool hasKnownKey() const;
};

/// The lines of a text, without their ends: a line feed, and carriage returns before it or at the end of the text. A
/// byte-order mark is skipped.
class ProjectLines {
public:
    explicit ProjectLines(const QByteArray& text) : m_text(text) { rewind(); }

    void rewind();
    bool atEnd() const { return m_position >= m_text.size(); }
    ProjectLine next();
    ProjectLine firstLine() const { return ProjectLines(m_text).next(); }
    /// The next line is taken if the function returns true.
    template <class Function> bool takeIf(const Function& function) {
        const int position = m_position;
        const int number = m_number;
        if (!atEnd() && function(next()))
            return true;
        m_position = position;
        m_number = number;
        return false;
    }
    /// Takes the lines that follow the one that was taken last and add keyframes to the same list as it, in ascending
    /// order of their times; equal ones keep their order. The result of reading them is the same.
    QVector<ProjectLine> takeSorted(const ProjectLine& last);

private:
    QByteArray m_text;
    int m_position = 0;
    int m_number = 0;
};

/// The first line that is a marker of a conflict; without one, its number is 0.
PRM_EXPORT ProjectLine conflictMarkerIn(const QByteArray& text);

} // namespace Prm::detail
