#include "tool/import/ImportCommand.h"

#include "prm/ParameterSet.h"
#include "prm/ProjectFile.h"
#include "tool/import/AnimationImport.h"

#include <QCommandLineParser>
#include <QFile>
#include <QFileInfo>
#include <QIODevice>
#include <QSaveFile>
#include <QTextStream>

#include <cstdio>

namespace PrmTool {

namespace {

const int success = 0;
const int failure = 2;
const QLatin1String standardStream("-");

const char* const description = //
    "Makes project text of an animation in the Lottie format (JSON).\n"
    "What cannot be held is listed on the standard error stream, and counted.\n\n"
    "Example: prm import clip.json -o clip.prm --map clip.tsv";

struct Arguments {
    QString input;
    QString output;
    QString map;
};

/// A file that is written whole when it is committed, and not at all otherwise; or a stream.
class Target {
public:
    Target(const QString& name, QIODevice& out) : m_name(name), m_file(name), m_direct(name), m_out(out) {}

    bool write(const QByteArray& bytes) {
        QIODevice* const device = open();
        return device && device->write(bytes) == bytes.size();
    }
    bool commit() {
        if (m_file.isOpen())
            return m_file.commit();
        auto* const stream = qobject_cast<QFileDevice*>(m_direct.isOpen() ? &m_direct : &m_out);
        return !stream || stream->flush();
    }
    QString error() const {
        const QIODevice& device = m_name == standardStream ? m_out : isSpecial() ? m_direct : asDevice(m_file);
        return QStringLiteral("%1: cannot be written: %2").arg(m_name, device.errorString());
    }

private:
    static const QIODevice& asDevice(const QIODevice& device) { return device; }
    /// Devices and pipes are not replaced but written to.
    bool isSpecial() const {
        const QFileInfo info(m_name);
        return info.exists() && !info.isFile() && !info.isDir();
    }
    QIODevice* open() {
        if (m_name == standardStream)
            return &m_out;
        if (isSpecial())
            return m_direct.open(QIODevice::WriteOnly) ? &m_direct : nullptr;
        return m_file.open(QIODevice::WriteOnly) ? &m_file : nullptr;
    }

    QString m_name;
    QSaveFile m_file;
    QFile m_direct;
    QIODevice& m_out;
};

bool isSameFile(const QString& a, const QString& b) {
    const QFileInfo one(a);
    const QFileInfo other(b);
    const bool sameName = one.absoluteFilePath() == other.absoluteFilePath();
    return a != standardStream && (sameName || (one.exists() && other.exists() && one == other));
}

/// What is wrong with the use of the command, or an empty text.
QString readArguments(QCommandLineParser& parser, const QStringList& list, Arguments& arguments) {
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
    arguments = {parser.positionalArguments().constFirst(), parser.value(output), parser.value(map)};
    const bool hasMap = !arguments.map.isEmpty();
    if (isSameFile(arguments.output, arguments.input) || (hasMap && isSameFile(arguments.map, arguments.input)))
        return QStringLiteral("the animation would be overwritten");
    if (hasMap && (arguments.map == arguments.output || isSameFile(arguments.map, arguments.output)))
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
    bytes = file.read(largestAnimation + 1);
    if (file.error() != QFileDevice::NoError)
        error = QStringLiteral("cannot be read: %1").arg(file.errorString());
    else if (bytes.size() > largestAnimation)
        error = QStringLiteral("larger than %1 bytes, which is the most that is read").arg(largestAnimation);
    return error.isEmpty();
}

/// False with the reason.
bool writeResult(const ImportResult& result, const Arguments& arguments, QIODevice& out, QString& error) {
    Target project(arguments.output, out);
    Target map(arguments.map, out);
    const bool hasMap = !arguments.map.isEmpty();
    const QByteArray text = Prm::ProjectFile(*result.root).text();
    const auto written = [&](Target& target, bool done) {
        if (!done)
            error = target.error();
        return done;
    };
    // Nothing is in its place until everything could be written.
    return (!hasMap || written(map, map.write(result.report.table()))) && written(project, project.write(text)) &&
           (!hasMap || written(map, map.commit())) && written(project, project.commit());
}

} // namespace

int runImport(const QStringList& list, QIODevice& out, QTextStream& err) {
    QCommandLineParser parser;
    Arguments arguments;
    const auto fail = [&](const QString& message) {
        err << "prm import: " << message << Qt::endl;
        return failure;
    };
    if (const QString misuse = readArguments(parser, list, arguments); !misuse.isEmpty())
        return fail(misuse);
    if (parser.isSet(QStringLiteral("help")))
        return out.write(parser.helpText().toUtf8()) < 0 ? failure : success;
    QByteArray bytes;
    QString error;
    if (!readAnimation(arguments.input, bytes, error))
        return fail(QStringLiteral("%1: %2").arg(arguments.input, error));
    const ImportResult result = importAnimation(bytes);
    if (!result.root)
        return fail(QStringLiteral("%1:%2").arg(arguments.input, result.error));
    if (!writeResult(result, arguments, out, error))
        return fail(error);
    result.report.summarise(err);
    err.flush();
    return success;
}

} // namespace PrmTool
