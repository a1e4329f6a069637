#include "prm/ParameterWithoutTypeBase.h"
#include "prm/ProjectFileVersion.h"
#include "tests/parameter/Keying.h"
#include "tests/support/ChangeRecorder.h"
#include "tests/support/Warnings.h"

#include <QTextStream>
#include <gtest/gtest.h>

#include <functional>
#include <memory>

using namespace Prm;

namespace {

using P = Parameter<int>;

/// A parameter that is released from its master, and another one that it could have.
struct Family {
    Family() {
        master->vSetValue(4, still());
        EXPECT_TRUE(master->bAddConstrainedParameter(child.get()));
    }
    std::unique_ptr<P> master = std::make_unique<P>("master");
    std::unique_ptr<P> other = std::make_unique<P>("other");
    std::unique_ptr<P> child = std::make_unique<P>("child");
};

TEST(Links, WhateverObserversDoToAReleaseItEndsInOrder) {
    using Act = void (*)(Family&);
    const std::tuple<const char*, Act, const char*> rows[] = {
        {"nothing", [](Family&) {}, "none"},
        {"deletes the master", [](Family& f) { f.master.reset(); }, "none"},
        {"deletes the child", [](Family& f) { f.child.reset(); }, "gone"},
        {"releases again", [](Family& f) { f.child->bUnconstrain(); }, "none"},
        {"ties elsewhere", [](Family& f) { f.other->bAddConstrainedParameter(f.child.get()); }, "other"},
        {"throws", [](Family&) { throw 1; }, "none"},
    };
    for (const auto& [name, act, expected] : rows) {
        Family f;
        QObject::connect(f.child.get(), &ParameterWithoutType::changed, [&, &theAct = act](const ParameterChange& c) {
            EXPECT_EQ(c.type, c.PARAMETER_ASSIGNED);
            f.child->detachAllObservers();
            theAct(f);
        });
        try {
            EXPECT_TRUE(f.child->bUnconstrain()) << name;
        } catch (int) {
        }
        const ParameterWithoutType* const left = f.child ? f.child->masterParameter() : nullptr;
        EXPECT_EQ(left ? left->scriptName().toStdString() : f.child ? "none" : "gone", expected) << name;
        EXPECT_TRUE(!f.master || f.master->constrainedParameters().isEmpty()) << name;
        EXPECT_EQ(f.other->constrainedParameters().size(), left ? 1 : 0) << name;
        EXPECT_TRUE(!f.child || f.child->staticValue(View()) == 4) << name;
    }
}

TEST(Links, ADeadMasterIsNoneAndClosesNoCircle) {
    Family f;
    P grandchild("grandchild");
    EXPECT_TRUE(f.child->bAddConstrainedParameter(&grandchild));
    {
        const Warnings warnings;
        EXPECT_FALSE(grandchild.bAddConstrainedParameter(f.master.get()));
        EXPECT_FALSE(f.master->bAddConstrainedParameter(f.master.get()));
        EXPECT_EQ(Warnings::text().count("cannot be constrained"), 2);
    }
    f.child.reset();
    EXPECT_EQ(grandchild.masterParameter(), nullptr);
    EXPECT_FALSE(grandchild.bUnconstrain());
    EXPECT_TRUE(grandchild.bAddConstrainedParameter(f.master.get()));
}

/// Copies as a compound kind does.
struct Copyable : ParameterWithoutTypeBase {
    Copyable() : ParameterWithoutTypeBase(true, true, nullptr) {}
    std::string attributes() const {
        const QString flags = QString::asprintf("%d%d%d%d", isLocked(), isHidden(), isStreamable(), isAnimatable());
        return QStringList({displayName(), scriptName(), extraName(), namePrefix(), flags}).join('/').toStdString();
    }
};

TEST(Untyped, WhatCopiesAndAssignmentTakeOver) {
    const ProjectFileVersion version;
    Copyable master;
    Copyable original;
    original.setDisplayName("It's");
    original.setScriptName("it's");
    original.setExtraName("extra");
    original.setNamePrefix("path");
    original.setStreamable(false);
    original.setAnimatable(true);
    original.addAdditionalScriptName("old");
    original.enableNotifications(false);
    original.overrideBlockedSignals(ParameterChange::VIEW_ADDED, true);
    EXPECT_TRUE(master.bAddConstrainedParameter(&original));
    const Copyable copy(original);
    EXPECT_EQ(copy.attributes(), "It's/it_s/extra/path/1101");
    EXPECT_EQ(copy.masterParameter(), nullptr);
    EXPECT_TRUE(copy.notificationsEnabled(ParameterChange::VIEW_ADDED));
    EXPECT_FALSE(copy.overridesBlockedSignals(ParameterChange::VIEW_ADDED));
    EXPECT_EQ(copy.viewList(), std::vector<View>{View()});
    EXPECT_NE(&copy.viewList(), &original.viewList());
    QString text;
    QTextStream stream(&text);
    EXPECT_TRUE(copy.streamOut(stream, "", true));
    EXPECT_EQ(text, "");
    EXPECT_TRUE(Copyable(copy).setFromScriptString("old.hidden=0", version));

    Copyable assigned;
    ChangeRecorder heard(&assigned);
    assigned.assignFrom(original);
    assigned.assignFrom(assigned);
    EXPECT_EQ(assigned.attributes(), "It's/it_s/extra//1111");
    EXPECT_FALSE(assigned.setFromScriptString("old.hidden=0", version));
    EXPECT_EQ(heard.take(), "");
}

TEST(Untyped, LinesAreFoundByTheFirstNameThatFits) {
    P p("size");
    const auto names = [&](const char* name, const char* mark) {
        p.addAdditionalScriptName(name, [mark](const QString& text) { return text + mark; });
    };
    names("size.area", "9");
    names("area", "1");
    names("area", "2");
    names("area.view[1]", "3");
    ChangeRecorder heard(&p);
    const std::tuple<const char*, bool, int> rows[] = {
        {"size.value=6", true, 6},
        {"area.VALUE=5", true, 52},
        {"area.view[1].value=5", true, 0},
        {"Area.value=6", false, 0},
        {"area.x", false, 0},
        {"size.area.value=6", false, 0},
        {"area.view[1].x.value=5", false, 0},
        {"sizes.value=5", false, 0},
    };
    for (const auto& [line, taken, value] : rows) {
        p.clearViewData();
        EXPECT_EQ(p.setFromScriptString(line, ProjectFileVersion()), taken) << line;
        EXPECT_EQ(p.staticValue(View()), value) << line;
    }
}

TEST(Untyped, ReadingLetsNewViewsThroughAndPutsEverythingBack) {
    for (const bool blocked : {false, true}) {
        P p("size");
        p.vSetValue(1, still());
        p.blockSignals(blocked);
        ChangeRecorder heard(&p);
        EXPECT_TRUE(p.setFromScriptString("size.view[1].value=5", ProjectFileVersion()));
        EXPECT_TRUE(p.setFromScriptString("size.hidden=-2", ProjectFileVersion()));
        EXPECT_TRUE(p.isHidden());
        EXPECT_THROW(p.setFromScriptString("size.keyframes.append(", ProjectFileVersion()), std::runtime_error);
        EXPECT_EQ(heard.take(), "VIEW_ADDED 0 1\n");
        EXPECT_EQ(p.signalsBlocked(), blocked);
        EXPECT_FALSE(p.overridesBlockedSignals(ParameterChange::VIEW_ADDED));
    }
}

} // namespace
