// Projects written and read as the library does it, and the plain way: a chain of QString::arg for each line, a stream
// that is flushed after each, and regular expressions to take lines apart. Both have the same bytes.

#include "bench/ProjectText.h"

#include <QBuffer>
#include <QRegularExpression>
#include <QTemporaryFile>
#include <QTextStream>

namespace {

using Bench::Curve;
using Bench::projectText;
using Prm::Interpolation;
using Prm::IType;
using Prm::Time;
using Prm::View;

// --- the plain way ---------------------------------------------------------------------------------------------------

QString plainKeyframe(const Bench::Keyframe& keyframe) {
    const IType& shape = keyframe.interpolationData;
    const bool isBezier = shape.interpolation == Interpolation::Bezier;
    QString value;
    QTextStream(&value) << QString::number(keyframe.value, 'g', QLocale::FloatingPointShortest);
    return QStringLiteral("keyframes.append( %2( %1, %4, %3 ) )")
        .arg(keyframe.time.toDouble())
        .arg(isBezier ? QStringLiteral("BezierKey") : QStringLiteral("Key"))
        .arg(isBezier ? QStringLiteral("%1, %2, %3, %4").arg(shape.x1).arg(shape.y1).arg(shape.x2).arg(shape.y2)
                      : Prm::qstrInterpolationTypeString(shape.interpolation))
        .arg(value);
}

void writePlainly(QIODevice& device, qint64 lines) {
    QTextStream stream(&device);
    stream.setCodec("UTF-8");
    const Bench::Project& project = Bench::animatedProject(lines);
    stream << QString::fromUtf8(projectText(lines).left(projectText(lines).indexOf("node0"))) << Qt::flush;
    for (const Prm::ParameterSet* set : project.root.subsets()) {
        stream << set->scriptName() << ".name=\"" << set->name() << '"' << Qt::endl;
        for (const auto& parameter : set->parameters()) {
            const auto& curve = dynamic_cast<const Curve&>(*parameter);
            const QString start = set->scriptName() + QLatin1Char('.') + curve.scriptName() + QLatin1Char('.');
            stream << start << "views=[0]" << Qt::endl;
            for (unsigned int i = 0; i < curve.keyframeCount(View()); ++i)
                stream << start << plainKeyframe(curve.keyframe(i, View())) << Qt::endl;
            stream << start << "view[0].value=" << curve.staticValue(View()) << Qt::endl;
            stream << start << "before=Constant" << Qt::endl << start << "after=Constant" << Qt::endl;
        }
    }
}

struct PlainKeyframe {
    float time = 0;
    double value = 0;
    IType shape;
};

PlainKeyframe readPlainly(const QString& declaration) {
    static const QRegularExpression key(QStringLiteral("^keyframes\\.append\\( (Bezier)?Key\\( (.*) \\) \\)$"));
    const QRegularExpressionMatch match = key.match(declaration);
    const QString parts = match.captured(2);
    const auto number = [&](int i) { return parts.section(QLatin1Char(','), i, i).trimmed().toDouble(); };
    PlainKeyframe keyframe{parts.section(QLatin1Char(','), 0, 0).toFloat(), 0, {}};
    QString value = parts.section(QLatin1Char(','), 1, 1);
    QTextStream(&value) >> keyframe.value;
    if (match.captured(1).isEmpty())
        Prm::bStringToInterpolationType(parts.section(QLatin1Char(','), -1).trimmed(), keyframe.shape.interpolation);
    else
        keyframe.shape = IType(Interpolation::Bezier, number(2), number(3), number(4), number(5));
    return keyframe;
}

void readPlainly(QByteArray text, Prm::ParameterSet& root) {
    QBuffer buffer(&text);
    buffer.open(QIODevice::ReadOnly);
    QTextStream stream(&buffer);
    stream.setCodec("UTF-8");
    static const QRegularExpression line(QStringLiteral("^([^.=]+\\.[^.=]+)\\.(.*)$"));
    QHash<QString, Curve*> curves;
    while (!stream.atEnd()) {
        const QRegularExpressionMatch match = line.match(stream.readLine());
        if (!match.hasMatch() || !match.captured(2).startsWith(QLatin1String("keyframes")))
            continue;
        Curve*& curve = curves[match.captured(1)];
        if (!curve)
            curve = dynamic_cast<Curve*>(root.parameterWTWithName(match.captured(1)));
        const PlainKeyframe keyframe = readPlainly(match.captured(2));
        const int index = curve->vSetValue(keyframe.value, Time::fromFloat(keyframe.time));
        curve->vSetInterpolationData(keyframe.shape, static_cast<unsigned int>(index), View());
    }
}

// --- cases -----------------------------------------------------------------------------------------------------------

template <class Write> void writeFile(benchmark::State& state, const Write& write) {
    const QByteArray& text = projectText(state.range(0));
    for (auto _ : state) {
        QTemporaryFile file;
        file.open();
        Bench::measure(state, [&] { write(file); });
        file.seek(0);
        if (file.readAll() != text)
            state.SkipWithError("the bytes differ");
    }
}

void plainWrite(benchmark::State& state) {
    writeFile(state, [&](QIODevice& file) { writePlainly(file, state.range(0)); });
}

void libraryWrite(benchmark::State& state) {
    writeFile(state, [&](QFile& file) {
        file.write(Bench::animatedProject(state.range(0)).file.text());
        file.flush();
    });
}

/// Without a file, beside the bytes that no file is written of either.
void libraryText(benchmark::State& state) {
    const QByteArray& expected = projectText(state.range(0));
    for (auto _ : state) {
        QByteArray text;
        Bench::measure(state, [&] { text = Bench::animatedProject(state.range(0)).file.text(); });
        if (text != expected)
            state.SkipWithError("the bytes differ");
    }
}

template <class Read> void readText(benchmark::State& state, const Read& read) {
    const QByteArray& text = projectText(state.range(0));
    for (auto _ : state) {
        Bench::Project project(state.range(0));
        Bench::measure(state, [&] { read(project, text); });
        if (!project.file.report().isEmpty() || project.file.text() != text)
            state.SkipWithError("not all was read");
    }
}

void plainRead(benchmark::State& state) {
    readText(state, [](Bench::Project& project, const QByteArray& text) { readPlainly(text, project.root); });
}

void libraryRead(benchmark::State& state) {
    readText(state, [](Bench::Project& project, const QByteArray& text) { project.file.loadText(text); });
}

BENCHMARK(plainWrite)->Apply(Bench::overLines);
BENCHMARK(libraryWrite)->Apply(Bench::overLines);
BENCHMARK(libraryText)->Apply(Bench::overLines);
BENCHMARK(plainRead)->Apply(Bench::overLines);
BENCHMARK(libraryRead)->Apply(Bench::overLines);

} // namespace
