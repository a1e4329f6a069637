#include "prm/NumericParameter.h"
#include "prm/ParameterSet.h"
#include "prm/ProjectFile.h"
#include "tool/import/AnimationImport.h"

#include <QFile>
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

} // namespace
