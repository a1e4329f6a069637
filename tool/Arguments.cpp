#include "tool/Arguments.h"

#include "tool/Problem.h"
#include "tool/Streams.h"

namespace Tool {

Arguments::Arguments(const QString& command, const QString& purpose, const QStringList& words)
    : m_command(command), m_words(QStringList(command) + words) {
    m_parser.setApplicationDescription(purpose);
    option({QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Shows this text."));
}

Arguments& Arguments::positional(const QString& name, const QString& purpose, const QString& syntax) {
    m_parser.addPositionalArgument(name, purpose, syntax);
    m_positionals.append(name);
    return *this;
}

Arguments& Arguments::option(const QStringList& names, const QString& purpose, const QString& value) {
    m_parser.addOption(QCommandLineOption(names, purpose, value));
    for (const QString& name : value.isEmpty() ? QStringList() : names)
        m_takingValues.insert((name.size() == 1 ? QStringLiteral("-") : QStringLiteral("--")) + name);
    return *this;
}

Arguments& Arguments::tableOptions() {
    option({QStringLiteral("json")}, QStringLiteral("Writes JSON."));
    return option({QStringLiteral("csv")}, QStringLiteral("Writes comma-separated values."));
}

Arguments& Arguments::example(const QString& line) {
    m_examples.append(line);
    return *this;
}

/// Negative numbers behind "--", or they would be taken for options. All others keep their order.
QStringList Arguments::wordsToParse() const {
    const int end = m_words.contains(QLatin1String("--")) ? m_words.indexOf(QLatin1String("--")) : m_words.size();
    QStringList words;
    QStringList numbers;
    for (int i = 0; i < end; ++i) {
        const QString& word = m_words.at(i);
        const bool takesValue = m_takingValues.contains(word);
        if (takesValue && i + 1 == end)
            throw WrongUse(QStringLiteral("%1 needs a value").arg(word));
        bool isNumber = false;
        word.toDouble(&isNumber);
        (isNumber && word.startsWith(QLatin1Char('-')) ? numbers : words).append(word);
        if (takesValue)
            words.append(m_words.at(++i));
    }
    return words + QStringList(QStringLiteral("--")) + numbers + m_words.mid(end + 1);
}

bool Arguments::read(int least, int most) {
    if (!m_parser.parse(wordsToParse()))
        throw WrongUse(m_parser.errorText());
    if (has(QStringLiteral("help"))) {
        // Qt names the program by the path under which it was started.
        QString help = m_parser.helpText();
        const int end = help.indexOf(QLatin1String(" [options]"));
        help.replace(0, end, QStringLiteral("Usage: prm ") + m_command);
        print((help + QStringLiteral("\nExample:\n  ") + m_examples.join(QLatin1String("\n  ")) + QLatin1Char('\n'))
                  .toUtf8());
        return false;
    }
    if (rest().size() < least)
        throw WrongUse(QStringLiteral("%1 is missing").arg(m_positionals.value(rest().size())));
    if (most >= 0 && rest().size() > most)
        throw WrongUse(QStringLiteral("unexpected argument '%1'").arg(rest().at(most)));
    return true;
}

TableForm Arguments::tableForm() const {
    const bool isJson = has(QStringLiteral("json"));
    const bool isCsv = has(QStringLiteral("csv"));
    if (isJson && isCsv)
        throw WrongUse(QStringLiteral("--json and --csv exclude each other"));
    return isJson ? TableForm::Json : isCsv ? TableForm::Csv : TableForm::Plain;
}

} // namespace Tool
