#include "tool/Arguments.h"
#include "tool/Commands.h"
#include "tool/Problem.h"
#include "tool/Streams.h"

#include <QCoreApplication>
#include <QFile>

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

using namespace Tool;

namespace {

QString help() {
    QString text = QStringLiteral("Usage: prm COMMAND [ARGUMENTS]\n\n"
                                  "Looks into project texts of animated parameters.\n\nCommands:\n");
    for (const Command& command : commands())
        text += QStringLiteral("  %1%2\n").arg(QLatin1String(command.name), -8).arg(QLatin1String(command.purpose));
    return text +
           QStringLiteral(
               "\nprm COMMAND --help says more, with an example. '-' is standard input.\n"
               "Exit codes: 0 fine, 1 findings, differences or losses, 2 wrong use or a file that cannot be read.\n");
}

int fail(const QString& message, const QString& hint = {}) {
    tell(message + hint);
    return Unusable;
}

int run(const Command& command, const QStringList& words) {
    const QString name = QLatin1String(command.name);
    try {
        Arguments arguments(name, QLatin1String(command.purpose), words);
        return command.run(arguments);
    } catch (const WrongUse& problem) {
        return fail(name + QStringLiteral(": ") + QString::fromUtf8(problem.what()),
                    QStringLiteral(" (prm %1 --help)").arg(name));
    } catch (const Problem& problem) {
        return fail(QString::fromUtf8(problem.what()));
    } catch (const std::bad_alloc&) {
        return fail(QStringLiteral("out of memory"));
    }
}

int runFirst(const QStringList& words) {
    const QString name = words.value(0);
    if (name == QLatin1String("help") && words.size() > 1)
        return runFirst({words[1], QStringLiteral("--help")});
    if (name == QLatin1String("--help") || name == QLatin1String("-h") || name == QLatin1String("help")) {
        print(help().toUtf8());
        return Fine;
    }
    if (name == QLatin1String("--version")) {
        print(QByteArrayLiteral("prm " PRM_VERSION "\n"));
        return Fine;
    }
    const auto& all = commands();
    const auto command =
        std::find_if(all.begin(), all.end(), [&](const Command& c) { return name == QLatin1String(c.name); });
    if (command == all.end())
        return fail(name.isEmpty() ? QStringLiteral("no command") : QStringLiteral("no command '%1'").arg(name),
                    QStringLiteral(" (prm --help)"));
    return run(*command, words.mid(1));
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
    QCoreApplication::setApplicationVersion(QStringLiteral(PRM_VERSION));
    QStringList words;
    for (int i = 1; i < argc; ++i)
        words.append(QFile::decodeName(argv[i]));
    try {
        return runFirst(words);
    } catch (const Problem& problem) {
        return fail(QString::fromUtf8(problem.what()));
    }
}
