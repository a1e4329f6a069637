#include "prm/NumericParameter.h"
#include "prm/SerialisedKeyframe.h"
#include "tests/parameter/Keying.h"
#include "tests/support/ChangeRecorder.h"
#include "tests/text/Lines.h"

#include <gtest/gtest.h>

using namespace Prm;

namespace {

/// Keyframed at 1 (false, Constant) and 10 (true, Linear) in view 0, still in view 1, hidden.
void makeExample(Parameter<bool>& flag) {
    flag.vSetDefaultInterpolation(Interpolation::Constant);
    flag.vSetValue(true, still(0));
    flag.vSetValue(false, still(1));
    key<bool>(flag, {{1, false}, {10, true}});
    flag.vSetInterpolationData(IType(Interpolation::Constant), 0, View(0));
    flag.vSetInterpolationData(IType(Interpolation::Linear), 1, View(0));
    flag.hide(true);
}

#define BOTH "before=Constant\nafter=Constant\n"
#define SPLIT "views=[0, 1]\nview[0].value=1\nview[1].value=0\nhidden=1\n" BOTH
TEST(ParameterText, LinesAreRead) {
    // The lines that the example reads, what is then written, without its name, and what is heard.
    const std::tuple<const char*, quint32, QString, const char*, const char*> rows[] = {
        {"a value resets", 3001, "value=0", "value=0\nhidden=1\n" BOTH, ""},
        {"an old one does not", 3000, "VALUE=0", "views=[0, 1]\nview[0].value=0\nview[1].value=0\nhidden=1\n" BOTH, ""},
        {"a view is made", 3002, "view[2].value=1",
         "views=[0, 1, 2]\nview[0].value=1\nview[1].value=0\nview[2].value=1\nhidden=1\n" BOTH, "VIEW_ADDED 0 2\n"},
        {"views reset", 3001, "views=[1]", "views=[1]\nview[1].value=1\nhidden=1\n" BOTH, "VIEW_ADDED 0 1\n"},
        {"old ones do not", 2019, "views=[1]\nkeyframed=1", SPLIT, ""},
        {"no view", 3002, "views=[]\nhidden=0", "views=[]\n" BOTH, ""},
        {"a keyframe", 3002, "view[1].KEYFRAMES.append( Key( 0.1, 1, Custom0 ) )",
         "views=[0, 1]\nview[0].value=1\nview[1].keyframes.append( Key( 0.1, 1, Custom0 ) )\n"
         "view[1].value=0\nhidden=1\n" BOTH,
         ""},
        {"hidden twice", 3002, "hidden=0\nhidden=1=2\nhidden=-2", SPLIT, ""},
        {"outside", 3002, "AFTER=Linear\nbefore=unheard of\nview[1].before=Custom0",
         "views=[0, 1]\nview[0].value=1\nview[1].value=0\nhidden=1\nbefore=Custom0\nafter=Linear\n", ""},
    };
    for (const auto& [name, number, read, written, heard] : rows) {
        SCOPED_TRACE(name);
        Parameter<bool> flag("flag", true);
        makeExample(flag);
        flag.vDeleteAllKeyframes(View(0));
        flag.blockSignals(number == 3001);
        ChangeRecorder recorder(&flag);
        for (const QString& line : read.split('\n'))
            EXPECT_TRUE(flag.setFromScriptString("flag." + line, version(number)));
        EXPECT_EQ(flag.signalsBlocked(), number == 3001);
        EXPECT_FALSE(flag.overridesBlockedSignals(ParameterChange::VIEW_ADDED));
        EXPECT_EQ(lines(flag, {}, false), written);
        EXPECT_EQ(recorder.take(), heard);
    }
}

TEST(ParameterText, RefusedLinesChangeNothing) {
    Parameter<bool> flag("flag");
    makeExample(flag);
    const std::string before = lines(flag);
    for (const char* line : {"flag.Views=[0]", "Flag.value=0", "flags.value=0", "flag", "flag.", "flag.shade=1"})
        EXPECT_FALSE(flag.setFromScriptString(line, version())) << line;
    const auto error = [&](const char* line) -> std::string {
        try {
            flag.setFromScriptString(line, version());
        } catch (const std::runtime_error& thrown) {
            return thrown.what();
        }
        return {};
    };
    EXPECT_EQ(error("flag.view[0].keyframes.append( Key( 5, 1 ) )"),
              "Failed to parse Key() block: 'keyframes.append( Key( 5, 1 ) )'");
    EXPECT_FALSE(flag.signalsBlocked());
    EXPECT_EQ(lines(flag), before);
}

TEST(ParameterText, OldNamesConvertTheirValues) {
    NumericParameter<double> size("size");
    size.addAdditionalScriptName("width", [](const QString& text) { return QString::number(text.toDouble() / 2); });
    EXPECT_TRUE(size.setFromScriptString("width.keyframes.append( Key( 2, 8, Linear ) )", version(3000)));
    EXPECT_TRUE(size.setFromScriptString("width.value=6", version(3000)));
    EXPECT_EQ(size.value(at(2)), 4);
    EXPECT_EQ(size.staticValue(View()), 3);
}

TEST(ParameterText, KeyframesAreCopiedAsText) {
    NumericParameter<double> from("a");
    NumericParameter<double> to("b");
    key<double>(from, {{0.1, 0.1}, {1234567, 2}}, 1);
    from.vSetInterpolationData(IType(Interpolation::Bezier, 0.25, 0, 1. / 3, 1), 0, View(1));
    const auto text = [&](double time) { return from.getSerialisedKeyframe(at(time, 1))->toString().toStdString(); };
    EXPECT_EQ(text(0.1), "view[1].keyframes.append( BezierKey( 0.1, 0.1, 0.25, 0, 0.333333, 1 ) )");
    EXPECT_EQ(text(1234567), "view[1].keyframes.append( Key( 1.23457e+06, 2, Linear ) )");
    EXPECT_FALSE(from.getSerialisedKeyframe(at(7, 1)));

    const auto copy = to.getSerialisedKeyframe(Context(Context::INVALID_TIME));
    copy->setFromString(QString::fromStdString(text(0.1)));
    EXPECT_EQ(copy->context(), at(static_cast<double>(0.1f), 1));
    copy->adjustTime(2);
    to.importKeyframe(*copy);
    EXPECT_EQ(to.keyframe(0, View(1)).interpolationData, IType(Interpolation::Bezier, 0.25, 0, 0.333333, 1));
    EXPECT_THROW(copy->setFromString("key( 1, 2, Linear ) )"), std::runtime_error);
    EXPECT_THROW(Parameter<bool>("c").importKeyframe(*copy), std::bad_cast);
    copy->setFromString("keyframes.append( Key( x, 1, Linear ) )");
    EXPECT_EQ(copy->context(), at(0, 1));
    copy->setFromString("view[0].keyframes.append( Key( 1e99, 1, Linear ) )");
    EXPECT_FALSE(copy->context().time.isValid());
}

} // namespace
