#include "prm/MovedParameter.h"
#include "prm/ParameterSet.h"
#include "prm/StaticParameter.h"
#include "tests/support/Warnings.h"
#include "tests/text/Lines.h"

#include <gtest/gtest.h>

using namespace Prm;

namespace {

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
    mode.setVariantValue(QVariant("many"), Context());
    EXPECT_EQ(mode.value(), 0u);
    EXPECT_THROW(mode.doImportState(file.exportState()), std::bad_cast);
    EXPECT_EQ(heard, 2);
    mode.doImportState(before);
    EXPECT_EQ(mode.value(), 3u);
    EXPECT_EQ(heard, 3);
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
}

TEST(MovedParameter, WarnsOfALineThatWentNowhere) {
    const Warnings warnings;
    MovedParameter("silent").setFromScriptString("other.value=3", version());
    EXPECT_EQ(Warnings::text(), "");
    MovedParameter("old").setFromScriptString("old.value=3", version());
    EXPECT_EQ(Warnings::text(),
              "MovedParameter[ \"old\" ]: streamed in \"value=3\" but never given target parameter\n");
}

} // namespace
