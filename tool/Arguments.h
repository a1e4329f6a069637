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
    Arguments& positional(const QString& name, const QString& purpose, const QString& syntax = {});
    Arguments& option(const QStringList& names, const QString& purpose, const QString& value = {});
    /// --json and --csv.
    Arguments& tableOptions();
    /// Shown at the end of the help: the text of a command line that works.
    Arguments& example(const QString& line);

    // --- read --------------------------------------------------------------------------------------------------------
    /// False when the user asked for help, which is then printed. Throws `WrongUse` for unknown options, and when there
    /// are fewer positional arguments than `least` or more than `most` (-1: any number).
    bool read(int least, int most);

    // --- ask ---------------------------------------------------------------------------------------------------------
    /// The command and all words behind it, as they were given.
    const QStringList& words() const { return m_words; }
    QStringList rest() const { return m_parser.positionalArguments(); }
    QString file() const { return rest().value(0); }
    QStringList patterns() const { return rest().mid(1); }
    bool has(const QString& option) const { return m_parser.isSet(option); }
    QString value(const QString& option) const { return m_parser.value(option); }
    QStringList values(const QString& option) const { return m_parser.values(option); }
    TableForm tableForm() const;

private:
    QStringList wordsToParse() const;

    QCommandLineParser m_parser;
    QSet<QString> m_takingValues;
    QStringList m_positionals;
    QString m_command;
    QStringList m_words;
    QStringList m_examples;
};

} // namespace Tool
