#include "tool/Arguments.h"
#include "tool/Commands.h"
#include "tool/Completion.h"
#include "tool/Problem.h"
#include "tool/ProgressLine.h"
#include "tool/Streams.h"

#include <QCoreApplication>
#include <QFile>
#include <QTextCodec>

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

using namespace Tool;

namespace {

QString help() {
    QString text = "Usage: prm COMMAND [ARGUMENTS]\n\nLooks into project texts of animated parameters.\n\nCommands:\n";
    for (const Command& command : commands())
        text += message("  %1%2\n", QString(command.name).leftJustified(14), command.purpose);
    return text + "\nprm COMMAND --help says more, with an example. '-' is standard input.\n"
                  "Exit codes: 0 fine, 1 findings, differences or losses, 2 wrong use or a file that cannot be read.\n";
}

template <class... Parts> int fail(const char* pattern, const Parts&... parts) {
    tellError(message(pattern, parts...));
    return Unusable;
}

int run(const Command& command, const QStringList& words) {
    try {
        Arguments arguments(command.name, command.purpose, words);
        return command.run(arguments);
    } catch (const WrongUse& problem) {
        return fail("%1: %2 (prm %1 --help)", command.name, problem.text());
    } catch (const std::bad_alloc&) {
        return fail("out of memory");
    }
}

int runFirst(const QStringList& words) {
    const QString name = words.value(0);
    if (name == "help" && words.size() > 1)
        return runFirst({words[1], "--help"});
    if (name == "--help" || name == "-h" || name == "help") {
        print(help().toUtf8());
        return Fine;
    }
    if (name == "--version") {
        print(QByteArrayLiteral("prm " PRM_VERSION "\n"));
        return Fine;
    }
    if (name == "complete") { // for the shell, in tool/shell/
        completeCommandLine(words.mid(1));
        return Fine;
    }
    const auto& all = commands();
    const auto command = std::find_if(all.begin(), all.end(), [&](const Command& c) { return name == c.name; });
    if (command != all.end())
        return run(*command, words.mid(1));
    return name.isEmpty() ? fail("no command (prm --help)") : fail("no command '%1' (prm --help)", name);
}

/// A file opened later must not take the number of a standard stream that was closed.
void occupyStandardStreams() {
    int number = open("/dev/null", O_RDONLY);
    while (number >= 0 && number <= STDERR_FILENO)
        number = open("/dev/null", O_RDONLY);
    if (number >= 0)
        close(number);
}

} // namespace

int main(int argc, char** argv) {
    occupyStandardStreams();
    // A closed pipe is an error of writing, not the end of the program.
    std::signal(SIGPIPE, SIG_IGN);
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationVersion(PRM_VERSION);
    showProgress();
    // Names of files and values are as in project texts, whatever the locale says.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    QStringList words;
    for (int i = 1; i < argc; ++i) {
        words.append(QFile::decodeName(argv[i]));
        if (QFile::encodeName(words.last()) != argv[i])
            return fail("'%1' is not UTF-8", printable(words.last()));
    }
    try {
        return runFirst(words);
    } catch (const Problem& problem) {
        return fail("%1", problem.text());
    }
}
