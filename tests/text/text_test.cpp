// Text that tests/data/project.session (lines) and fuzz/keyframe_line_fuzz.cpp (numbers, escapes) do not cover.

#include "prm/TextStreamOperators.h"
#include "tests/support/Test.h"

#include <QLocale>

// As hosts do it: Qt's own operators must stay within reach.
using namespace Prm;

namespace {

/// A stream with everything set that could show in a number.
template <class Do> QString through(QString text, const Do& act) {
    QTextStream stream(&text);
    QLocale german(QLocale::German, QLocale::Germany);
    stream.setLocale(german);
    stream.setIntegerBase(16);
    stream.setRealNumberNotation(QTextStream::FixedNotation);
    stream.setRealNumberPrecision(1);
    stream.setNumberFlags(QTextStream::ForceSign | QTextStream::ShowBase);
    stream.setFieldWidth(9);
    act(stream);
    stream.flush();
    EXPECT_EQ(stream.locale(), german);
    EXPECT_EQ(stream.integerBase() + stream.realNumberPrecision() + stream.fieldWidth(), 26);
    EXPECT_EQ(stream.realNumberNotation(), QTextStream::FixedNotation);
    EXPECT_EQ(stream.numberFlags(), QTextStream::ForceSign | QTextStream::ShowBase);
    return text;
}

template <class T> std::string written(const T& value) {
    return through({}, [&](QTextStream& stream) { stream << value; }).toStdString();
}

template <class T> T read(const char* text) {
    T value{};
    through(QString::fromLatin1(text), [&](QTextStream& stream) { stream >> value; });
    return value;
}

TEST(TextStreamOperators, WriteAndReadWhateverTheStreamIsSetTo) {
    using Byte = unsigned char;
    EXPECT_EQ(written(true) + written(false), "10");
    EXPECT_EQ(written(Byte(200)) + " " + written(Frame::fromUInt(255)), "200 255");
    EXPECT_EQ(written(QPoint(3, 4)) + " " + written(QPoint(-10, -2)), "34 -10-2");
    EXPECT_EQ(written(QPointF(1.5, -2)) + " " + written(QPointF(0.1, 1234567.25)), "1.5-2 0.11234567.25");
    EXPECT_TRUE(read<bool>("2") && read<bool>("-1"));
    EXPECT_FALSE(read<bool>("0") || read<bool>("x"));
    EXPECT_EQ(read<Byte>("300"), 44);
    EXPECT_EQ(read<Frame>("2147483647").toUInt(), 2147483647u);
    EXPECT_EQ(read<QPoint>(" 10 -4"), QPoint(10, -4));
    EXPECT_EQ(read<QPointF>("1.5 -2e3"), QPointF(1.5, -2000));
    // They reach values that have no text of their own.
    QString text;
    GeneralValueType<Byte>::write(text, 200);
    EXPECT_EQ(GeneralValueType<Byte>::read(text), 200);
}

TEST(ParameterText, ReadingSendsNewViewsEvenIfSignalsAreBlocked) {
    for (const bool isBlocked : {false, true}) {
        Parameter<bool> flag("flag", true);
        flag.blockSignals(isBlocked);
        ChangeRecorder recorder(&flag);
        EXPECT_TRUE(flag.setFromScriptString("flag.view[2].value=1", version()));
        EXPECT_EQ(recorder.take(), "VIEW_ADDED 0 2\n");
        EXPECT_EQ(errorOf([&] { flag.setFromScriptString("flag.view[0].keyframes.append( Key( 5, 1 ) )", version()); }),
                  "Failed to parse Key() block: 'keyframes.append( Key( 5, 1 ) )'");
        EXPECT_EQ(flag.signalsBlocked(), isBlocked);
        EXPECT_FALSE(flag.overridesBlockedSignals(ParameterChange::VIEW_ADDED));
    }
}

TEST(ParameterText, KeyframesTravelAsText) {
    NumericParameter<double> number("a");
    key<double>(number, {{0.1, 2}}, 1);
    EXPECT_FALSE(number.getSerialisedKeyframe(at(7, 1)));
    const auto keyframe = number.getSerialisedKeyframe(at(0.1, 1));
    keyframe->setFromString(keyframe->toString());
    EXPECT_EQ(keyframe->context(), at(static_cast<double>(0.1f), 1));
    EXPECT_THROW(keyframe->setFromString("key( 1, 2, Linear ) )"), std::runtime_error);
    EXPECT_THROW(Parameter<bool>("b").importKeyframe(*keyframe), std::bad_cast);
    keyframe->setFromString("keyframes.append( Key( x, 1, Linear ) )");
    EXPECT_EQ(keyframe->context(), at(0, 1));
    keyframe->setFromString("view[0].keyframes.append( Key( 1e99, 1, Linear ) )");
    EXPECT_FALSE(keyframe->context().time.isValid());
}

TEST(StaticParameter, TakesVariantsAndSnapshotsOfItsType) {
    OwnedStaticParameter<unsigned int> mode("mode", 3);
    OwnedStaticParameter<QString> file("file", "x");
    int heard = 0;
    QObject::connect(&mode, &BasicParameter::valueChanged, [&] { heard += 1; });
    for (const auto& [variant, value] : {std::pair(QVariant("12"), 12u), {-1.0, ~0u}, {"many", 0u}}) {
        mode.setVariantValue(variant, Context());
        EXPECT_EQ(mode.variantValue(Context()), QVariant(value));
    }
    EXPECT_EQ(heard, 3);
    EXPECT_THROW(mode.doImportState(file.exportState()), std::bad_cast);
    const Warnings warnings;
    file.setValue("a\nb");
    EXPECT_EQ(lines(file, "node.") + lines(file, "node.", false), "node.file.value=\"a\nb\"\nnode.value=\"a\nb\"\n");
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
    const std::string time = "FileTimestamp.value=\"2021-03-01T14:05:09Z\"\n";
    EXPECT_EQ(rest("FileVersion.value=3001\n" + product + QString::fromStdString(time), header), time);
    EXPECT_TRUE(header.timestampText().isNull());
    EXPECT_EQ(BuildVersion(header), BuildVersion("4.1", "12"));
    EXPECT_EQ(rest("FileVersion.value=3002\nProductName.value=\"P\"\nx.value=1\n", header), "");
    EXPECT_FALSE(header.atEnd());

    ProjectFileVersion written("app");
    written.setTimestamp(QDateTime(QDate(2021, 3, 1), QTime(15, 5, 9), Qt::OffsetFromUTC, 3600));
    ParameterSet properties;
    written.initialiseProperties(properties);
    EXPECT_NE(lines(properties).find(time), std::string::npos);
}

// That lines are passed on and migrated is shown in examples/moved_parameter.cpp.
TEST(MovedParameter, WarnsOfATargetThatLeadsBackOrNeverCame) {
    const Warnings warnings;
    MovedParameter moved("old");
    EXPECT_FALSE(moved.setTargetParam(moved));
    EXPECT_TRUE(Warnings::text().contains("leads back"));
    Warnings::text().clear();
    MovedParameter("silent").setFromScriptString("other.value=3", version());
    EXPECT_EQ(Warnings::text(), "");
    MovedParameter("old").setFromScriptString("old.value=3", version());
    EXPECT_EQ(Warnings::text(),
              "MovedParameter[ \"old\" ]: streamed in \"value=3\" but never given target parameter\n");
}

TEST(MovedParameter, ItsLineWaitsForATargetThatTakesIt) {
    OwnedStaticParameter<unsigned int> target("target", 5);
    MovedParameter moved("old");
    moved.setFromScriptString("old.value=4", version());
    {
        OwnedStaticParameter<QString> refusing("text");
        EXPECT_FALSE(moved.setMigrationFunction([](auto...) { return false; }) || moved.setTargetParam(refusing));
    }
    EXPECT_FALSE(moved.setMigrationFunction([](auto...) { return true; }));
    EXPECT_TRUE(moved.isWaiting());
    EXPECT_TRUE(moved.setTargetParam(target));
    EXPECT_FALSE(moved.isWaiting());
    EXPECT_EQ(moved.variantValue(Context()), QVariant(5u));
    EXPECT_THROW(moved.setMigrationFunction({}), boost::bad_function_call);
}

} // namespace
