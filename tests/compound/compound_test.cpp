// A compound as a parameter and as a set.

#include "tests/compound/Position.h"
#include "tests/support/Test.h"

#include <array>

using namespace Prm;
using Values = QVector<QVariant>;

namespace {

TEST(Compound, LeavesItsSetsBeforeItsPartsDieAndIsWholeMeanwhile) {
    ParameterSet byReference("byReference");
    ParameterSet byPointer("byPointer");
    auto whole = boost::make_shared<CompoundParameter>("whole");
    auto part = boost::make_shared<Number>("part");
    const QPointer<ParameterWithoutType> known(whole.get());
    std::string met;
    QObject::connect(part.get(), &Number::changed, [&](ParameterChange&) {
        for (const ParameterSet* set : {&byReference, &byPointer}) {
            for (const auto& member : set->parameters())
                met += member->scriptName().toStdString() + std::to_string(member->keyframeCount(View(0)));
        }
        met += known->variantValue(at(0)).toList().isEmpty() ? "empty" : "full";
    });
    whole->addParameter(std::move(part));
    byReference.addParameter(*whole);
    byPointer.addParameter(std::move(whole));
    byPointer.clearAllLists();
    EXPECT_EQ(met, "empty");
    EXPECT_TRUE(byReference.parameters().empty());
}

TEST(Compound, ItsValueIsTheListOfValues) {
    Position p;
    const auto numbers = [&] { return p.whole.variantValue(at(5)).value<Values>(); };
    EXPECT_EQ(numbers(), (Values{2., 3.}));
    const char* const wrongType = "virtual void Prm::CompoundParameter::setVariantValue(const QVariant&, const "
                                  "Prm::Context&) : wrong value type.\n";
    const char* const wrongCount =
        "CompoundParameter::setVariantValue() number of parameters is not the same as values.\n";
    const std::tuple<QVariant, Values, const char*> rows[] = {
        {QVariant::fromValue(Values{7., 8.}), {7., 8.}, ""},
        {QVariantList{1, 2}, {1., 2.}, ""},
        {4.5, {1., 2.}, wrongType},
        {QVariant(), {1., 2.}, wrongType},
        {QVariantList{1, 2, 3}, {1., 2.}, wrongCount},
    };
    for (const auto& [value, values, warning] : rows) {
        const Warnings warnings;
        p.whole.setVariantValue(value, at(5));
        EXPECT_EQ(Warnings::text(), warning);
        EXPECT_EQ(numbers(), values);
    }
    EXPECT_EQ(p.whole.qMetaType(), QMetaType::type("Prm::CompoundParameter"));
    EXPECT_EQ(QMetaType::type("QVector< QVariant >"), qMetaTypeId<Values>());
    EXPECT_TRUE(p.whole.variantValue(at(5)).canConvert<QVariantList>());
    EXPECT_EQ(hashOf([&](Bsc::Hash& hash) { p.whole.calculateHash(hash, at(5)); }), hashOf([](Bsc::Hash&) {}));
}

TEST(Compound, SnapshotsGoByPosition) {
    Position p;
    const auto snapshot = p.whole.exportState();
    const std::string before = p.text();
    p.whole.vDeleteAllKeyframes(View(0));
    Number third("third", 3);
    p.whole.addParameter(third);
    p.whole.doImportState(nullptr);
    p.whole.doImportState(p.x->exportState());
    EXPECT_EQ(p.times(), "");
    Bsc::importState(p.whole, snapshot);
    EXPECT_EQ(p.text().substr(0, before.size()), before);
}

TEST(Compound, NamesAreThoseOfBothSides) {
    CompoundParameter compound("a b");
    const ParameterSet& set = compound;
    const ParameterWithoutType& parameter = compound;
    EXPECT_EQ(compound.scriptName(), "a_b");
    compound.setScriptName("c");
    compound.setDisplayName("Name", "Anzeige");
    EXPECT_TRUE(set.scriptName() == "c" && parameter.scriptName() == "c");
    EXPECT_TRUE(set.displayName() == "Anzeige" && parameter.displayName() == "Anzeige");
    compound.assignFrom(CompoundParameter("other", true));
    EXPECT_TRUE(compound.keyframeTogether());
    EXPECT_EQ(set.scriptName(), "other");
}

/// Of the set side and of the parameter side.
TEST(Compound, ObserversAreDetachedFromPartsAsWell) {
    Position p;
    ChangeRecorder observer;
    const auto received = [&](const auto& detach) {
        p.whole.attachObserver(&observer, SLOT(onChanged(Prm::ParameterChange&)));
        detach();
        p.x->hide(!p.x->isHidden());
        return observer.take();
    };
    EXPECT_EQ(received([] {}), "PARAMETER_HIDDEN_CHANGED 0 0\n");
    EXPECT_EQ(received([&] { p.whole.detachObserver(&observer); }), "");
    EXPECT_EQ(received([&] { p.whole.detachAllObservers(); }), "");
}

TEST(Compound, ContainsNoCircleAndDiesBeforeItsParts) {
    auto outer = boost::make_shared<CompoundParameter>("outer", true);
    auto inner = boost::make_shared<CompoundParameter>("inner", true);
    outer->addParameter(inner);
    {
        const Warnings warnings;
        inner->addParameter(*outer);
        EXPECT_EQ(Warnings::text().count("cannot be a part of it"), 1);
        ParameterSet below("below");
        EXPECT_TRUE(inner->addParameterSet(below));
        const CompoundParameter above(*outer);
        below = above;
        EXPECT_TRUE(below.parameters().empty());
    }
    auto x = boost::make_shared<Number>("x");
    inner->addParameter(x);
    x->vSetValue(1, at(3));
    EXPECT_EQ(outer->keyframeCount(View(0)), 1u);
    outer.reset();
    inner.reset();
    x->vSetValue(1, at(5));
}

/// Two sets on each level, both listed by both above: there are 2^60 ways from the top to the bottom.
TEST(Compound, AndSetsAreAskedOnceByHoweverManyWaysTheyAreReached) {
    using Pair = std::array<boost::shared_ptr<ParameterSet>, 2>;
    using Parts = std::array<boost::shared_ptr<CompoundParameter>, 2>;
    std::vector<Pair> sets;
    std::vector<Parts> parts;
    for (int level = 0; level < 60; ++level) {
        sets.push_back({boost::make_shared<ParameterSet>("a"), boost::make_shared<ParameterSet>("b")});
        parts.push_back({boost::make_shared<CompoundParameter>("a"), boost::make_shared<CompoundParameter>("a")});
        for (int i = 0; level > 0 && i < 4; ++i) {
            EXPECT_TRUE(sets[level][i / 2]->addParameterSet(sets[level - 1][i % 2]));
            parts[level][i / 2]->addParameter(parts[level - 1][i % 2]);
        }
    }
    const Warnings quiet;
    EXPECT_FALSE(sets.front()[0]->addParameterSet(sets.back()[0]));
    EXPECT_TRUE(sets.front()[0]->addParameterSet(boost::make_shared<ParameterSet>("c")));
    parts.front()[0]->addParameter(*parts.back()[0]);
    EXPECT_TRUE(parts.front()[0]->subparameters().isEmpty());
    EXPECT_EQ(parts.back()[0]->parameterWithName(QString("a.").repeated(59) + "x"), nullptr);
}

} // namespace
