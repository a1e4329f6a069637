#include "host/bsc/CompositeCommand.h"
#include "prm/NumericParameter.h"
#include "prm/ParameterWithoutTypeBase.h"
#include "tests/support/Warnings.h"

#include <QDebug>
#include <gtest/gtest.h>

#include <typeinfo>

using namespace Prm;
using Change = ParameterChange;

namespace {

TEST(ParameterChange, EachFactoryFillsItsRecord) {
    ParameterWithoutTypeBase p(false, false, nullptr);
    p.setScriptName("p");
    QString heard;
    QList<unsigned int> indices{4, 6};
    Bsc::CompositeCommand command;
    const auto hear = [&](const Change& change) {
        EXPECT_EQ(change.parameter, &p);
        QString line;
        QDebug(&line) << static_cast<int>(change.type) << change << (change.affectedIndices ? "indices" : "")
                      << (change.command ? "command" : "");
        heard += line.remove('"').trimmed() + '\n';
        EXPECT_TRUE(!change.affectedIndices || change.affectedIndices == &indices);
        EXPECT_TRUE(!change.command || change.command == &command);
    };
    QObject::connect(&p, &ParameterWithoutType::changed, hear);
    QObject::connect(&p, &ParameterWithoutType::commandRegistrationChanged, hear);
    const View view(3);
    const Context whole(Time::fromDouble(-7.5), View::INVALID(), AnimationFlags(5));
    Change::keyframeAdded(p, 5, view);
    Change::keyframeRemoved(p, 5, whole);
    Change::keyframeChangedValue(p, -1, view);
    Change::keyframeChangedTimeValue(p, 5, view);
    Change::keyframeChangedInterpolation(p, 5, view);
    Change::changedExtrapolationBefore(p);
    Change::changedExtrapolationAfter(p);
    Change::parameterAssigned(p);
    Change::viewReset(p, view);
    Change::viewCleared(p, view);
    Change::valueChanged(p, view);
    Change::keyframeMoved(p, indices, view);
    p.registerCompositeCommand(command, whole);
    Change::parameterDeleted(p);
    Change::viewAdded(p, view);
    Change::viewRemoved(p, view);
    Change::hiddenParameterChanged(p);
    Change::lockedParameterChanged(p);
    EXPECT_EQ(heard.toStdString(),
              R"(0 ParameterChange(KEYFRAME_ADDED, p, index 5, Context(Time(0), View(3), flags 3))
1 ParameterChange(KEYFRAME_REMOVED, p, index 5, Context(Time(-7.5), View(invalid), flags 5))
2 ParameterChange(KEYFRAME_CHANGED_VALUE, p, index -1, Context(Time(0), View(3), flags 3))
3 ParameterChange(KEYFRAME_CHANGED_TIME_VALUE, p, index 5, Context(Time(0), View(3), flags 3))
4 ParameterChange(KEYFRAME_CHANGED_INTERPOLATION, p, index 5, Context(Time(0), View(3), flags 3))
5 ParameterChange(PARAMETER_CHANGED_EXTRAPOLATION_BEFORE, p, index 0, Context(Time(0), View(0), flags 3))
6 ParameterChange(PARAMETER_CHANGED_EXTRAPOLATION_AFTER, p, index 0, Context(Time(0), View(0), flags 3))
7 ParameterChange(PARAMETER_ASSIGNED, p, index 0, Context(Time(0), View(0), flags 3))
8 ParameterChange(VIEW_RESET, p, index 0, Context(Time(0), View(3), flags 3))
9 ParameterChange(VIEW_CLEARED, p, index 0, Context(Time(0), View(3), flags 3))
11 ParameterChange(VALUE_CHANGED, p, index 0, Context(Time(0), View(3), flags 3))
12 ParameterChange(KEYFRAME_MOVED, p, index 0, Context(Time(0), View(3), flags 3)) indices
13 ParameterChange(COMMAND_REGISTERED, p, index 0, Context(Time(-7.5), View(invalid), flags 5))  command
14 ParameterChange(PARAMETER_DELETED, p, index 0, Context(Time(0), View(0), flags 3))
15 ParameterChange(VIEW_ADDED, p, index 0, Context(Time(0), View(3), flags 3))
16 ParameterChange(VIEW_REMOVED, p, index 0, Context(Time(0), View(3), flags 3))
17 ParameterChange(PARAMETER_HIDDEN_CHANGED, p, index 0, Context(Time(0), View(0), flags 3))
18 ParameterChange(PARAMETER_LOCKED_CHANGED, p, index 0, Context(Time(0), View(0), flags 3))
)");
    p.detachAllObservers();
}

TEST(ParameterChange, IsKnownToQtByValueAndByReference) {
    const int id = Change::qMetaType();
    EXPECT_EQ(QMetaType::type("Prm::ParameterChange"), id);
    EXPECT_EQ(QMetaType::type("Prm::ParameterChange&"), id);
}

TEST(ScopedSignalPermit, PutsBackAnOverrideThatWasSet) {
    ParameterWithoutTypeBase p(false, false, nullptr);
    EXPECT_FALSE(p.overrideBlockedSignals(Change::VIEW_ADDED, true));
    { const ScopedSignalPermit permit(p, Change::VIEW_ADDED); }
    EXPECT_TRUE(p.overridesBlockedSignals(Change::VIEW_ADDED));
}

/// A host's own kind, which does not announce itself.
struct OwnKind : Parameter<int> {
    OwnKind() : ParameterWithoutType(false, false, nullptr), Parameter("own", 6) {}
};

TEST(Deletion, IsToldOnceByTheWholeParameter) {
    const std::pair<ParameterWithoutType* (*)(), const std::type_info&> rows[] = {
        {[]() -> ParameterWithoutType* { return new ParameterWithoutTypeBase(false, false, nullptr); },
         typeid(ParameterWithoutTypeBase)},
        {[]() -> ParameterWithoutType* { return new Parameter<int>("typed", 6); }, typeid(Parameter<int>)},
        {[]() -> ParameterWithoutType* { return new NumericParameter<int>("numeric", 6); },
         typeid(NumericParameter<int>)},
        {[]() -> ParameterWithoutType* { return new OwnKind; }, typeid(Parameter<int>)},
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

} // namespace
