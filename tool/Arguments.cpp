#include "tool/Arguments.h"

#include "tool/Problem.h"
#include "tool/Streams.h"

namespace Tool {

namespace {

QString dashed(const QString& name) {
    return (name.size() == 1 ? "-" : "--") + name;
}

} // namespace

Arguments::Arguments(const QString& command, const QString& purpose, const QStringList& words)
    : m_command(command), m_words(QStringList(command) + words) {
    m_parser.setApplicationDescription(purpose);
    option({"h", "help"}, "Shows this text.");
    option({"q", "quiet"}, "Writes only errors (exit code 2) to standard error, no remarks.");
}

Arguments& Arguments::positional(const QString& name, const QString& purpose, const QString& syntax,
                                 const QStringList& choices) {
    m_parser.addPositionalArgument(name, purpose, syntax);
    m_syntax.positionals.push_back({name, choices});
    m_needed += syntax.startsWith('[') ? 0 : 1;
    m_syntax.isOpen = syntax.contains("...");
    return *this;
}

Arguments& Arguments::option(const QStringList& names, const QString& purpose, const QString& value,
                             const QStringList& choices) {
    m_parser.addOption(QCommandLineOption(names, purpose, value));
    QStringList words;
    std::transform(names.begin(), names.end(), std::back_inserter(words), dashed);
    const bool listsChoices = choices.isEmpty() && value.contains('|');
    m_syntax.options.push_back({words, {value, listsChoices ? value.split('|') : choices}});
    return *this;
}

Arguments& Arguments::severalFiles() {
    m_syntax.hasFileList = true;
    return option(QStringList(fileListOption.mid(2)), "Several files, up to the next option, in place of FILE.",
                  "FILE...");
}

Arguments& Arguments::tableOptions() {
    return option("json", "Writes JSON. Numbers that it does not have are \"inf\", \"-inf\" and \"nan\".")
        .option("csv", "Writes comma-separated values.");
}

Arguments& Arguments::example(const QString& line) {
    m_examples.append(line);
    return *this;
}

/// All words but the list of files.
QStringList Arguments::takeFiles(const QStringList& words) {
    const int end = words.contains("--") ? words.indexOf("--") : words.size();
    const int list = m_syntax.hasFileList ? words.mid(0, end).indexOf(fileListOption) : -1;
    if (list < 0)
        return words;
    int after = list + 1;
    while (after < end && isListed(words.at(after)))
        m_files.append(words.at(after++));
    if (after == list + 1)
        throw WrongUse("%1 needs a file", fileListOption);
    return words.mid(0, list) + takeFiles(words.mid(after));
}

/// Negative numbers after "--"; otherwise they would be read as options. All others keep their order.
QStringList Arguments::wordsToParse() {
    const QStringList given = takeFiles(m_words);
    const int end = given.contains("--") ? given.indexOf("--") : given.size();
    QStringList words;
    QStringList numbers;
    for (int i = 0; i < end; ++i) {
        const QString& word = given.at(i);
        const bool takesValue = m_syntax.valueAfter(word);
        if (takesValue && i + 1 == end)
            throw WrongUse("%1 needs a value", word);
        bool isNumber = false;
        word.toDouble(&isNumber);
        (isNumber && word.startsWith('-') ? numbers : words).append(word);
        if (takesValue)
            words.append(given.at(++i));
    }
    return words + QStringList("--") + numbers + given.mid(end + 1);
}

QStringList Arguments::files() const {
    const bool takesOnlyFiles = m_syntax.positionals.size() == 1 && m_syntax.isOpen;
    if (takesOnlyFiles)
        return rest() + m_files;
    return m_files.isEmpty() ? QStringList(rest().mid(0, 1)) : m_files;
}

QStringList Arguments::values(const QString& option) const {
    const bool isDeclared = std::any_of(m_syntax.options.begin(), m_syntax.options.end(),
                                        [&](const auto& each) { return each.names.contains(dashed(option)); });
    return isDeclared ? m_parser.values(option) : QStringList();
}

bool Arguments::read() {
    if (m_typedEnd) {
        print(offersFor(m_syntax, m_words.mid(1), *m_typedEnd));
        return false;
    }
    if (!m_parser.parse(wordsToParse()))
        throw WrongUse("%1", m_parser.errorText());
    if (has("help")) {
        // Qt names the program by the path under which it was started.
        QString help = m_parser.helpText();
        help.replace(0, help.indexOf(" [options]"), "Usage: prm " + m_command);
        print((help + "\nExample:\n  " + m_examples.join("\n  ") + '\n').toUtf8());
        return false;
    }
    if (has("quiet"))
        beQuiet();
    const int given = rest().size() + (m_files.isEmpty() ? 0 : 1);
    if (given < m_needed)
        throw WrongUse("%1 is missing", m_syntax.positionals[static_cast<std::size_t>(given)].name);
    if (!m_syntax.isOpen && given > m_needed)
        throw WrongUse("unexpected argument '%1'", rest().at(rest().size() - (given - m_needed)));
    return true;
}

bool Arguments::hasFirstOf(const char* one, const char* other) const {
    if (has(one) == has(other))
        throw WrongUse("one of %1 and %2 is needed", dashed(one), dashed(other));
    return has(one);
}

TableForm Arguments::tableForm() const {
    if (has("json") && has("csv"))
        throw WrongUse("--json and --csv exclude each other");
    return has("json") ? TableForm::Json : has("csv") ? TableForm::Csv : TableForm::Plain;
}

} // namespace Tool
