#include "tool/Arguments.h"
#include "tool/Commands.h"
#include "tool/DifferencesText.h"
#include "tool/OutputFile.h"
#include "tool/Project.h"
#include "tool/Streams.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>

#include <algorithm>

namespace Tool {

namespace {

/// The line before each line of attributes that is written here, so that no other one is removed.
constexpr const char* mark = "# The next line is from prm git install.";
/// Of a line of attributes, with the name of the drivers.
constexpr const char* ending = " merge=prm diff=prm";

/// In quotes as git reads them, where a pattern needs these. Throws `Problem` for what git would not follow.
QByteArray quotedPattern(const QString& pattern) {
    if (pattern.trimmed().isEmpty())
        throw Problem("--files: the pattern is empty");
    if (pattern.startsWith('!') || pattern.startsWith("[attr]"))
        throw Problem("--files %1: git ignores such a pattern; write \\ before its first character", pattern);
    if (pattern.endsWith('/'))
        throw Problem("--files %1: git matches files only; write %1** for all within a folder", pattern);
    const auto isControl = [](QChar each) { return each < ' ' || each == QChar(0x7f); };
    if (std::any_of(pattern.begin(), pattern.end(), isControl))
        throw Problem("--files: the pattern has a control character");
    const bool isPlain = !pattern.startsWith('#') && !pattern.contains(' ') && !pattern.contains('"');
    if (isPlain)
        return pattern.toUtf8();
    return '"' + QString(pattern).replace('\\', R"(\\)").replace('"', R"(\")").toUtf8() + '"';
}

struct GitResult {
    int exitCode = 0;
    QByteArray output;
    QString complaint;
};

GitResult runGit(const QStringList& arguments) {
    QProcess git;
    git.start("git", arguments);
    if (!git.waitForStarted())
        throw Problem("git cannot be started; is it installed?");
    git.closeWriteChannel();
    git.waitForFinished(-1);
    const QString complaint = QString::fromLocal8Bit(git.readAllStandardError()).trimmed();
    if (git.exitStatus() != QProcess::NormalExit)
        throw Problem("git %1 has ended early", arguments.join(' '));
    return {git.exitCode(), git.readAllStandardOutput(), complaint};
}

QByteArray gitOutput(const QStringList& arguments) {
    const GitResult result = runGit(arguments);
    if (result.exitCode != 0)
        throw Problem("git %1: %2", arguments.join(' '), result.complaint);
    return result.output;
}

QString firstLine(const QByteArray& output) {
    return QFile::decodeName(output.left(output.indexOf('\n')));
}

/// How git starts this program: by its name where the shell finds it by that.
QString command() {
    const QString own = QFileInfo(QCoreApplication::applicationFilePath()).canonicalFilePath();
    if (QFileInfo(QStandardPaths::findExecutable("prm")).canonicalFilePath() == own)
        return "prm";
    return '\'' + QString(own).replace('\'', R"('\'')") + '\'';
}

/// Settings and attributes of git, of one repository or of all of the user's.
class GitSetup {
public:
    explicit GitSetup(bool isGlobal) : m_place(isGlobal ? "--global" : "--local") {
        if (!isGlobal)
            gitOutput({"rev-parse", "--git-dir"});
    }

    void install(const QStringList& files) const {
        QList<QByteArray> lines;
        for (const QString& pattern : files)
            lines.append(quotedPattern(pattern) + ending);
        set("merge.prm.name", "project texts, merged by keyframes");
        // What is no project text is merged by lines. What a merge of several bases makes must not be what ours has.
        set("merge.prm.driver", command() + " merge --base %O --ours %A --theirs %B -o %A --path %P; code=$?; "
                                            "[ $code -lt 2 ] && exit $code; "
                                            "git merge-file -L ours -L base -L theirs %A %O %B");
        set("merge.prm.recursive", "binary");
        set("diff.prm.command", command() + " git diff --");
        addAttributes(lines);
    }

    void uninstall() const {
        constexpr int isNotSet = 5;
        for (const char* const name :
             {"merge.prm.name", "merge.prm.driver", "merge.prm.recursive", "diff.prm.command"}) {
            const GitResult result = runGit({"config", m_place, "--unset-all", name});
            if (result.exitCode != 0 && result.exitCode != isNotSet)
                throw Problem("git config: %1", result.complaint);
        }
        const QByteArray before = attributes();
        QList<QByteArray> left;
        for (const QByteArray& line : before.split('\n')) {
            if (!left.isEmpty() && left.last() == mark && line.endsWith(ending))
                left.removeLast();
            else
                left.append(line);
        }
        const QByteArray after = left.join('\n');
        if (after.isEmpty() && !before.isEmpty())
            QFile::remove(attributesFile());
        else if (after != before)
            writeAttributes(after);
    }

private:
    QString attributesFile() const {
        if (m_place == "--local")
            return QDir().absoluteFilePath(firstLine(gitOutput({"rev-parse", "--git-path", "info/attributes"})));
        const GitResult chosen = runGit({"config", "--global", "--type=path", "core.attributesFile"});
        if (chosen.exitCode == 0)
            return firstLine(chosen.output);
        const QString settings = QFile::decodeName(qgetenv("XDG_CONFIG_HOME"));
        return (settings.isEmpty() ? QDir::homePath() + "/.config" : settings) + "/git/attributes";
    }

    void set(const char* name, const QString& value) const { gitOutput({"config", m_place, name, value}); }

    void addAttributes(const QList<QByteArray>& lines) const {
        const QByteArray before = attributes();
        QByteArray after = before.isEmpty() || before.endsWith('\n') ? before : before + '\n';
        const int length = after.size();
        for (const QByteArray& line : lines) {
            if (!after.split('\n').contains(line))
                after += QByteArray(mark) + '\n' + line + '\n';
        }
        if (after.size() > length)
            writeAttributes(after);
    }

    QByteArray attributes() const {
        const QString file = attributesFile();
        return QFile::exists(file) ? readInput(file) : QByteArray();
    }

    void writeAttributes(const QByteArray& text) const {
        const QString file = attributesFile();
        QDir().mkpath(QFileInfo(file).path());
        writeOutput(file, text);
    }

    const QString m_place;
};

/// What git shows for files that are no project texts.
void showLines(const QString& from, const QString& to) {
    print(runGit({"diff", "--no-index", "--no-ext-diff", "--", from, to}).output);
}

/// As git calls it for a file: its path, then file, hash and mode of each side, then what it is called now.
int showForGit(const QStringList& words) {
    constexpr int whole = 7;
    const QString path = words.value(0);
    if (path.isEmpty())
        throw WrongUse("diff: git calls it, with the path of a file and what was in it");
    if (words.size() < whole) {
        print(message("%1: unmerged\n", path).toUtf8());
        return Fine;
    }
    const QString& from = words.at(1);
    const QString& to = words.at(4);
    const QString later = words.value(whole, path);
    const QString& modeBefore = words.at(3);
    const QString& modeAfter = words.at(6);
    print(message("prm diff a/%1 b/%2\n", path, later).toUtf8());
    if (modeBefore != modeAfter && modeBefore != "." && modeAfter != ".")
        print(message("mode %1 changed to %2\n", modeBefore, modeAfter).toUtf8());
    try {
        const ProjectText before(readProjectOrNothing(from));
        const ProjectText after(readProjectOrNothing(to));
        const std::vector<Difference> found = differences(before, after);
        const QString bytes = found.empty() ? differenceInBytes(before, after) : QString();
        print(plainText(found));
        if (!bytes.isEmpty())
            print(message("they say the same, and differ only in %1\n", bytes).toUtf8());
    } catch (const Problem& problem) {
        tell("%1", problem.text());
        showLines(from, to);
    }
    return Fine;
}

} // namespace

int useWithGit(Arguments& arguments) {
    arguments.positional("ACTION", "install, uninstall; or diff, as git calls it.", {}, {"install", "uninstall"})
        .positional("FILE", "What git says of a file.", "[FILE...]")
        .option("global", "For all repositories of this user, not only the one here.")
        .option("files", "The files that are project texts, *.prm unless given.", "PATTERN")
        .example("prm git install");
    if (!arguments.read())
        return Fine;
    const QString action = arguments.rest().first();
    if (action == "diff")
        return showForGit(arguments.rest().mid(1));
    const bool installs = action == "install";
    if (!installs && action != "uninstall")
        throw WrongUse("'%1' is not install or uninstall", action);
    if (arguments.rest().size() > 1)
        throw WrongUse("%1: takes no file; --files names a pattern", arguments.rest().at(1));
    const GitSetup setup(arguments.has("global"));
    const QStringList files = arguments.has("files") ? arguments.values("files") : QStringList("*.prm");
    if (installs) {
        setup.install(files);
        tell("git merges and compares %1 by what is in it", files.join(", "));
    } else {
        setup.uninstall();
        tell("git treats project texts like other texts again");
    }
    return Fine;
}

} // namespace Tool
