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
}

Arguments& Arguments::positional(const QString& name, const QString& purpose, const QString& syntax) {
    m_parser.addPositionalArgument(name, purpose, syntax);
    m_positionals.append(name);
    m_needed += syntax.startsWith('[') ? 0 : 1;
    m_isOpen = syntax.contains("...");
    return *this;
}

Arguments& Arguments::option(const QStringList& names, const QString& purpose, const QString& value) {
    m_parser.addOption(QCommandLineOption(names, purpose, value));
    for (const QString& name : value.isEmpty() ? QStringList() : names)
        m_takingValues.insert(dashed(name));
    return *this;
}

Arguments& Arguments::tableOptions() {
    return option("json", "Writes JSON.").option("csv", "Writes comma-separated values.");
}

Arguments& Arguments::example(const QString& line) {
    m_examples.append(line);
    return *this;
}

/// Negative numbers after "--"; otherwise they would be read as options. All others keep their order.
QStringList Arguments::wordsToParse() const {
    const int end = m_words.contains("--") ? m_words.indexOf("--") : m_words.size();
    QStringList words;
    QStringList numbers;
    for (int i = 0; i < end; ++i) {
        const QString& word = m_words.at(i);
        const bool takesValue = m_takingValues.contains(word);
        if (takesValue && i + 1 == end)
            throw WrongUse("%1 needs a value", word);
        bool isNumber = false;
        word.toDouble(&isNumber);
        (isNumber && word.startsWith('-') ? numbers : words).append(word);
        if (takesValue)
            words.append(m_words.at(++i));
    }
    return words + QStringList("--") + numbers + m_words.mid(end + 1);
}

bool Arguments::read() {
    if (!m_parser.parse(wordsToParse()))
        throw WrongUse("%1", m_parser.errorText());
    if (has("help")) {
        // Qt names the program by the path under which it was started.
        QString help = m_parser.helpText();
        help.replace(0, help.indexOf(" [options]"), "Usage: prm " + m_command);
        print((help + "\nExample:\n  " + m_examples.join("\n  ") + '\n').toUtf8());
        return false;
    }
    if (rest().size() < m_needed)
        throw WrongUse("%1 is missing", m_positionals.value(rest().size()));
    if (!m_isOpen && rest().size() > m_needed)
        throw WrongUse("unexpected argument '%1'", rest().at(m_needed));
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
