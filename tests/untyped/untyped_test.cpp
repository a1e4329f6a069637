#include "tests/support/Test.h"

#include <typeinfo>

using namespace Prm;
using Change = ParameterChange;

namespace {

TEST(ParameterChange, HasNamesInTheirOrder) {
    QString names;
    for (int type = 0; type <= Change::NUM_CHANGE_TYPES + 1; ++type)
        names += Change(static_cast<Change::ChangeType>(type), nullptr, nullptr).typeToString() + ' ';
    EXPECT_EQ(names,
              "KEYFRAME_ADDED KEYFRAME_REMOVED KEYFRAME_CHANGED_VALUE KEYFRAME_CHANGED_TIME_VALUE "
              "KEYFRAME_CHANGED_INTERPOLATION PARAMETER_CHANGED_EXTRAPOLATION_BEFORE "
              "PARAMETER_CHANGED_EXTRAPOLATION_AFTER PARAMETER_ASSIGNED VIEW_RESET VIEW_CLEARED "
              "PARAMETER_CHANGED_NAME VALUE_CHANGED KEYFRAME_MOVED COMMAND_REGISTERED PARAMETER_DELETED VIEW_ADDED "
              "VIEW_REMOVED PARAMETER_HIDDEN_CHANGED PARAMETER_LOCKED_CHANGED NUM_CHANGE_TYPES Unknown parameterchange "
              "type, forgot to add? ");
    EXPECT_EQ(QMetaType::type("Prm::ParameterChange"), Change::qMetaType());
    EXPECT_EQ(QMetaType::type("Prm::ParameterChange&"), Change::qMetaType());
}

// Other tests check the changes that edits emit.
TEST(ParameterChange, FillsItsRecord) {
    ParameterWithoutTypeBase p(false, false, nullptr);
    p.setScriptName("p");
    QString heard;
    QList<unsigned int> indices{4, 6};
    QObject::connect(&p, &ParameterWithoutType::changed, [&](const Change& change) {
        QDebug(&heard) << change << '\n';
        EXPECT_EQ(change.affectedIndices, change.type == Change::KEYFRAME_MOVED ? &indices : nullptr);
        EXPECT_EQ(change.command, nullptr);
    });
    Change::keyframeRemoved(p, 5, Context(Time::fromDouble(-7.5), View::INVALID(), AnimationFlags(5)));
    Change::keyframeChangedTimeValue(p, 5, View(3));
    Change::keyframeMoved(p, indices, View(3));
    EXPECT_EQ(heard.remove('"').remove(' ').toStdString(),
              "ParameterChange(KEYFRAME_REMOVED,p,index5,Context(Time(-7.5),View(invalid),flags5))\n"
              "ParameterChange(KEYFRAME_CHANGED_TIME_VALUE,p,index5,Context(Time(0),View(3),flags3))\n"
              "ParameterChange(KEYFRAME_MOVED,p,index0,Context(Time(0),View(3),flags3))\n");
    p.detachAllObservers();
}

/// Kinds of a host's own, which neither construct the virtual base nor announce their deletion.
struct OwnKind : Parameter<int> {
    using Parameter::Parameter;
};
struct OwnNumber : NumericParameter<int> {
    using NumericParameter::NumericParameter;
    OwnNumber(const OwnNumber& other) : ParameterWithoutType(), NumericParameter(other) {}
};
struct DerivedNumber : OwnNumber {
    using OwnNumber::OwnNumber;
};

TEST(Untyped, DerivedKindsNeedNotConstructTheVirtualBase) {
    ParameterSet set;
    DerivedNumber whole("derived", 6, Locked | Hidden, &set);
    EXPECT_TRUE(whole.isLocked() && whole.isHidden() && !whole.isKeyframed());
    EXPECT_EQ(whole.parentSet(), &set);
    EXPECT_EQ(whole.defaultValue(), 6);
    const DerivedNumber copy(whole);
    EXPECT_TRUE(copy.isLocked() && copy.isHidden() && !copy.parentSet());
    EXPECT_EQ(copy.scriptName(), "derived");
    EXPECT_FALSE(OwnKind().isLocked());
}

TEST(Deletion, IsToldOnceByTheWholeParameter) {
    const std::pair<ParameterWithoutType* (*)(), const std::type_info&> rows[] = {
        {[]() -> ParameterWithoutType* { return new ParameterWithoutTypeBase(false, false, nullptr); },
         typeid(ParameterWithoutTypeBase)},
        {[]() -> ParameterWithoutType* { return new OwnKind("own", 6); }, typeid(Parameter<int>)},
        {[]() -> ParameterWithoutType* { return new DerivedNumber("own", 6); }, typeid(NumericParameter<int>)},
    };
    for (const auto& [make, kind] : rows) {
        SCOPED_TRACE(kind.name());
        ParameterWithoutType* const parameter = make();
        const QVariant value = parameter->variantValue(Context());
        int told = 0;
        QObject::connect(parameter, &ParameterWithoutType::changed, [&, &theKind = kind](const Change& change) {
            ++told;
            EXPECT_TRUE(typeid(*change.parameter) == theKind);
            EXPECT_EQ(change.parameter->variantValue(Context()), value);
            throw 1;
        });
        const Warnings warnings;
        delete parameter;
        EXPECT_EQ(told, 1);
        EXPECT_EQ(Warnings::text().count("an observer of the deletion"), 1);
    }
}

/// Of which nothing but the untyped part has been made when the construction of the rest fails.
struct Unfinished : virtual ParameterWithoutType {
    Unfinished(ParameterSet& set, ParameterWithoutType& constrained) {
        set.addParameter(*this);
        bAddConstrainedParameter(&constrained);
        connect(this, &ParameterWithoutType::changed, [&](const Change& change) {
            EXPECT_EQ(change.type, Change::PARAMETER_DELETED);
            EXPECT_TRUE(set.parameters().empty());
            EXPECT_EQ(constrained.interpolation(Context()), Interpolation::Linear);
        });
    }
};
struct Failing : Unfinished, NumericParameter<double> {
    Failing(ParameterSet& set, ParameterWithoutType& constrained)
        : Unfinished(set, constrained), NumericParameter("failing", fail()) {}
    static double fail() { throw std::runtime_error("no value"); }
};

TEST(Deletion, OfAnUntypedPartIsNotifiedAfterItHasLeftSetsAndLinks) {
    ParameterSet set;
    NumericParameter<double> constrained;
    EXPECT_THROW(Failing(set, constrained), std::runtime_error);
}

/// Records what it receives from upstream.
struct Fake : ParameterWithoutTypeBase {
    Fake() : ParameterWithoutTypeBase(false, false, nullptr) {}
    void onUpstreamParameterChanged(Change& change) override { upstream += change.typeToString() + ' '; }
    QString upstream;
};

struct Count : Bsc::CompositeCommand {
    void doIt() override { ++done; }
    int done = 0;
};

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
    EXPECT_FALSE(fake.overrideBlockedSignals(Change::VIEW_ADDED, true));
    { const ScopedSignalPermit permit(fake, Change::VIEW_ADDED); }
    EXPECT_TRUE(fake.overridesBlockedSignals(Change::VIEW_ADDED));
    for (const int beyond : {static_cast<int>(Change::NUM_CHANGE_TYPES), -1, 64}) {
        const auto type = static_cast<Change::ChangeType>(beyond);
        EXPECT_FALSE(fake.enableNotifications(type, true) || fake.notificationsEnabled(type));
        EXPECT_FALSE(fake.overrideBlockedSignals(type, true));
    }
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

TEST(Notification, ObserversComeAndGo) {
    Fake fake;
    ChangeRecorder a(&fake);
    ChangeRecorder b(&fake);
    fake.attachObserver(nullptr, SLOT(onChanged(Prm::ParameterChange&)));
    fake.detachObserver(nullptr);
    fake.detachObserver(&a);
    fake.hide(true);
    EXPECT_EQ(a.take() + b.take(), "PARAMETER_HIDDEN_CHANGED 0 0\n");
    fake.detachAllObservers();
    fake.hide(false);
    EXPECT_EQ(b.take(), "");
}

/// An override may not call the base class.
struct Forgetful : NumericParameter<double> {
    void connectNotify(const QMetaMethod&) override {}
};

// Changes without receivers are not emitted, so receivers that connect later must be noticed.
TEST(Notification, IsReceivedWhereAnOverrideHidesTheConnection) {
    Forgetful parameter;
    parameter.vSetValue(1.0, Time::fromInt(1));
    ChangeRecorder recorder(&parameter);
    parameter.vSetValue(2.0, Time::fromInt(2));
    EXPECT_EQ(recorder.take(), "KEYFRAME_ADDED 1 0\nKEYFRAME_CHANGED_VALUE 1 0\n");
}

TEST(Notification, CommandsGoToTheirObserverOrAreDone) {
    Fake fake;
    Count command;
    fake.registerCompositeCommand(command, Context());
    EXPECT_EQ(command.done, 1);
    ChangeRecorder heard;
    fake.AttachCommandRegistrationObserver(&heard, SLOT(onChanged(Prm::ParameterChange&)));
    fake.enableNotifications(false);
    heard.then = [&](const Change& change) { EXPECT_EQ(change.command, &command); };
    fake.registerCompositeCommand(command, Context(Time(), View(4)));
    EXPECT_EQ(heard.take(), "COMMAND_REGISTERED 0 4\n");
    EXPECT_EQ(command.done, 1);
    fake.DetachCommandRegistrationObserver(nullptr);
    EXPECT_TRUE(fake.hasCommandRegistrationObserver());
    fake.DetachCommandRegistrationObserver(&heard);
    EXPECT_FALSE(fake.hasCommandRegistrationObserver());
}

TEST(Untyped, UpstreamParametersAreReceivedUntilTheyAreReplaced) {
    Fake listener, first;
    ParameterWithoutType::UpstreamParameters bag;
    bag.insert(std::make_unique<Fake>().get());
    bag.insert(&first);
    listener.setUpstreamParameters(bag);
    listener.setUpstreamParameters(listener.upstreamParameters());
    first.hide(true);
    listener.setUpstreamParameters({});
    first.hide(false);
    EXPECT_EQ(listener.upstream, "PARAMETER_HIDDEN_CHANGED ");
}

TEST(Links, AReleaseKeepsWhatObserversTieAndHappensThoughTheyThrow) {
    NumericParameter<double> master, other, child;
    master.vSetValue(4, still());
    EXPECT_FALSE(master.bAddConstrainedParameter(nullptr));
    EXPECT_TRUE(master.bAddConstrainedParameter(&child));
    EXPECT_FALSE(master.bAddConstrainedParameter(&child));
    auto received = QObject::connect(&child, &ParameterWithoutType::changed, [](const Change&) { throw 1; });
    EXPECT_THROW(child.bUnconstrain(), int);
    EXPECT_EQ(child.masterParameter(), nullptr);
    EXPECT_EQ(child.staticValue(View()), 4);
    QObject::disconnect(received);
    EXPECT_TRUE(master.bAddConstrainedParameter(&child));
    received = QObject::connect(&child, &ParameterWithoutType::changed, [&](const Change& change) {
        EXPECT_EQ(change.type, Change::PARAMETER_ASSIGNED);
        QObject::disconnect(received);
        EXPECT_TRUE(other.bAddConstrainedParameter(&child));
    });
    EXPECT_TRUE(child.bUnconstrain());
    EXPECT_EQ(child.masterParameter(), &other);
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
    EXPECT_TRUE(&copy.viewList() != &original.viewList() && !copy.isKeyframed());
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

} // namespace
