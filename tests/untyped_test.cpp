#include "host/bsc/CompositeCommand.h"
#include "prm/ParameterWithoutTypeBase.h"
#include "prm/ProjectFileVersion.h"
#include "tests/support/ChangeRecorder.h"

#include <QTextStream>
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>

using namespace Prm;
using Change = ParameterChange;

namespace {

/// A parameter with views, which counts the copies of keyframes that it is given.
class Fake : public ParameterWithoutTypeBase {
public:
    explicit Fake(const QString& name = "fake") : ParameterWithoutTypeBase(false, false, nullptr) {
        ParameterWithoutType::setScriptName(name);
    }
    ~Fake() override { announceDeletion(); }

    bool isSplit() const override { return views.size() > 1; }
    int numViews() const override { return static_cast<int>(views.size()); }
    const std::vector<View>& viewList() const override { return views; }
    bool deleteView(const View&) override { return ++deletions < 0; }
    void vReset(const Context&) override { Change::viewReset(*this, View(0)); }
    void vCopyKeyframeDataFrom(const ParameterWithoutType* source) override {
        copiedFrom = source;
        Change::parameterAssigned(*this);
    }
    void onUpstreamParameterChanged(Change& change) override { upstream += change.typeToString() + ' '; }
    QVariant variantValue(const Context&) const override { throw std::runtime_error("no value"); }
    using ParameterWithoutTypeBase::variantValue;

    std::vector<View> views{View(0)};
    int deletions = 0;
    const ParameterWithoutType* copiedFrom = nullptr;
    QString upstream;
};

class Count : public Bsc::CompositeCommand {
public:
    void doIt() override { ++done; }
    int done = 0;
};

template <class T, class = void> struct SwitchesAllByType : std::false_type {};
template <class T>
struct SwitchesAllByType<T, std::void_t<decltype(std::declval<T&>().enableNotifications(Change::VIEW_ADDED))>> :
    std::true_type {};
static_assert(!SwitchesAllByType<ParameterWithoutType>::value);

} // namespace

TEST(Notification, SwitchesAndPermits) {
    Fake fake;
    ChangeRecorder heard(&fake);
    fake.enableNotifications(false);
    EXPECT_FALSE(fake.enableNotifications(Change::KEYFRAME_ADDED, true));
    Change::valueChanged(fake, View(2));
    Change::keyframeAdded(fake, 3, View(1));
    EXPECT_EQ(heard.take(), "KEYFRAME_ADDED 3 1\n");

    fake.blockSignals(true);
    fake.enableNotifications(true);
    Change::valueChanged(fake, View(2));
    {
        const ScopedSignalPermit outer(fake, Change::VALUE_CHANGED);
        { const ScopedSignalPermit inner(fake, Change::VALUE_CHANGED); }
        Change::valueChanged(fake, View(2));
        Change::viewAdded(fake, View(2));
        fake.enableNotifications(Change::VALUE_CHANGED, false);
        Change::valueChanged(fake, View(3));
    }
    EXPECT_EQ(heard.take(), "VALUE_CHANGED 0 2\n");
    EXPECT_TRUE(fake.signalsBlocked());
    EXPECT_FALSE(fake.overridesBlockedSignals(Change::VALUE_CHANGED));
}

TEST(Notification, SwitchesCheckTheirRange) {
    Fake fake;
    for (const auto type :
         {Change::NUM_CHANGE_TYPES, static_cast<Change::ChangeType>(-1), static_cast<Change::ChangeType>(64)}) {
        EXPECT_FALSE(fake.enableNotifications(type, true));
        EXPECT_FALSE(fake.notificationsEnabled(type));
        EXPECT_FALSE(fake.overrideBlockedSignals(type, true));
    }
    Change none;
    EXPECT_EQ(none.typeToString(), "NUM_CHANGE_TYPES");
    none.type = static_cast<Change::ChangeType>(99);
    EXPECT_EQ(none.typeToString(), "Unknown parameterchange type, forgot to add?");
}

TEST(Notification, BlockingSurvivesWhatObserversDo) {
    auto* fake = new Fake;
    ChangeRecorder heard(fake);
    fake->blockSignals(true);
    auto permit = std::make_unique<ScopedSignalPermit>(*fake, Change::VALUE_CHANGED);
    heard.then = [](Change&) { throw std::runtime_error("observer"); };
    EXPECT_THROW(Change::valueChanged(*fake, View()), std::runtime_error);
    EXPECT_TRUE(fake->signalsBlocked());
    heard.then = [&](Change& change) {
        heard.then = nullptr;
        delete change.parameter;
    };
    Change::valueChanged(*fake, View());
    permit.reset();
    EXPECT_EQ(heard.take(), "VALUE_CHANGED 0 0\nVALUE_CHANGED 0 0\nPARAMETER_DELETED 0 0\n");
}

TEST(Notification, DeletionIsToldOnceByTheWholeObject) {
    ChangeRecorder heard;
    QString name;
    {
        Fake fake("whole");
        fake.attachObserver(&heard, SLOT(onChanged(Prm::ParameterChange&)));
        heard.then = [&](Change& change) {
            name = change.parameter->scriptName() + QString::number(change.parameter->numViews());
            throw std::runtime_error("observer");
        };
    }
    EXPECT_EQ(heard.take(), "PARAMETER_DELETED 0 0\n");
    EXPECT_EQ(name, "whole1");
}

TEST(Notification, ObserversComeAndGo) {
    Fake fake;
    ChangeRecorder a(&fake);
    ChangeRecorder b(&fake);
    fake.attachObserver(nullptr, SLOT(onChanged(Prm::ParameterChange&)));
    fake.detachObserver(nullptr);
    fake.detachObserver(&a);
    fake.hide(true);
    fake.hide(true);
    fake.setLocked(true);
    EXPECT_EQ(a.take() + b.take(), "PARAMETER_HIDDEN_CHANGED 0 0\nPARAMETER_LOCKED_CHANGED 0 0\n");
    fake.detachAllObservers();
    fake.hide(false);
    EXPECT_EQ(b.take(), "");
}

TEST(Notification, CommandsGoToTheirObserverOrAreDone) {
    Fake fake;
    Count command;
    fake.registerCompositeCommand(command, Context());
    EXPECT_EQ(command.done, 1);
    ChangeRecorder heard;
    fake.AttachCommandRegistrationObserver(&heard, SLOT(onChanged(Prm::ParameterChange&)));
    fake.enableNotifications(false);
    fake.registerCompositeCommand(command, Context(Time(), View(4)));
    EXPECT_EQ(heard.take(), "COMMAND_REGISTERED 0 4\n");
    EXPECT_EQ(command.done, 1);
    fake.DetachCommandRegistrationObserver(nullptr);
    EXPECT_TRUE(fake.hasCommandRegistrationObserver());
    fake.DetachCommandRegistrationObserver(&heard);
    EXPECT_FALSE(fake.hasCommandRegistrationObserver());
}

TEST(Untyped, Names) {
    Fake fake;
    fake.setScriptName("my param's value");
    EXPECT_EQ(fake.scriptName(), "my_param_s_value");
    EXPECT_EQ(fake.extendedName(), ".my_param_s_value");
    Fake other;
    fake.setNamePrefix("a.b");
    fake.setExtraName("extra");
    fake.setLocked(true);
    other.assignFrom(fake);
    EXPECT_EQ(other.extendedName(), ".my_param_s_value");
    EXPECT_EQ(other.extraName(), "extra");
    EXPECT_TRUE(other.isLocked());
    EXPECT_FALSE(fake.variantValue(Context(), std::nothrow).isValid());
}

TEST(Untyped, MastersFormNoCircle) {
    Fake a("a");
    Fake b("b");
    Fake c("c");
    EXPECT_FALSE(a.bAddConstrainedParameter(nullptr));
    EXPECT_FALSE(a.bAddConstrainedParameter(&a));
    EXPECT_TRUE(a.bAddConstrainedParameter(&b));
    EXPECT_FALSE(a.bAddConstrainedParameter(&b));
    EXPECT_TRUE(b.bAddConstrainedParameter(&c));
    EXPECT_FALSE(c.bAddConstrainedParameter(&a));
    EXPECT_TRUE(a.bAddConstrainedParameter(&c));
    EXPECT_EQ(c.copiedFrom, nullptr);
    EXPECT_TRUE(b.constrainedParameters().isEmpty());
    EXPECT_TRUE(c.bUnconstrain());
    EXPECT_EQ(c.copiedFrom, &a);
    EXPECT_EQ(c.masterParameter(), nullptr);
    EXPECT_FALSE(c.bUnconstrain());
}

TEST(Untyped, DeadEndsOfLinksAreNotTouched) {
    Fake master;
    alignas(Fake) unsigned char room[sizeof(Fake)];
    auto* slave = new (room) Fake;
    EXPECT_TRUE(master.bAddConstrainedParameter(slave));
    slave->~Fake();
    slave = new (room) Fake;
    EXPECT_TRUE(master.constrainedParameters().isEmpty());
    EXPECT_TRUE(master.bAddConstrainedParameter(slave));
    ChangeRecorder heard(slave);
    heard.then = [&](Change& change) {
        heard.then = nullptr;
        change.parameter->detachAllObservers();
        slave->~Fake();
    };
    EXPECT_TRUE(master.bRemoveConstrainedParameter(slave));
    EXPECT_TRUE(master.constrainedParameters().isEmpty());
}

TEST(Untyped, UpstreamParametersAreHeard) {
    Fake listener;
    Fake first;
    ParameterWithoutType::UpstreamParameters bag;
    {
        Fake gone;
        bag.insert(&gone);
    }
    bag.insert(&first);
    listener.setUpstreamParameters(bag);
    listener.setUpstreamParameters(listener.upstreamParameters());
    first.hide(true);
    EXPECT_EQ(listener.upstream, "PARAMETER_HIDDEN_CHANGED ");
    listener.setUpstreamParameters({});
    first.hide(false);
    EXPECT_EQ(listener.upstream, "PARAMETER_HIDDEN_CHANGED ");
}

TEST(Untyped, ResettingEndsWhateverHappens) {
    Fake fake;
    fake.views = {View(0), View(1)};
    fake.resetAll();
    EXPECT_EQ(fake.deletions, 0); // there is no hero view
    auto* dying = new Fake;
    dying->views = fake.views;
    ChangeRecorder heard(dying);
    heard.then = [&](Change& change) {
        heard.then = nullptr;
        delete change.parameter;
    };
    dying->resetAll();
    EXPECT_EQ(heard.take(), "VIEW_RESET 0 0\nPARAMETER_DELETED 0 0\n");
}

TEST(Untyped, TextLines) {
    const ProjectFileVersion version;
    Fake fake("a");
    Fake master("m");
    fake.addAdditionalScriptName("old");
    ChangeRecorder heard(&fake);
    EXPECT_TRUE(fake.setFromScriptString("a.HIDDEN=1=2", version));
    EXPECT_TRUE(fake.isHidden());
    EXPECT_TRUE(fake.setFromScriptString("old.hidden=0", version));
    EXPECT_FALSE(fake.isHidden());
    EXPECT_TRUE(fake.setFromScriptString("a.MasterParameterId=x.y", version));
    EXPECT_EQ(fake.pendingMasterParameterId(), "x.y");
    for (const char* refused : {"ab.hidden=1", "a.value=1", "A.hidden=1", "a", "a."})
        EXPECT_FALSE(fake.setFromScriptString(refused, version)) << refused;
    EXPECT_EQ(heard.take(), "");
    EXPECT_FALSE(fake.signalsBlocked());

    master.setNamePrefix("top");
    master.bAddConstrainedParameter(&fake);
    fake.hide(true);
    QString text;
    QTextStream stream(&text);
    stream.setFieldWidth(40);
    EXPECT_TRUE(fake.bStreamOut(stream, "set.", true));
    EXPECT_TRUE(master.bStreamOut(stream, "set.", true));
    EXPECT_EQ(text, "set.a.hidden=1\nset.a.MasterParameterId=top.m\n");
}
