#pragma once

#include "tool/Table.h"

#include <QCommandLineParser>
#include <QSet>
#include <QStringList>

namespace Tool {

/// The command line of one command: declared by the command, then read, then asked.
class Arguments {
public:
    Arguments(const QString& command, const QString& purpose, const QStringList& words);

    // --- declare -----------------------------------------------------------------------------------------------------
    /// The next argument without a name. `syntax` says how often it comes, if not once: "[NAME...]", "NAME...".
    Arguments& positional(const QString& name, const QString& purpose, const QString& syntax = {});
    Arguments& option(const QStringList& names, const QString& purpose, const QString& value = {});
    Arguments& option(const char* name, const QString& purpose, const QString& value = {}) {
        return option(QStringList(QLatin1String(name)), purpose, value);
    }
    /// --json and --csv.
    Arguments& tableOptions();
    /// Shown at the end of the help: the text of a command line that works.
    Arguments& example(const QString& line);

    // --- read --------------------------------------------------------------------------------------------------------
    /// False when the user asked for help, which is then printed. Throws `WrongUse` for unknown options, and for more
    /// or fewer positional arguments than were declared.
    bool read();

    // --- ask ---------------------------------------------------------------------------------------------------------
    QStringList rest() const { return m_parser.positionalArguments(); }
    QString file() const { return rest().value(0); }
    QStringList patterns() const { return rest().mid(1); }
    bool has(const QString& option) const { return m_parser.isSet(option); }
    QString value(const QString& option) const { return m_parser.value(option); }
    QStringList values(const QString& option) const { return m_parser.values(option); }
    /// Which of two options is given. Throws `WrongUse` when it is neither or both.
    bool hasFirstOf(const char* one, const char* other) const;
    TableForm tableForm() const;

private:
    QStringList wordsToParse() const;

    QCommandLineParser m_parser;
    QSet<QString> m_takingValues;
    QStringList m_positionals;
    int m_needed = 0;
    bool m_isOpen = false;
    QString m_command;
    QStringList m_words;
    QStringList m_examples;
};

} // namespace Tool
