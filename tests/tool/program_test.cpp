// Runs the program as a person would: arguments in, text and exit code out. The texts it should print stand in
// tests/data/tool; with PRM_WRITE_GOLDEN set they are written anew instead, to be looked at.

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

namespace {

struct Outcome {
    int exitCode = -1;
    QByteArray out;
    QByteArray error;
};

Outcome run(const char* words, const QByteArray& input = {}, const QString& outFile = {}) {
    QProcess process;
    process.setWorkingDirectory(QStringLiteral(PRM_TOOL_DATA));
    if (!outFile.isEmpty())
        process.setStandardOutputFile(outFile);
    process.start(QStringLiteral(PRM_TOOL), QString::fromLatin1(words).split(QLatin1Char(' '), Qt::SkipEmptyParts));
    process.write(input);
    process.closeWriteChannel();
    EXPECT_TRUE(process.waitForFinished() && process.exitStatus() == QProcess::NormalExit) << words;
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

/// The golden text of a name; what the program printed, once that has been written there.
QByteArray golden(const char* name, const QByteArray& printed) {
    QFile file(QStringLiteral(PRM_TOOL_DATA "/%1.txt").arg(QLatin1String(name)));
    const bool isToBeWritten = qEnvironmentVariableIsSet("PRM_WRITE_GOLDEN");
    EXPECT_TRUE(file.open(isToBeWritten ? QIODevice::WriteOnly : QIODevice::ReadOnly)) << name;
    if (isToBeWritten)
        file.write(printed);
    return isToBeWritten ? printed : file.readAll();
}

struct Case {
    const char* name;
    const char* words;
    int exitCode = 0;
    const char* error = "";
    const char* input = "";
};

const char* const note =
    "prm: logo.visible: number or switch, read as a number; --type logo.visible=switch settles it\n";
const char* const opaqueNote = "prm: logo.shadow.tint: not evaluated, its values are of no known type\n";

const char* const withoutNumbers = "prm: logo.title: not drawn, it has no numbers\n"
                                   "prm: logo.shadow.tint: not drawn, it has no numbers\n";

#define KEY(time, value) "a.x.keyframes.append( Key( " #time ", " #value ", Linear ) )\n"

/// What a reader of the newest version takes otherwise.
#define OLD                                                                                                            \
    "FileVersion.value=2019\nFileTimestamp.value=\"2020\"\na.x.views=[0, 1]\na.x.view[1].value=5\na.x.value=3\n"       \
    "b.value=1\n"
/// A mark and line ends of other systems, forms that no writer chooses, a time given twice, bytes that are no text.
#define ODD                                                                                                            \
    "\xEF\xBB\xBF"                                                                                                     \
    "a.x.value=1\r\nb.y.hidden=1\r\na.x.keyframes.append( Key( 5, 8, Linear ) )\r\n"                                   \
    "a.x.keyframes.append( Key( 5.0,  7.50 , Custom3 ) )\r\nodd\r\na.x.view[0].value=\xFF 3"

const Case cases[] = {
    {"help", "--help"},
    {"eval_help", "eval --help"},
    {"ls", "ls logo.prm"},
    {"ls_below_group_csv", "ls logo.prm logo.shadow --type=*.red=switch --csv"},
    {"ls_json", "ls logo.prm *.opacity --json"},
    {"keys", "keys logo.prm"},
    {"keys_json", "keys logo.prm logo.opacity logo.position --json"},
    {"eval_step", "eval logo.prm logo.opacity logo.shadow.opacity --frames -2,0..30x5,24.5,-0.5..-0.3x0.1"},
    {"eval_view", "eval logo.prm logo.opacity --frames 25,20,0 --view 1"},
    {"eval_unsettled", "eval logo.prm logo.visible logo.position logo.glow --frames 5..6", 0, note},
    {"eval_json", "eval logo.prm logo.title logo.visible logo.position --type *.visible=switch --frames 5 --json"},
    {"eval_opaque_csv", "eval logo.prm logo.t* *.tint --frames 5 --csv", 0, opaqueNote},
    {"eval_times_from", "eval logo.prm logo.opacity --times-from -", 0, "", "0 2\n5..6\n"},
    {"diff", "diff logo.prm logo_changed.prm", 1},
    {"diff_back_json", "diff logo_changed.prm logo.prm --json", 1},
    {"diff_moved_as_a_whole", "diff - moved.prm", 1, "", KEY(1, 5) KEY(2, 6) KEY(3, 7)},
    {"diff_none", "diff logo.prm logo.prm"},
    {"diff_order", "diff - moved.prm", 0, "", KEY(3, 6) KEY(2, 5) KEY(4, 7)},
    {"diff_line_ends", "diff moved.prm -", 0, "",
     "a.x.keyframes.append( Key( 2, 5, Linear ) )\r\n" KEY(3, 6) KEY(4, 7)},
    {"diff_writing", "diff moved.prm -", 0, "", KEY(2.0, 5.0) KEY(3, 6) KEY(4, 7)},
    {"plot", "plot logo.prm logo.opacity logo.glow --all-views --width 60 --height 12"},
    {"plot_range", "plot logo.prm logo.opacity --frames -5..12.5 --view 1 --view 0 --width 40 --height 5"},
    {"plot_picture", "plot logo.prm logo.opacity --all-views --width 300 --height 200 -o -"},
    {"plot_without_numbers", "plot logo.prm logo.* --width 40 --height 4", 0, withoutNumbers},
    {"set_keyframe", "set logo.prm logo.opacity -0.75 --at 10 -o -"},
    {"set_new_keyframe", "set logo.prm logo.opacity 3 --at 15.5 --view 1 -o -"},
    {"set_static", "set logo.prm logo.opacity 3 --static -o -"},
    {"set_text", "set logo.prm logo.title \"hi\" -o -"},
    {"move_in_order", "move logo.prm logo --from 10 --to 12 -o -"},
    {"move_past_others", "move logo.prm logo.opacity --from 20 --to 45 --view 1 -o -"},
    {"retime_part", "retime logo.prm logo --scale 2 --pivot 10 --from 5 -o -"},
    {"split", "split logo.prm logo.opacity logo.shadow.opacity --view 2 --offset 0.25 -o -"},
    {"split_old", "split - a.x --view 2 -o -", 0, "", OLD},
    {"upgrade_old", "upgrade - -o -", 0, "", OLD},
    {"edit_of_odd_lines", "move - a.x --from 5 --to -6 -o -", 0, "", ODD},
    {"edit_of_nothing", "move logo.prm logo --from 11 --to 12 -o -", 1, "prm: nothing changed\n"},
    {"edit_of_hidden", "set - b.y -5 --type *=number -o -", 0, "", ODD},
    {"edit_written_otherwise", "retime - a --shift 0.5 -o -", 0, "prm: a.x: frame 1000000.5 is written as 1e+06\n",
     KEY(1000000, 3)},
    {"check", "check faults.prm", 1},
    {"check_csv", "check faults.prm --csv", 1},
};

TEST(Program, PrintsTheGoldenTexts) {
    for (const Case& row : cases) {
        const Outcome outcome = run(row.words, row.input);
        EXPECT_EQ(golden(row.name, outcome.out).toStdString(), outcome.out.toStdString()) << row.name;
        EXPECT_EQ(outcome.error.toStdString(), row.error) << row.name;
        EXPECT_EQ(outcome.exitCode, row.exitCode) << row.name;
    }
}

const Case refusals[] = {
    {"no command", "", 2, "prm: no command (prm --help)\n"},
    {"unknown command", "list", 2, "prm: no command 'list' (prm --help)\n"},
    {"unknown option", "ls --bad logo.prm", 2, "prm: ls: Unknown option 'bad'. (prm ls --help)\n"},
    {"no file", "ls", 2, "prm: ls: arguments are missing (prm ls --help)\n"},
    {"two files", "check logo.prm faults.prm", 2, "prm: check: what is 'faults.prm' for? (prm check --help)\n"},
    {"missing file", "ls nowhere.prm", 2, "prm: nowhere.prm: No such file or directory\n"},
    {"directory", "check ..", 2, "prm: ..: is a directory\n"},
    {"two forms", "ls logo.prm --json --csv", 2, "prm: ls: either --json or --csv (prm ls --help)\n"},
    {"unknown path", "keys logo.prm logo.size", 2, "prm: logo.prm: no parameter 'logo.size'\n"},
    {"unknown type", "ls logo.prm --type a=colour", 2,
     "prm: ls: 'colour' is no type: switch, number, point or text (prm ls --help)\n"},
    {"no frames", "eval logo.prm logo", 2, "prm: eval: either --frames or --times-from (prm eval --help)\n"},
    {"no number", "eval logo.prm logo --frames 1,,2", 2, "prm: eval: '' is no frame (prm eval --help)\n"},
    {"wrong way", "eval logo.prm logo --frames 5..1", 2,
     "prm: eval: the step 1 never leads from 5 to 1 (prm eval --help)\n"},
    {"too many frames", "eval logo.prm logo --frames 0..1e9", 2,
     "prm: eval: more than 1000000 frames (prm eval --help)\n"},
    {"one input twice", "diff - -", 2, "prm: diff: only one of both is standard input (prm diff --help)\n"},
    {"no numbers", "plot logo.prm logo.title", 2,
     "prm: logo.title: not drawn, it has no numbers\nprm: there is nothing to draw\n"},
    {"no range", "plot logo.prm logo --frames 5..5", 2,
     "prm: plot: nothing lies between the frames of '5..5' (prm plot --help)\n"},
    {"nowhere to write", "move logo.prm logo --from 1 --to 2", 2,
     "prm: move: either -o or --in-place (prm move --help)\n"},
    {"nothing to write to", "split - logo --view 1 --in-place", 2,
     "prm: split: standard input has no place to write to (prm split --help)\n"},
    {"unwritable place", "retime logo.prm logo --shift 1 -o nowhere/out.prm", 2,
     "prm: nowhere/out.prm: cannot be written: No such file or directory\n"},
    {"keyframes in the way", "set logo.prm logo.opacity 1 -o -", 2,
     "prm: logo.opacity: has keyframes; --at sets one, --static the value that counts without them\n"},
    {"no data of its own", "set logo.prm logo.visible 1 --view 1 -o -", 2,
     "prm: logo.visible: view 1 has no data of its own; prm split gives it some\n"},
    {"no value of the kind", "set logo.prm logo.position 1 --at 1 -o -", 2,
     "prm: logo.position: '1' is no point, two numbers\n"},
    {"no finite value", "set logo.prm logo.opacity nan --at 1 -o -", 2,
     "prm: logo.opacity: 'nan' is no finite number\n"},
    {"unknown kind", "set logo.prm logo.shadow.tint 1 -o -", 2,
     "prm: logo.shadow.tint: its values are of no known type; --type settles that\n"},
    {"offset of text", "split logo.prm logo.title --view 1 --offset 1 -o -", 2,
     "prm: logo.title: only numbers have an offset\n"},
    {"turned around", "retime logo.prm logo --scale -1 -o -", 2,
     "prm: retime: the scale must be above 0 (prm retime --help)\n"},
    {"too far away", "retime logo.prm logo.opacity --shift=-1e300 -o -", 2,
     "prm: logo.opacity: no frame is so far away as 0 would go\n"},
    {"newer file", "upgrade faults.prm -o -", 2,
     "prm: faults.prm: written in version 4000 of the format, newer than 3002\n"},
    {"too wide", "plot logo.prm logo --width 1001", 2,
     "prm: plot: --width is a number from 20 to 1000 (prm plot --help)\n"},
    {"picture over project", "plot logo.prm logo -o logo.prm", 2,
     "prm: plot: the project text would be overwritten (prm plot --help)\n"},
    {"no view", "eval logo.prm logo --frames 1 --view left", 2, "prm: eval: 'left' is no view (prm eval --help)\n"},
};

TEST(Program, RefusesInOneLine) {
    for (const Case& row : refusals) {
        const Outcome outcome = run(row.words);
        EXPECT_EQ(outcome.error.toStdString(), row.error) << row.name;
        EXPECT_EQ(outcome.out.toStdString(), "") << row.name;
        EXPECT_EQ(outcome.exitCode, row.exitCode) << row.name;
    }
}

TEST(Program, RefusesWhatCannotBeWrittenWithoutLoss) {
    const Outcome outcome = run("retime - a --shift 1000000 -o -", KEY(1, 5) KEY(2, 6));
    EXPECT_TRUE(
        outcome.error.endsWith("prm: a.x: cannot be written without loss, as by frames that are written alike\n"))
        << outcome.error.constData();
    EXPECT_EQ(outcome.out.toStdString(), "");
    EXPECT_EQ(outcome.exitCode, 2);
}

TEST(Program, EditsAFileInItsPlace) {
    const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("a.prm")));
    ASSERT_TRUE(file.open(QIODevice::ReadWrite) && file.write(KEY(1, 5)) > 0 && file.flush());
    const mode_t mode = 02604;
    ASSERT_EQ(fchmod(file.handle(), mode), 0);
    EXPECT_EQ(run(("move " + file.fileName() + " a --from 1 --to 2 --in-place").toLatin1().constData()).exitCode, 0);
    QFile edited(file.fileName());
    ASSERT_TRUE(edited.open(QIODevice::ReadOnly));
    EXPECT_EQ(edited.readAll().toStdString(), KEY(2, 5));
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files).size(), 1);
    struct stat status {};
    EXPECT_EQ(fstat(edited.handle(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, mode);
}

TEST(Program, ImportsIntoWholeFilesOrNone) {
    const QTemporaryDir folder;
    const QDir dir(folder.path());
    const auto put = [&](const char* name, const QByteArray& text, qint64 size = 0) {
        QFile file(dir.filePath(QLatin1String(name)));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(text) >= 0 && (size == 0 || file.resize(size)));
    };
    ASSERT_TRUE(QFile::copy(QStringLiteral(PRM_TOOL_DATA "/animation.json"), dir.filePath(QStringLiteral("a.json"))));
    put("cut.json", "{\"fr\": 25");
    put("large.json", "{", 200LL << 20);
    ASSERT_TRUE(dir.mkdir(QStringLiteral("folder")));
    const struct {
        const char* words;
        int exitCode;
        const char* error;
        const char* files;
    } rows[] = {
        {"@a.json", 0, " held, ", ""},
        {"@a.json -o @new.prm --map @new.tsv", 0, " held, ", "new.prm new.tsv"},
        {"@cut.json -o @new.prm", 2, "cut.json:1:10: ", ""},
        {"@folder -o @new.prm", 2, "folder: is a directory", ""},
        {"@none.json -o @new.prm", 2, "none.json: No such file", ""},
        {"@large.json -o @new.prm", 2, "large.json: larger than 64 MiB", ""},
        {"@a.json -o @folder --map @new.tsv", 2, "folder: cannot be written: ", ""},
        {"@a.json -o @new.prm --map @none/new.tsv", 2, "new.tsv: cannot be written: ", ""},
        {"@a.json -o @a.json", 2, "the animation would be overwritten", ""},
        {"@a.json -o @new.prm --map @new.prm", 2, "need different files", ""},
        {"@a.json --map -", 2, "need different files", ""},
        {"@a.json @cut.json", 2, "cut.json' for?", ""},
    };
    for (const auto& row : rows) {
        const QByteArray words = QByteArray(row.words).replace('@', folder.path().toLatin1() + '/');
        const Outcome outcome = run(("import " + words).constData());
        EXPECT_EQ(outcome.exitCode, row.exitCode) << row.words;
        EXPECT_TRUE(outcome.error.contains(row.error)) << row.words << outcome.error.constData();
        EXPECT_TRUE(outcome.exitCode == 0 || outcome.error.count('\n') == 1) << outcome.error.constData();
        EXPECT_EQ(outcome.out.isEmpty(), row.exitCode != 0 || *row.files != '\0') << row.words;
        const QStringList files = dir.entryList({QStringLiteral("*new*")}, QDir::Files | QDir::Hidden, QDir::Name);
        EXPECT_EQ(files.join(QLatin1Char(' ')).toStdString(), row.files) << row.words;
        for (const QString& file : files)
            QFile::remove(dir.filePath(file));
    }
}

TEST(Program, DoesNotRepeatALongNameForEveryView) {
    QByteArray text = QByteArray(10000, 'a') + ".x.views=[0";
    for (int view = 1; view < 15000; ++view)
        text += ',' + QByteArray::number(view);
    const Outcome outcome = run("keys -", text + "]\n");
    EXPECT_TRUE(outcome.error.startsWith("prm: more than 134217728 characters of text")) << outcome.error.constData();
    EXPECT_EQ(outcome.exitCode, 2);
}

TEST(Program, FindsNothingWrongWithAGoodFile) {
    const Outcome outcome = run("check -", "FileVersion.value=2019\r\na.x.value=1");
    EXPECT_EQ(outcome.out.toStdString(), "");
    EXPECT_EQ(outcome.exitCode, 0);
}

TEST(Program, TellsWhenAFileMayNotBeRead) {
    if (geteuid() == 0)
        GTEST_SKIP() << "nothing is forbidden to this user";
    const QTemporaryDir folder;
    const QByteArray name = QFile::encodeName(folder.filePath(QStringLiteral("secret.prm")));
    QFile(QFile::decodeName(name)).open(QIODevice::WriteOnly);
    ASSERT_EQ(chmod(name.constData(), 0), 0);
    const Outcome outcome = run(("ls " + name).constData());
    EXPECT_EQ(outcome.error, "prm: " + name + ": Permission denied\n");
    EXPECT_EQ(outcome.exitCode, 2);
}

TEST(Program, NoticesThatItsTextDoesNotArrive) {
    const Outcome full = run("ls logo.prm", {}, QStringLiteral("/dev/full"));
    EXPECT_EQ(full.error.toStdString(), "prm: standard output: No space left on device\n");
    EXPECT_EQ(full.exitCode, 2);
}

} // namespace
