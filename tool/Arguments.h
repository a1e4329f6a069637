#pragma once

#include "tool/Completion.h"
#include "tool/Table.h"

#include <QCommandLineParser>
#include <QStringList>

#include <optional>

namespace Tool {

/// The command line of one command: declared by the command, then read, then asked.
class Arguments {
public:
    Arguments(const QString& command, const QString& purpose, const QStringList& words);

    // --- declare -----------------------------------------------------------------------------------------------------
    // What a value is called says what the shell offers for it (see `Completion.h`), unless there are choices.

    /// The next argument without a name. `syntax` says how often it comes, if not once: "[NAME...]", "NAME...".
    Arguments& positional(const QString& name, const QString& purpose, const QString& syntax = {},
                          const QStringList& choices = {});
    Arguments& option(const QStringList& names, const QString& purpose, const QString& value = {},
                      const QStringList& choices = {});
    Arguments& option(const char* name, const QString& purpose, const QString& value = {},
                      const QStringList& choices = {}) {
        return option(QStringList(QLatin1String(name)), purpose, value, choices);
    }
    /// --files, after which come several files in place of FILE, up to the next option.
    Arguments& severalFiles();
    /// --json and --csv.
    Arguments& tableOptions();
    /// Shown at the end of the help: the text of a command line that works.
    Arguments& example(const QString& line);

    // --- read --------------------------------------------------------------------------------------------------------
    /// False when the user asked for help, which is then printed. Throws `WrongUse` for unknown options, and for more
    /// or fewer positional arguments than were declared.
    bool read();
    /// From now on, `read` only prints what the last word can be, and returns false.
    void completeLastWord(const TypedEnd& end) { m_typedEnd = end; }

    // --- ask ---------------------------------------------------------------------------------------------------------
    QStringList rest() const { return m_parser.positionalArguments(); }
    QString file() const { return files().value(0); }
    /// One, or those after --files; with a command that takes nothing but files all arguments.
    QStringList files() const;
    /// Whether what is written has to name the file.
    bool hasSeveralFiles() const { return !m_files.isEmpty() || files().size() > 1; }
    /// The arguments after FILE.
    QStringList patterns() const { return rest().mid(m_files.isEmpty() ? 1 : 0); }
    bool has(const QString& option) const { return m_parser.isSet(option); }
    QString value(const QString& option) const { return m_parser.value(option); }
    /// None of an option that is not declared.
    QStringList values(const QString& option) const;
    /// Which of two options is given. Throws `WrongUse` when it is neither or both.
    bool hasFirstOf(const char* one, const char* other) const;
    TableForm tableForm() const;

private:
    QStringList wordsToParse();
    QStringList takeFiles(const QStringList& words);

    QCommandLineParser m_parser;
    Syntax m_syntax;
    int m_needed = 0;
    QString m_command;
    QStringList m_words;
    QStringList m_files;
    QStringList m_examples;
    std::optional<TypedEnd> m_typedEnd;
};

} // namespace Tool
