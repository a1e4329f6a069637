// Memory runs out at every allocation of an import in turn: it makes all that it would have made, or nothing.

#include "prm/ParameterSet.h"
#include "prm/ProjectFile.h"
#include "prm/exchange/AnimationImport.h"
#include "prm/project/Invariants.h"
#include "tests/support/Allocations.h"

#include <gtest/gtest.h>

using namespace Prm::document;

namespace {

/// A little of everything that is held, changed or left out.
const QByteArray animation = R"({"fr": 25, "ip": 0, "op": 9,
"assets": [{"id": "dot"}, {"id": "c", "nm": "Wheel", "layers": [{"ty": 3, "ind": 1, "nm": "Axle\n"}]}],
"layers": [{"ty": 0, "ind": 1, "refId": "c", "parent": 1, "st": -2, "ks": {
"r": {"k": 0, "x": "time"},
"a": {"s": true, "x": {"k": [{"t": 0.123456789, "s": [1], "e": [5]}, {"t": 7}]}, "y": {"k": 3}},
"p": {"k": [{"t": 9, "s": [1, 2]}, {"t": 0, "s": [0, 8, 1], "to": [1], "o": {"x": 0.3, "y": 0}, "i": {"x": 2, "y": 1}}]}},
"ef": [{"ty": 5, "nm": "Tint", "ef": [{"ty": 2, "nm": "Map", "v": {"k": [0, 1, 1, 1]}}]}],
"shapes": [{"ty": "gf", "g": {"p": 2, "k": {"k": [0, 1]}}}, {"ty": "rd", "r": {"k": "none"}}]}]})";

std::string stateOf(const ImportResult& result) {
    if (!result.root)
        return "nothing";
    EXPECT_EQ(Prm::detail::verify(*result.root), QString());
    Prm::ProjectFile file(*result.root);
    file.setTimeOfWriting(QDateTime(QDate(2021, 3, 1), QTime(), Qt::UTC));
    return (file.text() + result.report.table()).toStdString();
}

TEST(ImportFaults, AllIsMadeOrNothing) {
    if (!Allocations::areCounted())
        GTEST_SKIP() << "allocations are not counted in this build";
    const std::string whole = stateOf(importAnimation(animation));
    for (const char* part : {"Wheel.Axle_.frame_rate", "position.y", "left out\tan expression", "in the order of time"})
        EXPECT_NE(whole.find(part), std::string::npos) << part << " is not in\n" << whole;
    const auto make = [] {
        const auto result = std::make_shared<ImportResult>();
        return Allocations::Attempt{[=] { *result = importAnimation(animation); }, [=] { return stateOf(*result); }};
    };
    // Once only: where memory stays exhausted, destructors of Qt's JSON classes end the process.
    Allocations::failOnce(make, [&](const std::string& state) { return state == whole || state == "nothing"; });
}

} // namespace
