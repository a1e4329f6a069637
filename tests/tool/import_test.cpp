#include "prm/NumericParameter.h"
#include "prm/ParameterSet.h"
#include "prm/ProjectFile.h"
#include "tool/import/AnimationImport.h"

#include <QFile>
#include <QRegularExpression>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

using namespace Prm;
using namespace Tool;

namespace {

QByteArray contents(const QString& fileName) {
    QFile file(fileName);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << fileName.toStdString();
    return file.readAll();
}

/// An animation of one layer whose opacity is given. Keys stand without quotes; EASE is a slow start and a slow end.
ImportResult importOpacity(const char* opacity) {
    QString json = QStringLiteral("{fr: 25, layers: [{nm: \"a\", ks: {o: %1}}]}").arg(QString::fromUtf8(opacity));
    json.replace(QLatin1String("EASE"), QLatin1String("o: {x: 0.3333333333333333, y: 0}, "
                                                      "i: {x: 0.6666666666666666, y: 1}"));
    json.replace(QRegularExpression(QStringLiteral("(\\w+):")), QStringLiteral("\"\\1\":"));
    return importAnimation(json.toUtf8());
}

/// The numbers of a tree, in its order.
std::vector<NumericParameter<double>*> numbersOf(const ParameterSet& root) {
    std::vector<NumericParameter<double>*> numbers;
    root.forEachParameterAndPart([&](ParameterWithoutType* parameter) {
        if (auto* const number = dynamic_cast<NumericParameter<double>*>(parameter))
            numbers.push_back(number);
    });
    return numbers;
}

TEST(Import, KeepsItsCurvesThroughTextButForTheTimes) {
    const QByteArray precise = R"({"fr": 25, "layers": [{"ks": {"o": {"k": [{"t": 0, "s": [4]},
        {"t": 40.000032, "s": [8], "o": {"x": 0.5, "y": 0}, "i": {"x": 0.5, "y": 1}}, {"t": 90.5, "s": [1]}]}}}]})";
    for (const QByteArray& json : {contents(QStringLiteral(PRM_LIGHTHOUSE)), precise}) {
        const ImportResult given = importAnimation(json);
        const ImportResult loaded = importAnimation(json);
        for (NumericParameter<double>* const number : numbersOf(*loaded.root))
            number->vDeleteAllKeyframes(View());
        ProjectFile file(*loaded.root);
        file.loadText(ProjectFile(*given.root).text());
        EXPECT_TRUE(file.report().isEmpty());
        const auto wanted = numbersOf(*given.root);
        const auto found = numbersOf(*loaded.root);
        ASSERT_EQ(wanted.size(), found.size());
        for (std::size_t i = 0; i < wanted.size(); ++i) {
            wanted[i]->adjustKeyframesTime([](Time time) {
                return Time::fromDouble(static_cast<double>(QString::number(time.toDouble(), 'g', 6).toFloat()));
            });
            for (double frame = -3; frame < 100; frame += 0.7) {
                const double value = wanted[i]->value(Time::fromDouble(frame));
                EXPECT_NEAR(found[i]->value(Time::fromDouble(frame)), value, 1e-12 * std::max(std::abs(value), 1.0))
                    << found[i]->extendedName().toStdString() << " at " << frame;
            }
        }
    }
}

TEST(Import, HoldsKeyframesOfEveryForm) {
    // With handles at a third and two thirds of the time, the eased part is 3 y1 x (1-x)^2 + 3 y2 x^2 (1-x) + x^3.
    struct Given {
        const char* name;
        const char* opacity;
    };
    struct Expected {
        std::vector<std::pair<double, double>> samples;
        const char* reason = "";
    };
    const std::pair<Given, Expected> rows[] = {
        {{"a value", "{k: [7.5]}"}, {{{-1, 7.5}, {3, 7.5}}, ""}},
        {{"eased", "{k: [{t: 0, s: [0], EASE}, {t: 8, s: [64]}]}"},
         {{{-1, 0}, {2, 10}, {4, 32}, {8, 64}, {9, 64}}, "in project text, numbers of handles are rounded: 2"}},
        {{"overshoot", "{k: [{t: 0, s: [0], o: {x: [0.25], y: [0.5]}, i: {x: [0.75], y: [2.5]}}, {t: 8, s: [64]}]}"},
         {{{4, 80}}, ""}},
        {{"hold", "{k: [{t: 0, s: 3, h: 1}, {t: 4.5, s: 5, h: 1}]}"}, {{{4.25, 3}, {4.5, 5}, {90, 5}}, ""}},
        {{"no handles", "{k: [{t: 0, s: [4]}, {t: 4, s: [8]}]}"}, {{{1, 5}}, ""}},
        {{"ends of segments", "{k: [{t: 0, s: [4], e: [8]}, {t: 4, e: [0]}, {t: 8}]}"},
         {{{1, 5}, {4, 8}, {6, 4}, {8, 0}}, ""}},
        {{"last value unknown", "{k: [{t: 0, s: [4]}, {t: 4}]}"},
         {{{2, 4}, {4, 4}}, "keyframes without a value take the former one's: 1"}},
        {{"jump", "{k: [{t: 0, s: [4], e: [6]}, {t: 4, s: [8]}]}"},
         {{{2, 6}}, "segments end at the next keyframe's value instead of their own: 1"}},
        {{"wrong order", "{k: [{t: 4, s: [8]}, {t: 0, s: [4]}]}"},
         {{{1, 5}}, "the keyframes are put in the order of time"}},
        {{"same time", "{k: [{t: 0, s: [4]}, {t: 4, s: [6]}, {t: 4, s: [8]}]}"},
         {{{1, 5}, {4, 8}}, "keyframes at the time of another one are left out: 1"}},
        {{"eases of components",
          "{k: [{t: 0, s: [0, 0], o: {x: [0, 0.5], y: [0, 1]}, i: {x: [1, 0.5], y: [1, 1]}}, {t: 8, s: [8, 8]}]}"},
         {{{4, 7}}, ""}},
        {{"ease of all", "{k: [{t: 0, s: [0, 0], EASE}, {t: 8, s: [0, 64]}]}"},
         {{{2, 10}}, "in project text, numbers of handles are rounded: 4"}},
        {{"lacking component", "{k: [{t: 0, s: [1, 4]}, {t: 4, s: [1]}]}"},
         {{{1, 3}}, "components that some keyframes lack count as 0"}},
        {{"curved", "{k: [{t: 0, s: [0, 4], to: [0, 1], ti: [0, 0]}, {t: 4, s: [4, 8]}]}"},
         {{{1, 5}}, "segments with spatial tangents become straight: 1"}},
        {{"handle outside", "{k: [{t: 0, s: [4], o: {x: 1.5, y: 0}, i: {x: 1, y: 0}}, {t: 4, s: [8]}]}"},
         {{{4, 8}}, "handles outside their segment's time are held to it: 1"}},
        {{"precise time", "{k: [{t: 0, s: [4]}, {t: 40.000032, s: [8]}]}"},
         {{{20.000016, 6}}, "in project text, times move by up to 3.2e-05: 1"}},
        {{"times that merge", "{k: [{t: 40, s: [4]}, {t: 40.000032, s: [8]}]}"},
         {{{39, 4}, {41, 8}},
          "in project text, times move by up to 3.2e-05: 1; "
          "in project text, keyframes merge with the one before them: 1"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.first.name);
        const ImportResult result = importOpacity(row.first.opacity);
        ASSERT_TRUE(result.root) << result.error.toStdString();
        const ParameterSet& layer = *result.root->subsetWithName(QStringLiteral("a"));
        const auto* found = layer.parameterWTWithName(QStringLiteral("transform.opacity.y"));
        if (!found)
            found = layer.parameterWTWithName(QStringLiteral("transform.opacity"));
        const auto* const opacity = dynamic_cast<const NumericParameter<double>*>(found);
        ASSERT_TRUE(opacity);
        for (const auto& [frame, value] : row.second.samples)
            EXPECT_NEAR(opacity->value(Time::fromDouble(frame)), value, 1e-12) << frame;
        EXPECT_EQ(result.report.entries().constLast().reason.toStdString(), row.second.reason);
        const auto expected = *row.second.reason ? ImportEntry::Changed : ImportEntry::Held;
        EXPECT_EQ(result.report.entries().constLast().outcome, expected);
    }
}

TEST(Import, NamesTheReasonForWhatItLeavesOut) {
    // Filled up with zeros, a few bytes would become hundreds of megabytes.
    const QByteArray oneLongKey = "{k: [{t: 0, s: [1" + QByteArray(", 1").repeated(2000) + "]}" +
                                  QByteArray(", {t: 1, s: [1]}").repeated(99) + "]}";
    const std::pair<QByteArray, const char*> rows[] = {
        {oneLongKey, "most of its keyframes lack most components"},
        {"{k: {c: true, v: []}}", "a path"},
        {"{k: [{t: 0, s: [{v: []}]}]}", "a path"},
        {"{k: [{t: 0, s: {t: \"text\"}}]}", "a text document"},
        {"{k: [1, \"2\"]}", "its value is no number and no list of numbers"},
        {"{k: []}", "it has no value"},
        {"{sid: \"shared\"}", "its value stands elsewhere, in a slot"},
        {"{k: [{t: 0, s: [1]}, {t: \"4\", s: [1]}]}", "keyframe 1 has no usable time"},
        {"{k: [{t: 0, s: [1]}, {t: 4e9, s: [1]}]}", "keyframe 1 has no usable time"},
        {"{k: [{t: 0}, {t: 4, s: [1]}]}", "the first keyframe has no value"},
        {"[1, 2]", "a setting that does not animate"},
    };
    for (const auto& row : rows) {
        const ImportEntry entry = importOpacity(row.first.constData()).report.entries().constLast();
        EXPECT_EQ(entry.jsonPath, QStringLiteral("layers[0].ks.o")) << row.second;
        EXPECT_EQ(entry.outcome, ImportEntry::LeftOut) << row.second;
        EXPECT_EQ(entry.reason.toStdString(), row.second);
    }
}

} // namespace
