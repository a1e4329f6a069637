#include "prm/MovedParameter.h"
#include "prm/NumericParameter.h"
#include "prm/ParameterSet.h"
#include "prm/ProjectFile.h"
#include "prm/StaticParameter.h"
#include "tests/support/ChangeRecorder.h"
#include "tests/support/Warnings.h"
#include "tests/text/Lines.h"

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

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
    root.insertParameterSet(third, 1);
    EXPECT_EQ(root.subsets().at(1), third.get());
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
    const char* const taken[] = {"", "mask.invert.value=1", "enable.value=0", "name=\"a\"b\"", "mask.name=\"m\""};
    for (const char* line : taken)
        EXPECT_TRUE(blur.bStreamIn(line, version())) << line;
    for (const char* line : {"NAME=\"x\"", "name=\"\"", "name=x", "masks.invert.value=1", "mask.x.value=1", "value=1"})
        EXPECT_FALSE(blur.bStreamIn(line, version())) << line;
    enable.setStreamable(false);
    EXPECT_EQ(lines(blur), "blur.name=\"a\"b\"\nblur.mask.name=\"m\"\nblur.mask.invert.value=1\n");
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

TEST(ParameterSet, MayBeDeep) {
    EXPECT_TRUE(textOf(10000, true).contains(".s.s.name="));
}

TEST(ParameterSet, MayBeWide) {
    EXPECT_TRUE(textOf(1000000, false).contains("\ns_1000000.name=\"n\""));
}

} // namespace
