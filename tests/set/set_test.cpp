// Sets: names, members, lines, trees.

#include "tests/support/Test.h"

using namespace Prm;

namespace {

TEST(ParameterSet, SubsetsGetUniqueNames) {
    ParameterSet root;
    QString unique;
    const auto add = [&](const QString& name) {
        const auto subset = boost::make_shared<ParameterSet>(name);
        EXPECT_TRUE(root.addParameterSet(subset));
        unique += subset->scriptName() + ' ';
    };
    for (const QString& name : QString("Blur,Blur,Blur,Blur_2,Blur7,Blur7,a_b_3,a_b_3,12,12,_5,_5,Blur_007,Blur_007,"
                                       "it's a.b,B99999999999,B99999999999,C_007,C_6,C_6")
                                   .split(','))
        add(name);
    // Numbers that were given once are free again.
    root.subsetWithName("Blur_2")->setScriptName("other");
    add("Blur");
    EXPECT_EQ(unique, "Blur Blur_2 Blur_3 Blur_4 Blur7 Blur_8 a_b_3 a_b_4 12 13 _5 6 Blur_007 Blur_9 it_s_a_b "
                      "B99999999999 B_100000000000 C_007 C_6 C_7 Blur_2 ");
    const auto outside = boost::make_shared<ParameterSet>("Blur");
    root.setUniqueName(outside);
    root.setUniqueName(nullptr);
    EXPECT_EQ(outside->scriptName(), "Blur_5");
    EXPECT_EQ(root.subsetWithName("Blur_5"), nullptr) << "named, not added";
}

TEST(ParameterSet, ListsASubsetOnceAtItsPlace) {
    ParameterSet root;
    ParameterSet sets[3];
    const Warnings warnings;
    for (ParameterSet& set : sets)
        root.addParameterSet(set);
    const auto added = boost::make_shared<ParameterSet>("added");
    for (const auto& [position, place] : {std::pair(1, 1), {0, 0}, {-5, 0}, {99, 3}}) {
        EXPECT_TRUE(root.insertParameterSet(added, position));
        EXPECT_EQ(root.subsets().at(static_cast<std::size_t>(place)), added.get()) << position;
        EXPECT_FALSE(root.insertParameterSet(added, 0) || root.addParameterSet(added)) << "is listed already";
        EXPECT_TRUE(root.removeParameterSet(added));
        EXPECT_FALSE(root.removeParameterSet(added));
    }
    EXPECT_TRUE(added->addParameterSet(boost::make_shared<ParameterSet>("below")) && root.insertParameterSet(added, 0));
    int visited = 0;
    root.forEachSubset([&](ParameterSet*) { visited += 1, root.removeParameterSet(added); }, true);
    EXPECT_EQ(visited, 4) << "what was removed by the visitor is not entered";
    EXPECT_FALSE(root.addParameterSet(root));
    EXPECT_TRUE(Warnings::text().contains("contains"));
}

TEST(ParameterSet, FindsWatchesAndForgets) {
    ParameterSet root;
    ParameterSet set("a");
    MovedParameter moved("x");
    OwnedStaticParameter<unsigned int> still("x");
    root.addParameterSet(set);
    root.addBasicParameter(moved);
    EXPECT_EQ(root.parameterWithName("x"), &moved);
    root.addBasicParameter(still);
    EXPECT_EQ(root.parameterWithName("x"), &still);
    ChangeRecorder recorder;
    {
        NumericParameter<double> inner("p.q");
        set.addParameter(inner);
        set.addParameter(inner);
        EXPECT_EQ(set.parameters().size(), 1u);
        EXPECT_EQ(inner.parentSet(), &set);
        EXPECT_EQ(root.parameterWTWithName("a.p.q"), &inner);
        EXPECT_EQ(root.parameterWTWithName("A.p.q"), nullptr);
        root.attachObserver(&recorder, SLOT(onChanged(Prm::ParameterChange&)), false);
        inner.hide(true);
        EXPECT_EQ(recorder.take(), "");
        root.attachObserver(&recorder, SLOT(onChanged(Prm::ParameterChange&)), true);
        inner.hide(false);
        EXPECT_EQ(recorder.take(), "PARAMETER_HIDDEN_CHANGED 0 0\n");
        root.detachObserver(&recorder, true);
    }
    EXPECT_TRUE(set.parameters().empty());
    EXPECT_EQ(root.parameterWithName("a.p.q"), nullptr);
}

TEST(ParameterSet, WritesItsLinesWithOrWithoutItsPrefix) {
    Number enable("enable", 1, ParameterOptions()), invert("invert", 0, ParameterOptions());
    ParameterSet blur("blur"), mask("mask");
    mask.assignName("");
    blur.addParameter(enable);
    blur.addParameterSet(mask);
    mask.addParameter(invert);
    invert.setFromScriptString("invert.value=0", version());
    enable.setStreamable(false);
    EXPECT_EQ(lines(blur), "blur.name=\"blur\"\nblur.mask.invert.value=0\n");
    EXPECT_EQ(lines(blur, "top.", false), "top.blur.name=\"blur\"\nmask.invert.value=0\n");
    EXPECT_TRUE(blur.bStreamIn("", version()));
}

/// An override as it is published.
struct Banner : ParameterSet {
    using ParameterSet::ParameterSet;
    bool bStreamOut(QTextStream& stream, const QString& prefix, bool with) override {
        stream << "banner\n";
        return ParameterSet::bStreamOut(stream, prefix, with);
    }
};

/// Takes a line by a rule of its own.
struct AnyLine : NumericParameter<double> {
    using NumericParameter::NumericParameter;
    bool setFromScriptString(const QString& line, const ProjectFileVersion& version) override {
        return line.contains('!') || NumericParameter<double>::setFromScriptString(line, version);
    }
};

TEST(ParameterSet, OneOfManyMembersTakesTheLine) {
    ParameterSet root;
    std::vector<boost::shared_ptr<NumericParameter<double>>> numbers;
    for (int i = 0; i < 40; ++i)
        numbers.push_back(boost::make_shared<NumericParameter<double>>(QString("n%1").arg(i)));
    numbers.push_back(boost::make_shared<AnyLine>("own"));
    for (const auto& number : numbers)
        root.addParameter(number);
    const auto banner = boost::make_shared<Banner>("s");
    root.addParameterSet(banner);
    NumericParameter<double> target("target");
    MovedParameter moved("old");
    moved.setTargetParam(target);
    root.addBasicParameter(moved);
    CompoundParameter position;
    NumericParameter<double> x("x");
    position.addParameter(x);
    root.addParameter(position);
    const std::tuple<const char*, const char*, std::function<void()>, NumericParameter<double>*> rows[] = {
        {"the last by its name", "n39.value=1", [] {}, numbers[39].get()},
        {"a name with a dot", "a.b.value=2", [&] { numbers[30]->setScriptName("a.b"); }, numbers[30].get()},
        {"the nearer one of two", "a.b.value=3", [&] { numbers[25]->setScriptName("a.b"); }, numbers[30].get()},
        {"an additional name", "was.value=4", [&] { numbers[20]->addAdditionalScriptName("was"); }, numbers[20].get()},
        {"after one has died", "n39.value=5", [&] { numbers[1]->setScriptName("n1_"); }, numbers[39].get()},
        {"a moved one", "old.value=6", [] {}, &target},
        {"a part of a compound without a name", "x.value=7", [] {}, &x},
        {"the part after the compound was named", "c.x.value=8", [&] { position.setScriptName("c"); }, &x},
        {"a name that was given up", "n30.value=9", [] {}, nullptr},
    };
    for (const auto& [name, line, before, taker] : rows) {
        SCOPED_TRACE(name);
        before();
        EXPECT_EQ(root.bStreamIn(line, version()), taker != nullptr);
        EXPECT_TRUE(!taker || taker->value(at(0)) == QString(line).section('=', 1).toDouble());
        EXPECT_EQ(detail::verify(root), QString());
    }
    EXPECT_TRUE(root.bStreamIn("!", version())) << "a rule of a host's own";
    EXPECT_EQ(root.parameterWTWithName("n40"), nullptr);
    EXPECT_EQ(root.parameterWTWithName("c.x"), &x);
    EXPECT_EQ(root.subsetWithName("s"), banner.get());
    EXPECT_NE(lines(root).find("banner\n"), std::string::npos);
}

struct Told : ParameterTree {
    void subtreeAdded(ParameterSet* set) override { text += "+" + set->scriptName() + " "; }
    void subtreeRemoved(ParameterSet* set) override { text += "-" + set->scriptName() + " "; }
    QString text;
};

// What is in a tree after other acts is compared in fuzz/undo_fuzz.cpp.
TEST(ParameterSet, ItsTreeIsNotified) {
    Told tree;
    ParameterSet set("set", &tree), other;
    const auto old = boost::make_shared<ParameterSet>("old");
    set.addParameterSet(old);
    EXPECT_TRUE(set.removeParameterSet(old));
    EXPECT_EQ(old->parameterTree(), nullptr);
    set.addParameterSet(old);
    other.addParameterSet(boost::make_shared<ParameterSet>("new"));
    set = other;
    EXPECT_EQ(tree.text, "+old -old +old -old +new ");
    EXPECT_EQ(old->parameterTree(), nullptr);
}

TEST(ParameterSet, ChangesItsTreeWithWhatIsBelow) {
    Told former, next, third;
    ParameterSet set("set", &former);
    const auto child = boost::make_shared<ParameterSet>("child");
    const auto foreign = boost::make_shared<ParameterSet>("foreign", &third);
    set.addParameterSet(child);
    child->addParameterSet(boost::make_shared<ParameterSet>("deep"));
    former.text.clear();
    set.changeParameterTree(&third, &next);
    EXPECT_EQ(set.parameterTree(), &former) << "it is not of that tree";
    set.changeParameterTree(&former, &next);
    EXPECT_EQ(former.text, "-set ");
    EXPECT_EQ(next.text, "+set ");
    EXPECT_EQ(child->subsets().front()->parameterTree(), &next);
    child->addParameterSet(foreign);
    EXPECT_EQ(foreign->parameterTree(), &next);
    EXPECT_EQ(third.text, "-foreign ");
    set.changeParameterTree(&next, nullptr);
    EXPECT_EQ(foreign->parameterTree(), nullptr);
}

TEST(ParameterSet, MovedParametersHaveTheValuesOfTheirTarget) {
    MovedParameter moved("old");
    EXPECT_FALSE(moved.variantValue(at(3)).isValid());
    EXPECT_TRUE(moved.allKeyframes().isEmpty());
    moved.setVariantValue(7., at(3));
    Number target("target");
    moved.setTargetParam(target);
    EXPECT_EQ(keyframesOf(target), "") << "what came before has gone nowhere";
    moved.setVariantValue(7., at(3));
    EXPECT_EQ(keyframesOf(target), "3=7 ");
    EXPECT_EQ(moved.variantValue(at(3)), 7.);
    EXPECT_EQ(moved.allKeyframes(), target.allKeyframes());
    EXPECT_EQ(moved.exportState(), nullptr);
}

TEST(ParameterSet, ListsNothingHalfDestroyed) {
    ParameterSet set;
    auto moved = std::make_unique<MovedParameter>("old");
    set.addBasicParameter(*moved);
    std::size_t listed = 9;
    const auto look = [&](int*) { listed = set.basicParameters().size(); };
    moved->setMigrationFunction([held = boost::shared_ptr<int>(nullptr, look)](auto...) { return held == nullptr; });
    moved.reset();
    EXPECT_EQ(listed, 0u);
}

TEST(ParameterSet, CommandsOfPartsReachTheirObserverOnce) {
    ParameterSet root, below("below");
    CompoundParameter outer("outer"), inner("inner");
    Number part("part");
    inner.addParameter(part);
    outer.addParameter(inner);
    below.addParameter(outer);
    below.addParameter(part);
    root.addParameterSet(below);
    ChangeRecorder recorder;
    const char* const slot = SLOT(onChanged(Prm::ParameterChange&));
    root.AttachCommandRegistrationObserver(&recorder, slot, false);
    EXPECT_FALSE(part.hasCommandRegistrationObserver());
    root.AttachCommandRegistrationObserver(&recorder, slot, true);
    Command command;
    part.registerCompositeCommand(command, at(0));
    EXPECT_EQ(recorder.take(), "COMMAND_REGISTERED 0 0\n");
    root.DetachCommandRegistrationObserver(&recorder, true);
    root.forEachParameterAndPart(
        [](const ParameterWithoutType* one) { EXPECT_FALSE(one->hasCommandRegistrationObserver()); });
}

/// The same name everywhere, in one set or one below the other; saved, loaded and saved.
QByteArray textOf(int count, bool deep) {
    ParameterSet root;
    ParameterSet* set = &root;
    for (int i = 0; i < count; ++i) {
        const auto below = boost::make_shared<ParameterSet>("s");
        set->addParameterSet(below);
        below->assignName(i % 2000 == 0 || i + 1 == count ? "n" : "");
        set = deep ? below.get() : set;
    }
    ProjectFile file(root);
    file.setTimeOfWriting(QDateTime(QDate(2021, 3, 1), QTime(), Qt::UTC));
    const QByteArray text = file.text();
    EXPECT_TRUE(file.loadText(text) && file.report().isEmpty() && file.text() == text);
    return text;
}

TEST(ParameterSet, MayBeDeepOrWide) {
    EXPECT_TRUE(textOf(1000, true).contains(".s.s.name="));
    EXPECT_TRUE(textOf(300000, false).contains("\ns_300000.name=\"n\""));
}

} // namespace
