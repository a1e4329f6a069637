#include "tests/support/ChangeRecorder.h"
#include "tests/support/Library.h"

#include <QDebug>
#include <gtest/gtest.h>

#include <typeinfo>

using namespace Prm;
using Change = ParameterChange;

namespace {

TEST(ParameterChange, HasNamesInTheirOrder) {
    QString names;
    for (int type = 0; type <= Change::NUM_CHANGE_TYPES; ++type)
        names += Change(static_cast<Change::ChangeType>(type), nullptr, nullptr).typeToString() + ' ';
    EXPECT_EQ(names,
              "KEYFRAME_ADDED KEYFRAME_REMOVED KEYFRAME_CHANGED_VALUE KEYFRAME_CHANGED_TIME_VALUE "
              "KEYFRAME_CHANGED_INTERPOLATION PARAMETER_CHANGED_EXTRAPOLATION_BEFORE "
              "PARAMETER_CHANGED_EXTRAPOLATION_AFTER PARAMETER_ASSIGNED VIEW_RESET VIEW_CLEARED "
              "PARAMETER_CHANGED_NAME VALUE_CHANGED KEYFRAME_MOVED COMMAND_REGISTERED PARAMETER_DELETED VIEW_ADDED "
              "VIEW_REMOVED PARAMETER_HIDDEN_CHANGED PARAMETER_LOCKED_CHANGED NUM_CHANGE_TYPES ");
    EXPECT_EQ(QMetaType::type("Prm::ParameterChange"), Change::qMetaType());
    EXPECT_EQ(QMetaType::type("Prm::ParameterChange&"), Change::qMetaType());
    Change none;
    none.type = static_cast<Change::ChangeType>(99);
    EXPECT_EQ(none.typeToString(), "Unknown parameterchange type, forgot to add?");
}

// Other tests check the changes that edits emit.
TEST(ParameterChange, RareOnesFillTheirRecords) {
    ParameterWithoutTypeBase p(false, false, nullptr);
    p.setScriptName("p");
    QString heard;
    QList<unsigned int> indices{4, 6};
    Bsc::CompositeCommand command;
    const auto hear = [&](const Change& change) {
        QDebug(&heard) << change << '\n';
        EXPECT_EQ(change.affectedIndices, change.type == Change::KEYFRAME_MOVED ? &indices : nullptr);
        EXPECT_EQ(change.command, change.type == Change::COMMAND_REGISTERED ? &command : nullptr);
    };
    QObject::connect(&p, &ParameterWithoutType::changed, hear);
    QObject::connect(&p, &ParameterWithoutType::commandRegistrationChanged, hear);
    const Context whole(Time::fromDouble(-7.5), View::INVALID(), AnimationFlags(5));
    Change::keyframeRemoved(p, 5, whole);
    Change::keyframeChangedTimeValue(p, 5, View(3));
    Change::viewCleared(p, View(3));
    Change::keyframeMoved(p, indices, View(3));
    p.registerCompositeCommand(command, whole);
    EXPECT_EQ(heard.remove('"').remove(' ').toStdString(),
              "ParameterChange(KEYFRAME_REMOVED,p,index5,Context(Time(-7.5),View(invalid),flags5))\n"
              "ParameterChange(KEYFRAME_CHANGED_TIME_VALUE,p,index5,Context(Time(0),View(3),flags3))\n"
              "ParameterChange(VIEW_CLEARED,p,index0,Context(Time(0),View(3),flags3))\n"
              "ParameterChange(KEYFRAME_MOVED,p,index0,Context(Time(0),View(3),flags3))\n"
              "ParameterChange(COMMAND_REGISTERED,p,index0,Context(Time(-7.5),View(invalid),flags5))\n");
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
    whole.setDisplayName("Derived");
    whole.addAdditionalScriptName("old");
    whole.setStreamable(false);
    const DerivedNumber copy(whole);
    EXPECT_TRUE(copy.isLocked() && copy.isHidden() && !copy.isStreamable() && !copy.parentSet());
    EXPECT_EQ(copy.displayName() + copy.scriptName() + copy.additionalScriptNames().join(' '), "Derivedderivedold");
    EXPECT_FALSE(OwnKind().isLocked());
}

TEST(Deletion, IsToldOnceByTheWholeParameter) {
    const std::pair<ParameterWithoutType* (*)(), const std::type_info&> rows[] = {
        {[]() -> ParameterWithoutType* { return new ParameterWithoutTypeBase(false, false, nullptr); },
         typeid(ParameterWithoutTypeBase)},
        {[]() -> ParameterWithoutType* { return new Parameter<int>("typed", 6); }, typeid(Parameter<int>)},
        {[]() -> ParameterWithoutType* { return new NumericParameter<int>("numeric", 6); },
         typeid(NumericParameter<int>)},
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
class Fake : public ParameterWithoutTypeBase {
public:
    explicit Fake(const QString& name = "fake") : ParameterWithoutTypeBase(false, false, nullptr) {
        ParameterWithoutType::setScriptName(name);
    }
    ~Fake() override { announceDeletion(); }

    void onUpstreamParameterChanged(Change& change) override { upstream += change.typeToString() + ' '; }

    QString upstream;
};

class Count : public Bsc::CompositeCommand {
public:
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
}

TEST(Notification, SwitchesCheckTheirRange) {
    Fake fake;
    for (const auto type :
         {Change::NUM_CHANGE_TYPES, static_cast<Change::ChangeType>(-1), static_cast<Change::ChangeType>(64)}) {
        EXPECT_FALSE(fake.enableNotifications(type, true));
        EXPECT_FALSE(fake.notificationsEnabled(type));
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
    fake.hide(true);
    fake.setLocked(true);
    EXPECT_EQ(a.take() + b.take(), "PARAMETER_HIDDEN_CHANGED 0 0\nPARAMETER_LOCKED_CHANGED 0 0\n");
    fake.detachAllObservers();
    fake.hide(false);
    EXPECT_EQ(b.take(), "");
}

/// An override may not call the base class.
class Forgetful : public NumericParameter<double> {
public:
    Forgetful() : ParameterWithoutType(false, false, nullptr) {}
    ~Forgetful() override { announceDeletion(); }
    void connectNotify(const QMetaMethod&) override {}
};

// Changes without receivers are not emitted, so receivers that connect later must be noticed.
TEST(Notification, IsHeardHoweverOneIsConnected) {
    using Connect = std::function<void(ParameterWithoutType&, ChangeRecorder&)>;
    const auto hear = [](ChangeRecorder& recorder) { return [&](Change& change) { recorder.onChanged(change); }; };
    const std::pair<const char*, Connect> ways[] = {
        {"attached", [](auto& p, auto& r) { p.attachObserver(&r, SLOT(onChanged(Prm::ParameterChange&))); }},
        {"by name",
         [](auto& p, auto& r) {
             QObject::connect(&p, SIGNAL(changed(Prm::ParameterChange&)), &r, SLOT(onChanged(Prm::ParameterChange&)));
         }},
        {"by member",
         [](auto& p, auto& r) {
             QObject::connect(&p, &ParameterWithoutType::changed, &r, &ChangeRecorder::onChanged);
         }},
        {"a function", [&](auto& p, auto& r) { QObject::connect(&p, &ParameterWithoutType::changed, &r, hear(r)); }},
        {"through another's signal",
         [&](auto& p, auto& r) {
             auto* const other = new ParameterWithoutTypeBase(false, false, nullptr);
             other->setParent(&r);
             QObject::connect(&p, &ParameterWithoutType::changed, other, &ParameterWithoutType::changed);
             QObject::connect(other, &ParameterWithoutType::changed, &r, hear(r));
         }},
    };
    for (const auto& [name, connect] : ways) {
        NumericParameter<double> plain;
        Forgetful forgetful;
        for (NumericParameter<double>* parameter : {&plain, static_cast<NumericParameter<double>*>(&forgetful)}) {
            parameter->vSetValue(1.0, Time::fromInt(1));
            ChangeRecorder recorder;
            connect(*parameter, recorder);
            parameter->vSetValue(2.0, Time::fromInt(2));
            EXPECT_EQ(recorder.take(), "KEYFRAME_ADDED 1 0\nKEYFRAME_CHANGED_VALUE 1 0\n") << name;
        }
    }
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

TEST(Untyped, DeadEndsOfLinksAreNotTouched) {
    Fake master;
    alignas(Fake) unsigned char room[sizeof(Fake)];
    auto* slave = new (room) Fake;
    EXPECT_TRUE(master.bAddConstrainedParameter(slave));
    slave->~Fake();
    slave = new (room) Fake;
    EXPECT_TRUE(master.constrainedParameters().isEmpty());
    EXPECT_TRUE(master.bAddConstrainedParameter(slave));
    EXPECT_TRUE(master.bRemoveConstrainedParameter(slave));
    EXPECT_TRUE(master.constrainedParameters().isEmpty());
    slave->~Fake();
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
    EXPECT_FALSE(f.child->bAddConstrainedParameter(&grandchild) || f.child->bAddConstrainedParameter(nullptr));
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

} // namespace
