// A project of a million keyframe lines, written and read as the library does it, and the plain way: a chain of
// QString::arg for each line, a stream that is flushed after each, and regular expressions to take lines apart. Both
// have the same bytes; lines are counted as items.

#include "prm/NumericParameter.h"
#include "prm/ParameterSet.h"
#include "prm/ProjectFile.h"

#include <QBuffer>
#include <QRegularExpression>
#include <QTemporaryFile>
#include <QTextStream>
#include <benchmark/benchmark.h>
#include <boost/make_shared.hpp>

#include <chrono>
#include <vector>

namespace {

using Prm::Interpolation;
using Prm::IType;
using Prm::Time;
using Prm::View;
using Curve = Prm::NumericParameter<double>;

constexpr int setCount = 20;
constexpr int curvesPerSet = 50;
constexpr int keyframesPerCurve = 1000;
constexpr qint64 keyframeCount = qint64(setCount) * curvesPerSet * keyframesPerCurve;

/// Sets of curves that look like a tracked shot: a keyframe on every frame, a third of them with shapes.
struct Project {
    Project() {
        for (int i = 0; i < setCount; ++i) {
            const auto set = boost::make_shared<Prm::ParameterSet>(QStringLiteral("node%1").arg(i));
            root.addParameterSet(set);
            for (int k = 0; k < curvesPerSet; ++k) {
                curves.push_back(boost::make_shared<Curve>(QStringLiteral("point%1").arg(k)));
                set->addParameter(curves.back());
            }
        }
        file.setTimeOfWriting(QDateTime(QDate(2021, 3, 1), QTime(), Qt::UTC));
    }
    void animate() {
        int number = 0;
        for (const auto& curve : curves) {
            for (int i = 0; i < keyframesPerCurve; ++i, ++number) {
                const auto index = static_cast<unsigned int>(curve->vSetValue(number * 0.37 + i, Time::fromInt(i)));
                curve->vSetInterpolationData(number % 3 == 0 ? IType(Interpolation::Bezier, 0.25, 0, 0.75, 1)
                                                             : IType(Interpolation::Linear),
                                             index, View());
            }
        }
    }

    Prm::ParameterSet root;
    std::vector<boost::shared_ptr<Curve>> curves;
    Prm::ProjectFile file{root};
};

const Project& animatedProject() {
    static const Project& project = *[] {
        auto* const made = new Project;
        made->animate();
        return made;
    }();
    return project;
}

const QByteArray& projectText() {
    static const QByteArray text = animatedProject().file.text();
    return text;
}

// --- the plain way ---------------------------------------------------------------------------------------------------

QString plainKeyframe(const Prm::KeyframeData<double>& keyframe) {
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

void writePlainly(QIODevice& device) {
    QTextStream stream(&device);
    stream.setCodec("UTF-8");
    const Project& project = animatedProject();
    stream << QString::fromUtf8(projectText().left(projectText().indexOf("node0"))) << Qt::flush;
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

/// What the plain way took, so that the library's cases can say by how much they are faster.
double plainWriting = 0;
double plainReading = 0;

template <class Do> double seconds(benchmark::State& state, const Do& act) {
    const auto start = std::chrono::steady_clock::now();
    act();
    const double taken = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    state.SetIterationTime(taken);
    return taken;
}

void setResults(benchmark::State& state, double plain, double taken) {
    state.SetItemsProcessed(state.iterations() * keyframeCount);
    if (plain > 0)
        state.counters["times as fast as the plain way"] = plain / taken;
}

void plainWrite(benchmark::State& state) {
    projectText();
    for (auto _ : state) {
        QTemporaryFile file;
        file.open();
        plainWriting = seconds(state, [&] { writePlainly(file); });
        file.seek(0);
        if (file.readAll() != projectText())
            state.SkipWithError("the bytes differ from the library's");
    }
    setResults(state, 0, 0);
}

void libraryWrite(benchmark::State& state) {
    double taken = 0;
    for (auto _ : state) {
        QTemporaryFile file;
        file.open();
        taken = seconds(state, [&] {
            file.write(animatedProject().file.text());
            file.flush();
        });
        file.seek(0);
        if (file.readAll() != projectText())
            state.SkipWithError("the bytes differ");
    }
    setResults(state, plainWriting, taken);
}

void plainRead(benchmark::State& state) {
    const QByteArray text = projectText();
    for (auto _ : state) {
        Project project;
        plainReading = seconds(state, [&] { readPlainly(text, project.root); });
        if (project.file.text() != text)
            state.SkipWithError("not all was read");
    }
    setResults(state, 0, 0);
}

void libraryRead(benchmark::State& state) {
    const QByteArray text = projectText();
    double taken = 0;
    for (auto _ : state) {
        Project project;
        taken = seconds(state, [&] { project.file.loadText(text); });
        if (!project.file.report().isEmpty() || project.file.text() != text)
            state.SkipWithError("not all was read");
    }
    setResults(state, plainReading, taken);
}

BENCHMARK(plainWrite)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(libraryWrite)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(plainRead)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(libraryRead)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);

} // namespace
