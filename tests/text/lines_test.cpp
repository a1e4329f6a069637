// The lines of parameters.

#include "tests/support/ChangeRecorder.h"
#include "tests/support/Library.h"

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
    // The lines that the example reads, what is then written, without its name, and what is emitted.
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
    const auto act = [&] { flag.setFromScriptString("flag.view[0].keyframes.append( Key( 5, 1 ) )", version()); };
    EXPECT_EQ(errorOf(act), "Failed to parse Key() block: 'keyframes.append( Key( 5, 1 ) )'");
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

TEST(StaticParameter, ReadsItsLine) {
    // What both kinds of parameter write afterwards; empty when both refuse.
    const std::tuple<const char*, std::string, std::string> rows[] = {
        {"count.value=7", "7", "7"},
        {"count.VALUE=7", "7", "7"},
        {"Count.value=7", "", ""},
        {"counts.value=7", "", ""},
        {"count.size=7", "", ""},
        {"count", "", ""},
        {"count.value=\"a\"b\"", "0", "a\"b"},
        {"count.value=\"a", "0", "\"a"},
        {"count.value=\"", "0", ""},
        {"count.value=1=2", "1", "1=2"},
        {"count.value", "0", ""},
        {"count.value=\"\\n\"", "0", "\\n"},
        {"count.value=0x10", "16", "0x10"},
        {"count.value=0b11", "3", "0b11"},
    };
    for (const auto& [line, asNumber, asText] : rows) {
        SCOPED_TRACE(line);
        unsigned int number = 5;
        VirtualParameter<unsigned int> count("count", number);
        OwnedStaticParameter<QString> label("count", "old");
        int heard = 0;
        QObject::connect(&count, &BasicParameter::valueChanged, [&] { heard += 1; });
        const bool taken = !asNumber.empty();
        EXPECT_EQ(count.setFromScriptString(line, version()), taken);
        EXPECT_EQ(label.setFromScriptString(line, version()), taken);
        EXPECT_EQ(heard, taken);
        EXPECT_EQ(lines(count, "node."), "node.count.value=" + (taken ? asNumber : "5") + "\n");
        EXPECT_EQ(lines(label, "node.", false), "node.value=\"" + (taken ? asText : "old") + "\"\n");
    }
}

TEST(StaticParameter, IsSetAndRestored) {
    OwnedStaticParameter<unsigned int> mode("mode", 3);
    OwnedStaticParameter<QString> file("file", "x");
    int heard = 0;
    QObject::connect(&mode, &BasicParameter::valueChanged, [&] { heard += 1; });
    const auto before = mode.exportState();
    mode.setVariantValue(QVariant("12"), Context());
    EXPECT_EQ(mode.variantValue(Context()), QVariant(12u));
    mode.setVariantValue(QVariant(-1.0), Context());
    EXPECT_EQ(mode.value(), QVariant(-1.0).toUInt());
    mode.setVariantValue(QVariant("many"), Context());
    EXPECT_EQ(mode.value(), 0u);
    EXPECT_THROW(mode.doImportState(file.exportState()), std::bad_cast);
    EXPECT_EQ(heard, 3);
    mode.doImportState(before);
    EXPECT_EQ(mode.value(), 3u);
    EXPECT_EQ(heard, 4);
    Warnings warnings;
    file.setValue("a\nb");
    EXPECT_EQ(lines(file), "file.value=\"a\nb\"\n");
    EXPECT_TRUE(Warnings::text().contains("line break"));
}

TEST(Header, EndsWhereItsVersionSays) {
    const auto rest = [](const QString& text, ProjectFileVersion& header) {
        QString copy = text;
        QTextStream stream(&copy);
        header.read(stream);
        return stream.readAll().toStdString();
    };
    ProjectFileVersion header;
    EXPECT_EQ(rest("FileVersion.value=2019\nProductName.value=\"x\"\n", header), "ProductName.value=\"x\"\n");
    EXPECT_EQ(rest("noise\nFileVersion.value=3000\n\n", header), "\n");
    const QString product =
        "ProductName.value=\"P\"\nProductBuildNumber.value=\"12.3\"\nProductVersion.value=\"4.1\"\n";
    const QString time = "FileTimestamp.value=\"2021-03-01T14:05:09Z\"\n";
    for (const char* number : {"3001", "3002"})
        EXPECT_EQ(rest("FileVersion.value=" + QString(number) + "\n" + product + time, header), time.toStdString());
    EXPECT_TRUE(header.timestampText().isNull());
    EXPECT_EQ(BuildVersion(header), BuildVersion("4.1", "12"));
    EXPECT_EQ(rest("FileVersion.value=3002\nProductName.value=\"P\"\nx.value=1\n", header), "");
    EXPECT_FALSE(header.atEnd());

    ProjectFileVersion written("app");
    written.setTimestamp(QDateTime(QDate(2021, 3, 1), QTime(15, 5, 9), Qt::OffsetFromUTC, 3600));
    ParameterSet properties;
    written.initialiseProperties(properties);
    EXPECT_TRUE(QString::fromStdString(lines(properties)).endsWith(time));
}

TEST(MovedParameter, PassesItsLineOn) {
    OwnedStaticParameter<unsigned int> target("newName");
    MovedParameter moved("oldName");
    EXPECT_FALSE(moved.setFromScriptString("oldNameX.value=3", version()));
    EXPECT_FALSE(moved.setTargetParam(target));
    EXPECT_TRUE(moved.setFromScriptString("oldName.value=3", version(2019)));
    EXPECT_EQ(target.value(), 3u);
    EXPECT_FALSE(moved.setFromScriptString("oldName.size=3", version()));
    EXPECT_EQ(lines(moved), "");
    EXPECT_EQ(moved.variantValue(Context()), QVariant(3u));

    MovedParameter waiting("oldName");
    QString migrated;
    EXPECT_TRUE(waiting.setFromScriptString("oldName.value=4", version(2019)));
    EXPECT_FALSE(
        waiting.setMigrationFunction([&](BasicParameter*, const QString& line, const ProjectFileVersion& from) {
            migrated += line + QString::number(from.streamVersion);
            return true;
        }));
    EXPECT_TRUE(waiting.setTargetParam(target));
    EXPECT_EQ(migrated, "newName.value=42019");
    EXPECT_THROW(waiting.setMigrationFunction({}), boost::bad_function_call);
    MovedParameter round("round");
    Warnings warnings;
    EXPECT_FALSE(round.setTargetParam(round));
    EXPECT_TRUE(Warnings::text().contains("leads back"));
    Warnings::text().clear();
    MovedParameter("silent").setFromScriptString("other.value=3", version());
    EXPECT_EQ(Warnings::text(), "");
    MovedParameter("old").setFromScriptString("old.value=3", version());
    EXPECT_EQ(Warnings::text(),
              "MovedParameter[ \"old\" ]: streamed in \"value=3\" but never given target parameter\n");
}

} // namespace
