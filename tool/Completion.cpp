#include "tool/Completion.h"

#include "prm/document/ProjectText.h"
#include "tool/Arguments.h"
#include "tool/Commands.h"
#include "tool/Streams.h"

#include <QDir>
#include <QFileInfo>

#include <utility>

namespace Tool {

namespace {

using Value = Syntax::Value;

/// What is known before the last word.
struct Before {
    /// What the last word is a value of; null for an argument or option.
    const Value* value = nullptr;
    bool isInFileList = false;
    bool areOptionsOver = false;
    QStringList arguments;
    /// The first in a list of files, and the first that an option names.
    QString listed;
    QString named;
};

bool isFile(const Value& value) {
    return QStringList{"FILE", "OUT", "TABLE", "A", "B"}.contains(value.name);
}

Before readBefore(const Syntax& syntax, const QStringList& words) {
    Before before;
    for (const QString& word : words) {
        const Value* const value = std::exchange(before.value, nullptr);
        before.isInFileList = before.isInFileList && isListed(word);
        if (value)
            before.named = before.named.isNull() && isFile(*value) ? word : before.named;
        else if (before.isInFileList)
            before.listed = before.listed.isNull() ? word : before.listed;
        else if (before.areOptionsOver || isListed(word))
            before.arguments.append(word);
        else if (word == "--")
            before.areOptionsOver = true;
        else if (word == fileListOption && syntax.hasFileList)
            before.isInFileList = true;
        else
            before.value = syntax.valueAfter(word);
    }
    return before;
}

/// The argument that comes next; null where none is expected.
const Value* nextArgument(const Syntax& syntax, const Before& before) {
    const auto count = syntax.positionals.size();
    const auto given = static_cast<std::size_t>(before.arguments.size()) + (before.listed.isNull() ? 0 : 1);
    if (given < count)
        return &syntax.positionals[given];
    return syntax.isOpen ? &syntax.positionals.back() : nullptr;
}

QString projectFile(const Syntax& syntax, const Before& before) {
    if (!before.listed.isNull())
        return before.listed;
    const bool isFirst = !syntax.positionals.empty() && isFile(syntax.positionals.front());
    return isFirst ? before.arguments.value(0) : before.named;
}

/// What a terminal shows as it is. Other names cannot be typed.
bool canBeTyped(const QString& name) {
    return printable(name) == name && !name.contains(QChar::ReplacementCharacter);
}

/// Parameters and groups one level below what is typed so far; after a group comes its dot.
QStringList pathsIn(const QString& file, const QString& typed) {
    constexpr qint64 largest = 256LL << 20;
    if (!QFileInfo(file).isFile())
        return {};
    const ProjectText text(readInput(file, largest));
    const QString above = typed.left(typed.lastIndexOf('.') + 1);
    const QByteArray name = typed.mid(above.size()).toUtf8();
    const int group = above.isEmpty() ? ProjectText::root : text.findNode(toView(above.chopped(1).toUtf8()));
    QStringList paths;
    for (const int child : group < 0 ? std::vector<int>() : text.node(group).children) {
        const ProjectText::Node& node = text.node(child);
        if (node.name.substr(0, static_cast<std::size_t>(name.size())) != toView(name))
            continue;
        const QString path = above + toText(node.name);
        if (!canBeTyped(path))
            continue;
        if (node.isParameter())
            paths.append(path);
        if (!node.children.empty())
            paths.append(path + '.');
    }
    return paths;
}

/// The text so that a shell reads it again, within a quotation or without one.
QString quoted(const QString& text, QChar quote) {
    const QString inWord = "_./:=@%+,-";
    QString typed;
    for (const QChar c : text) {
        const bool isPlain = c.isLetterOrNumber() || c.unicode() > 0x7F || inWord.contains(c);
        if (quote == '\'')
            typed += c == '\'' ? QString("'\\''") : QString(c);
        else if (quote.isNull() ? !isPlain : QString("\"\\$`").contains(c))
            typed += QString("\\") + c;
        else
            typed += c;
    }
    return typed;
}

/// A word as a shell reads it, and the quotation that is open at its end.
struct Unquoted {
    QString text;
    QChar quote;
    int quoteAt = -1;
};

Unquoted unquoted(const QString& word) {
    Unquoted result;
    result.text = word.startsWith("~/") ? QDir::homePath() : QString();
    for (int i = result.text.isEmpty() ? 0 : 1; i < word.size(); ++i) {
        const QChar c = word.at(i);
        const QString next = word.mid(i + 1, 1);
        const bool isEscaped = result.quote.isNull() || (result.quote == '"' && QString("\"\\$`").contains(next));
        if (c == '\\' && isEscaped) {
            result.text += next;
            ++i;
        } else if (c == result.quote) {
            result.quote = QChar();
        } else if (result.quote.isNull() && (c == '\'' || c == '"')) {
            result.quote = c;
            result.quoteAt = i;
        } else {
            result.text += c;
        }
    }
    return result;
}

/// The shell replaces so many characters at the end of a word; of an open quotation, what is in it.
TypedEnd endOf(const QString& word, int replaced) {
    const Unquoted whole = unquoted(word);
    const int start = std::max(word.size() - replaced, whole.quote.isNull() ? 0 : whole.quoteAt + 1);
    return {unquoted(word.left(start)).text, whole.quote};
}

/// The offers that begin with `word`, in the form for the shell.
QByteArray written(const QStringList& offers, const QString& word, const TypedEnd& end) {
    QStringList found;
    bool isOpen = false;
    for (const QString& offer : offers) {
        if (!offer.startsWith(word) || !offer.startsWith(end.head))
            continue;
        found.append(quoted(offer.mid(end.head.size()), end.quote));
        isOpen = isOpen || offer.endsWith('.') || offer.endsWith('=');
    }
    return message("words%1\n", isOpen ? " nospace" : "").toUtf8() +
           (found.isEmpty() ? QByteArray() : found.join('\n').toUtf8() + '\n');
}

/// PATTERN=TYPE, or its first part alone.
QStringList rulesFor(const QString& file, const QString& word) {
    const int equals = word.lastIndexOf('=');
    QStringList rules;
    if (equals < 0)
        return pathsIn(file, word).replaceInStrings(QRegExp("([^.])$"), "\\1=");
    for (const char* const kind : {"switch", "number", "point", "text"})
        rules.append(word.left(equals + 1) + kind);
    return rules;
}

QByteArray offersOf(const Value& value, const QString& file, const QString& word, const TypedEnd& end) {
    if (!value.choices.isEmpty())
        return written(value.choices, word, end);
    if (isFile(value))
        return "files\n";
    if (value.name == "PATTERN=TYPE")
        return written(rulesFor(file, word), word, end);
    return written(value.name == "PATTERN" ? pathsIn(file, word) : QStringList(), word, end);
}

QStringList optionNames(const Syntax& syntax) {
    QStringList names;
    for (const Syntax::Option& option : syntax.options)
        names += option.names;
    return names;
}

QStringList commandNames() {
    QStringList names{"--help", "--version", "help"};
    for (const Command& command : commands())
        names.append(command.name);
    return names;
}

} // namespace

QByteArray offersFor(const Syntax& syntax, const QStringList& words, const TypedEnd& end) {
    const QString word = words.isEmpty() ? QString() : words.last();
    const Before before = readBefore(syntax, words.mid(0, words.size() - 1));
    const QString file = projectFile(syntax, before);
    if (before.value)
        return offersOf(*before.value, file, word, end);
    const int equals = word.indexOf('=');
    const Value* const inWord = equals < 0 || before.areOptionsOver ? nullptr : syntax.valueAfter(word.left(equals));
    if (inWord)
        return offersOf(*inWord, file, word.mid(equals + 1), {end.head.mid(equals + 1), end.quote});
    if (word.startsWith('-') && !before.areOptionsOver)
        return written(optionNames(syntax), word, end);
    if (before.isInFileList)
        return "files\n";
    const Value* const argument = nextArgument(syntax, before);
    return argument ? offersOf(*argument, file, word, end) : QByteArray("words\n");
}

void completeCommandLine(const QStringList& typed) {
    QStringList words;
    for (const QString& word : typed.mid(1))
        words.append(unquoted(word).text);
    const TypedEnd end = endOf(words.isEmpty() ? QString() : typed.last(), typed.value(0).toInt());
    const QString name = words.value(0);
    if (words.size() <= 1 || (name == "help" && words.size() == 2))
        return print(written(commandNames(), words.value(words.size() - 1), end));
    const auto& all = commands();
    const auto command = std::find_if(all.begin(), all.end(), [&](const Command& c) { return name == c.name; });
    if (command == all.end())
        return;
    Arguments arguments(command->name, command->purpose, words.mid(1));
    arguments.completeLastWord(end);
    command->run(arguments);
}

} // namespace Tool
