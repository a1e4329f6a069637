#include "host/bsc/MementoUndoable.h"

#include <QString>
#include <gtest/gtest.h>

#include <tuple>
#include <utility>

namespace {

struct Undoable;
using Act = void (*)(Undoable&);

/// Does as it is told while it is imported, and writes down each operation with the flag that it saw.
struct Undoable : virtual Bsc::MementoUndoable {
    Undoable(Act whileImported, Act afterwards, QString& told) : during(whileImported), after(afterwards), log(&told) {}
    boost::shared_ptr<Bsc::MementoBase> exportState() const override { return nullptr; }
    void doImportState(boost::shared_ptr<Bsc::MementoBase> /*snapshot*/) override {
        note("do");
        during(*this);
    }
    void postImportState() override {
        note("post");
        after(*this);
    }
    void note(const char* what) const { *log += QLatin1String(what) + QLatin1String(isImporting() ? "+ " : "- "); }

    Act during;
    Act after;
    QString* log;
    bool isNested = false;
};

const auto rest = [](Undoable&) {};
const auto fail = [](Undoable&) { throw 1; };
const auto die = [](Undoable& object) {
    *object.log += QLatin1String("gone");
    delete &object;
};
const auto nest = [](Undoable& object) {
    if (!std::exchange(object.isNested, true))
        Bsc::importState(object, nullptr);
};
const auto dieNested = [](Undoable& object) { object.isNested ? die(object) : nest(object); };
const auto copyAndAssign = [](Undoable& object) {
    const Undoable other(object);
    other.note("copy");
    object = other;
};

TEST(ImportState, FlagIsPutBackOnEveryWayOut) {
    const std::tuple<const char*, Act, Act, QString> rows[] = {
        {"throws in do", fail, rest, QStringLiteral("do+ threw left- ")},
        {"throws in post", rest, fail, QStringLiteral("do+ post- threw left- ")},
        {"dies in do", die, rest, QStringLiteral("do+ gone")},
        {"dies in post", rest, die, QStringLiteral("do+ post- gone")},
        {"nested in do", nest, rest, QStringLiteral("do+ do+ post+ post- left- ")},
        {"nested in post", rest, nest, QStringLiteral("do+ post- do+ post- left- ")},
        {"dies in nested do", dieNested, rest, QStringLiteral("do+ do+ gone")},
        {"copied and assigned", copyAndAssign, rest, QStringLiteral("do+ copy- post- left- ")},
    };
    for (const auto& [name, during, after, expected] : rows) {
        for (const bool flagDuringPost : {false, true}) {
            QString log;
            auto* const object = new Undoable(during, after, log);
            try {
                Bsc::importState(*object, nullptr, flagDuringPost);
            } catch (int) {
                log += QLatin1String("threw ");
            }
            if (!log.endsWith(QLatin1String("gone"))) {
                object->note("left");
                delete object;
            }
            const QLatin1String post(flagDuringPost ? "post+" : "post-");
            EXPECT_EQ(log, QString(expected).replace(QLatin1String("post-"), post)) << name << flagDuringPost;
        }
    }
}

} // namespace
