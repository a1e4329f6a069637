// Sets: names, members, lines, trees.

#include "tests/support/ChangeRecorder.h"
#include "tests/support/Library.h"

#include <gtest/gtest.h>

#include <array>

using namespace Prm;

namespace {

TEST(ParameterSet, SubsetsGetUniqueNames) {
    ParameterSet root;
    const auto added = [&](const char* name) {
        const auto subset = boost::make_shared<ParameterSet>(name);
        EXPECT_TRUE(root.addParameterSet(subset));
        return subset->scriptName().toStdString();
    };
    const char* const names[] = {"Blur",     "Blur",     "Blur",     "Blur_2",       "Blur7",       "Blur7",
                                 "a_b_3",    "a_b_3",    "12",       "12",           "_5",          "_5",
                                 "Blur_007", "Blur_007", "it's a.b", "B99999999999", "B99999999999"};
    std::string unique;
    for (const char* const name : names)
        unique += added(name) + ' ';
    EXPECT_EQ(unique, "Blur Blur_2 Blur_3 Blur_4 Blur7 Blur_8 a_b_3 a_b_4 12 13 _5 6 Blur_007 Blur_9 it_s_a_b "
                      "B99999999999 B_100000000000 ");
    // Numbers that were given once are free again.
    root.subsetWithName("Blur_2")->setScriptName("other");
    EXPECT_EQ(added("Blur"), "Blur_2");
    const auto third = boost::make_shared<ParameterSet>("x");
    for (const auto& [position, place] : {std::pair(1, 1), {0, 0}, {-5, 0}, {99, 18}}) {
        EXPECT_TRUE(root.insertParameterSet(third, position));
        EXPECT_EQ(root.subsets().at(place), third.get()) << position;
        EXPECT_TRUE(root.removeParameterSet(third));
    }
    root.addParameterSet(*third);
    EXPECT_FALSE(root.insertParameterSet(third, 0) || root.addParameterSet(third)) << "is listed already";
    EXPECT_TRUE(root.removeParameterSet(third));
    EXPECT_FALSE(root.removeParameterSet(third));
    Warnings warnings;
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

TEST(ParameterSet, WritesAndReadsItsLines) {
    Parameter<bool> enable("enable", true, Splittable);
    Parameter<bool> invert("invert", false, Splittable);
    ParameterSet blur("blur");
    ParameterSet mask("mask");
    blur.assignName("Blur");
    mask.assignName("");
    blur.addParameter(enable);
    blur.addParameterSet(mask);
    mask.addParameter(invert);
    enable.setFromScriptString("enable.value=1", version());
    invert.setFromScriptString("invert.value=0", version());
    EXPECT_EQ(lines(blur), "blur.name=\"Blur\"\nblur.enable.value=1\nblur.mask.invert.value=0\n");
    EXPECT_EQ(lines(blur, "top.", false), "top.blur.name=\"Blur\"\ntop.blur.enable.value=1\nmask.invert.value=0\n");
    for (const char* line : {"", "mask.invert.value=1", "enable.value=0", "name=\"a\"b\"", "mask.name=\"m\""})
        EXPECT_TRUE(blur.bStreamIn(line, version())) << line;
    for (const char* line : {"NAME=\"x\"", "name=\"\"", "name=x", "masks.invert.value=1", "mask.x.value=1", "value=1"})
        EXPECT_FALSE(blur.bStreamIn(line, version())) << line;
    enable.setStreamable(false);
    EXPECT_EQ(lines(blur), "blur.name=\"a\"b\"\nblur.mask.name=\"m\"\nblur.mask.invert.value=1\n");
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
    explicit AnyLine(const QString& name)
        : ParameterWithoutType(false, false, nullptr), NumericParameter<double>(name) {}
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
    void subtreeAdded(ParameterSet* set) override { text += "+" + set->scriptName().toStdString() + " "; }
    void subtreeRemoved(ParameterSet* set) override { text += "-" + set->scriptName().toStdString() + " "; }
    std::string text;
};

TEST(ParameterSet, ItsTreeIsNotified) {
    const std::tuple<const char*, void (*)(ParameterSet&, const boost::shared_ptr<ParameterSet>&), const char*> rows[] =
        {
            {"assigned",
             [](ParameterSet& set, const auto&) {
                 ParameterSet other;
                 other.addParameterSet(boost::make_shared<ParameterSet>("new"));
                 set = other;
             },
             "+old -old +new "},
            {"cleared", [](ParameterSet& set, const auto&) { set.clearAllLists(); }, "+old -old "},
            {"removed", [](ParameterSet& set, const auto& old) { set.removeParameterSet(old); }, "+old -old "},
        };
    for (const auto& [name, act, told] : rows) {
        SCOPED_TRACE(name);
        Told tree;
        ParameterSet set("set", &tree);
        const auto old = boost::make_shared<ParameterSet>("old");
        set.addParameterSet(old);
        act(set, old);
        EXPECT_EQ(tree.text, told);
        EXPECT_EQ(old->parameterTree(), nullptr);
        EXPECT_EQ(detail::verify(*old), QString());
    }
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
    ParameterSet root;
    ParameterSet below("below");
    CompoundParameter outer("outer");
    CompoundParameter inner("inner");
    NumericParameter<double> part("part");
    inner.addParameter(part);
    outer.addParameter(inner);
    below.addParameter(outer);
    below.addParameter(part);
    root.addParameterSet(below);
    ChangeRecorder recorder;
    const auto attach = [&](bool recursive) {
        root.AttachCommandRegistrationObserver(&recorder, SLOT(onChanged(Prm::ParameterChange&)), recursive);
    };
    Bsc::CompositeCommand command;
    attach(false);
    EXPECT_FALSE(part.hasCommandRegistrationObserver());
    attach(true);
    part.registerCompositeCommand(command, at(0));
    EXPECT_EQ(recorder.take(), "COMMAND_REGISTERED 0 0\n");
    root.DetachCommandRegistrationObserver(&recorder, true);
    for (const ParameterWithoutType* parameter : std::initializer_list<ParameterWithoutType*>{&outer, &inner, &part})
        EXPECT_FALSE(parameter->hasCommandRegistrationObserver());
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
