// A compound as a parameter and as a set.

#include "host/bsc/Hash.h"
#include "tests/compound/Position.h"
#include "tests/support/ChangeRecorder.h"

#include <gtest/gtest.h>

#include <array>

using namespace Prm;
using Values = QVector<QVariant>;

namespace {

TEST(Compound, LeavesItsSetsBeforeItsPartsDie) {
    ParameterSet byReference("byReference");
    ParameterSet byPointer("byPointer");
    auto whole = boost::make_shared<CompoundParameter>("whole");
    auto part = boost::make_shared<Number>("part");
    std::string met;
    QObject::connect(part.get(), &Number::changed, [&](ParameterChange&) {
        for (const ParameterSet* set : {&byReference, &byPointer}) {
            for (const auto& member : set->parameters())
                met += member->scriptName().toStdString() + std::to_string(member->keyframeCount(View(0)));
        }
    });
    whole->addParameter(std::move(part));
    byReference.addParameter(*whole);
    byPointer.addParameter(std::move(whole));
    byPointer.clearAllLists();
    EXPECT_EQ(met, "");
    EXPECT_TRUE(byReference.parameters().empty());
}

TEST(Compound, ItsValueIsTheListOfValues) {
    Position p;
    const auto numbers = [&] { return p.whole.variantValue(at(5)).value<Values>(); };
    EXPECT_EQ(numbers(), (Values{2., 3.}));
    p.whole.setVariantValue(QVariant::fromValue(Values{7., 8.}), at(5));
    EXPECT_EQ(numbers(), (Values{7., 8.}));
    p.whole.setVariantValue(QVariantList{1, 2}, at(5));
    EXPECT_EQ(numbers(), (Values{1., 2.}));
    for (const QVariant& value : {QVariant(4.5), QVariant(), QVariant(QVariantList{1, 2, 3})}) {
        const Warnings warnings;
        p.whole.setVariantValue(value, at(5));
        const bool isList = value.type() == QVariant::List;
        EXPECT_EQ(Warnings::text().toStdString(),
                  isList ? "CompoundParameter::setVariantValue() number of parameters is not the same as values.\n"
                         : "virtual void Prm::CompoundParameter::setVariantValue(const QVariant&, const "
                           "Prm::Context&) : wrong value type.\n");
        EXPECT_EQ(numbers(), (Values{1., 2.}));
    }
    EXPECT_EQ(p.whole.qMetaType(), QMetaType::type("Prm::CompoundParameter"));
    EXPECT_EQ(QMetaType::type("QVector< QVariant >"), qMetaTypeId<Values>());
    EXPECT_TRUE(p.whole.variantValue(at(5)).canConvert<QVariantList>());
    Bsc::Hash hash;
    p.whole.calculateHash(hash, at(5));
    EXPECT_EQ(hash.result(), Bsc::Hash().result());
}

TEST(Compound, IsAGroupInText) {
    Position p;
    p.x->vDeleteAllKeyframes(View(0));
    p.y->vDeleteAllKeyframes(View(0));
    const ProjectFileVersion version("");
    EXPECT_TRUE(p.whole.setFromScriptString("position.x.value=6", version));
    EXPECT_TRUE(p.whole.setFromScriptString("position.hidden=1", version));
    EXPECT_FALSE(p.whole.setFromScriptString("position.name=\"x\"", version));
    EXPECT_FALSE(p.whole.setFromScriptString("position.z.value=1", version));
    EXPECT_FALSE(p.whole.setFromScriptString("x.value=1", version));
    EXPECT_EQ(p.text("set."),
              "set.position.x.value=6\nset.position.x.before=Constant\nset.position.x.after=Constant\n"
              "set.position.y.value=0\nset.position.y.before=Constant\nset.position.y.after=Constant\n");
    p.whole.addAdditionalScriptName("old", [](const QString& text) { return text + "5"; });
    EXPECT_TRUE(p.whole.setFromScriptString("old.y.value=2", version));
    EXPECT_EQ(p.y->staticValue(View(0)), 25);
    p.whole.setScriptName("");
    EXPECT_TRUE(p.whole.setFromScriptString("x.value=1", version));
    EXPECT_EQ(p.text("set.").substr(0, 14), "set.x.value=1\n");
}

TEST(Compound, ProjectsFindItsPartsAndNameItsLosses) {
    Position p;
    Number master("master");
    ParameterSet root;
    root.addParameter(master);
    root.addParameter(p.whole);
    EXPECT_EQ(root.parameterWTWithName("position.x"), p.x.get());
    ProjectFile file(root);
    const QByteArray lines =
        "position.x.MasterParameterId=.master\nposition.y.MasterParameterId=gone\nposition.y.value=x\n";
    EXPECT_TRUE(file.loadText("FileVersion.value=2019\n" + lines));
    EXPECT_EQ(p.x->masterParameter(), &master);
    EXPECT_EQ(file.report().size(), 2);
    EXPECT_EQ(file.report().first().reason, ProjectFileFinding::UnresolvedMaster);
    p.whole.hide(true);
    p.x->setScriptName("y");
    key(*p.y, {{0.1, 1.}});
    const std::string losses = file.saveLosses().join('\n').toStdString();
    EXPECT_EQ(losses, "line 4: value 'x' is not a number\n"
                      ".position: the hidden flag and the master of a compound are not written\n"
                      "the script name \"y\" in the set \"position\" is used 2 times\n"
                      "position.y: view 0: keyframe times will move (1)");
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
    EXPECT_EQ(compound.scriptName(), "a_b");
    compound.setScriptName("c");
    compound.setDisplayName("Name", "Anzeige");
    ChangeRecorder observer;
    compound.attachObserver(&observer, SLOT(onChanged(Prm::ParameterChange&)), true);
    compound.AttachCommandRegistrationObserver(&observer, SLOT(onChanged(Prm::ParameterChange&)));
    compound.DetachCommandRegistrationObserver(&observer);
    compound.detachObserver(&observer);
    compound.detachAllObservers();
    EXPECT_EQ(compound.displayName(), "Anzeige");
    const ParameterSet& set = compound;
    const ParameterWithoutType& parameter = compound;
    EXPECT_EQ(set.scriptName(), parameter.scriptName());
    EXPECT_EQ(set.displayName(), parameter.displayName());
    CompoundParameter other("other", true);
    compound.assignFrom(other);
    EXPECT_TRUE(compound.keyframeTogether());
    EXPECT_EQ(set.scriptName(), "other");
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
