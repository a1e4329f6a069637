#include "tool/import/ImportCommand.h"

#include "prm/ParameterSet.h"
#include "prm/ProjectFile.h"
#include "tool/import/AnimationImport.h"
#include "tool/import/OutputFile.h"

#include <QCommandLineParser>
#include <QFile>
#include <QFileInfo>
#include <QIODevice>
#include <QTextStream>

#include <cstdio>

namespace Tool {

namespace {

const int success = 0;
const int failure = 2;
const QLatin1String standardStream("-");

const char* const description = //
    "Makes project text of an animation in the Lottie format (JSON).\n"
    "What cannot be held is listed on the standard error stream, and counted.\n\n"
    "Example: prm import clip.json -o clip.prm --map clip.tsv";

struct Files {
    QString input;
    QString output;
    QString map;
};

bool isSameFile(const QString& a, const QString& b) {
    const QFileInfo one(a);
    const QFileInfo other(b);
    const bool sameName = one.absoluteFilePath() == other.absoluteFilePath();
    return a != standardStream && (sameName || (one.exists() && other.exists() && one == other));
}

/// What is wrong with the use of the command, or an empty text.
QString readArguments(QCommandLineParser& parser, const QStringList& list, Files& files) {
    const QCommandLineOption output({QStringLiteral("o"), QStringLiteral("output")},
                                    QStringLiteral("Write the project text to this file, not to standard output."),
                                    QStringLiteral("file"), standardStream);
    const QCommandLineOption map(QStringLiteral("map"),
                                 QStringLiteral("Write a table of what became of every entry of the animation."),
                                 QStringLiteral("file"));
    parser.setApplicationDescription(QString::fromUtf8(description));
    parser.addPositionalArgument(QStringLiteral("animation"),
                                 QStringLiteral("The animation file, or - for standard input."),
                                 QStringLiteral("import <animation>"));
    parser.addOptions({output, map});
    parser.addHelpOption();
    if (!parser.parse(list))
        return parser.errorText();
    if (parser.isSet(QStringLiteral("help")))
        return {};
    if (parser.positionalArguments().size() != 1)
        return QStringLiteral("give one animation file");
    files = {parser.positionalArguments().constFirst(), parser.value(output), parser.value(map)};
    const bool hasMap = !files.map.isEmpty();
    if (isSameFile(files.output, files.input) || (hasMap && isSameFile(files.map, files.input)))
        return QStringLiteral("the animation would be overwritten");
    if (hasMap && (files.map == files.output || isSameFile(files.map, files.output)))
        return QStringLiteral("the project text and the table need different files");
    return {};
}

/// Reads up to a little more than can be imported; false with the reason.
bool readAnimation(const QString& name, QByteArray& bytes, QString& error) {
    QFile file(name);
    const bool isStream = name == standardStream;
    if (!isStream && QFileInfo(name).isDir()) {
        error = QStringLiteral("it is a directory");
        return false;
    }
    if (!(isStream ? file.open(stdin, QIODevice::ReadOnly) : file.open(QIODevice::ReadOnly))) {
        error = QStringLiteral("cannot be read: %1").arg(file.errorString());
        return false;
    }
    // A pipe gives a part at a time.
    const qint64 part = 1 << 20;
    for (QByteArray read = file.read(part); !read.isEmpty() && bytes.size() <= largestAnimation; read = file.read(part))
        bytes += read;
    if (file.error() != QFileDevice::NoError)
        error = QStringLiteral("cannot be read: %1").arg(file.errorString());
    else if (bytes.size() > largestAnimation)
        error = QStringLiteral("larger than %1 bytes, which is the most that is read").arg(largestAnimation);
    return error.isEmpty();
}

/// False with the reason.
bool writeResult(const ImportResult& result, const Files& files, QIODevice& out, QString& error) {
    OutputFile project(files.output, out);
    OutputFile map(files.map, out);
    const bool hasMap = !files.map.isEmpty();
    const QByteArray text = Prm::ProjectFile(*result.root).text();
    const auto written = [&](const OutputFile& target, bool done) {
        if (!done)
            error = target.error();
        return done;
    };
    // Nothing is in its place until everything could be written.
    return (!hasMap || written(map, map.write(result.report.table()))) && written(project, project.write(text)) &&
           (!hasMap || written(map, map.commit())) && written(project, project.commit());
}

} // namespace

int runImport(const QStringList& arguments, QIODevice& out, QTextStream& err) {
    QCommandLineParser parser;
    Files files;
    const auto fail = [&](const QString& message) {
        err << "prm import: " << message << Qt::endl;
        return failure;
    };
    if (const QString misuse = readArguments(parser, arguments, files); !misuse.isEmpty())
        return fail(misuse);
    if (parser.isSet(QStringLiteral("help")))
        return out.write(parser.helpText().toUtf8()) < 0 ? failure : success;
    QByteArray bytes;
    QString error;
    if (!readAnimation(files.input, bytes, error))
        return fail(QStringLiteral("%1: %2").arg(files.input, error));
    const ImportResult result = importAnimation(bytes);
    if (!result.root)
        return fail(QStringLiteral("%1:%2").arg(files.input, result.error));
    if (!writeResult(result, files, out, error))
        return fail(error);
    result.report.summarise(err);
    err.flush();
    return success;
}

} // namespace Tool
