// The lines of parameters and sets.

#include "host/bsc/CompositeCommand.h"
#include "prm/CompoundParameter.h"
#include "prm/MovedParameter.h"
#include "prm/NumericParameter.h"
#include "prm/ParameterSet.h"
#include "prm/ParameterTree.h"
#include "prm/ProjectFile.h"
#include "prm/ProjectFileVersion.h"
#include "prm/SerialisedKeyframe.h"
#include "prm/StaticParameter.h"
#include "prm/project/Invariants.h"
#include "tests/parameter/Keying.h"
#include "tests/support/ChangeRecorder.h"
#include "tests/support/Errors.h"
#include "tests/support/Warnings.h"

#include <QTextStream>
#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

using namespace Prm;

namespace {

/// What a parameter or a set writes behind a prefix, with or without its own name or its subsets' prefixes.
template <class Writer> std::string lines(Writer& writer, const QString& prefix = {}, bool with = true) {
    QString text;
    QTextStream stream(&text);
    EXPECT_TRUE(writer.bStreamOut(stream, prefix, with));
    return text.toStdString();
}

ProjectFileVersion version(quint32 number = StreamVersion::latest) {
    ProjectFileVersion version;
    version.streamVersion = number;
    return version;
}

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

/// An override as it is published.
struct Banner : ParameterSet {
    using ParameterSet::ParameterSet;
    bool bStreamOut(QTextStream& stream, const QString& prefix, bool with) override {
        stream << "banner\n";
        return ParameterSet::bStreamOut(stream, prefix, with);
    }
};

/// Takes a line by a rule of its own.
struct AnyLine : NumericParameter<double> {
    explicit AnyLine(const QString& name)
        : ParameterWithoutType(false, false, nullptr), NumericParameter<double>(name) {}
    bool setFromScriptString(const QString& line, const ProjectFileVersion& version) override {
        return line.contains('!') || NumericParameter<double>::setFromScriptString(line, version);
    }
};

TEST(ParameterSet, OneOfManyMembersTakesTheLine) {
    ParameterSet root;
    std::vector<boost::shared_ptr<NumericParameter<double>>> numbers;
    for (int i = 0; i < 40; ++i)
        numbers.push_back(boost::make_shared<NumericParameter<double>>(QString("n%1").arg(i)));
    numbers.push_back(boost::make_shared<AnyLine>("own"));
    for (const auto& number : numbers)
        root.addParameter(number);
    const auto banner = boost::make_shared<Banner>("s");
    root.addParameterSet(banner);
    NumericParameter<double> target("target");
    MovedParameter moved("old");
    moved.setTargetParam(target);
    root.addBasicParameter(moved);
    CompoundParameter position;
    NumericParameter<double> x("x");
    position.addParameter(x);
    root.addParameter(position);
    const std::tuple<const char*, const char*, std::function<void()>, NumericParameter<double>*> rows[] = {
        {"the last by its name", "n39.value=1", [] {}, numbers[39].get()},
        {"a name with a dot", "a.b.value=2", [&] { numbers[30]->setScriptName("a.b"); }, numbers[30].get()},
        {"the nearer one of two", "a.b.value=3", [&] { numbers[25]->setScriptName("a.b"); }, numbers[30].get()},
        {"an additional name", "was.value=4", [&] { numbers[20]->addAdditionalScriptName("was"); }, numbers[20].get()},
        {"after one has died", "n39.value=5", [&] { numbers[1]->setScriptName("n1_"); }, numbers[39].get()},
        {"a moved one", "old.value=6", [] {}, &target},
        {"a part of a compound without a name", "x.value=7", [] {}, &x},
        {"the part after the compound was named", "c.x.value=8", [&] { position.setScriptName("c"); }, &x},
        {"a name that was given up", "n30.value=9", [] {}, nullptr},
    };
    for (const auto& [name, line, before, taker] : rows) {
        SCOPED_TRACE(name);
        before();
        EXPECT_EQ(root.bStreamIn(line, version()), taker != nullptr);
        EXPECT_TRUE(!taker || taker->value(at(0)) == QString(line).section('=', 1).toDouble());
        EXPECT_EQ(detail::verify(root), QString());
    }
    EXPECT_TRUE(root.bStreamIn("!", version())) << "a rule of a host's own";
    EXPECT_EQ(root.parameterWTWithName("n40"), nullptr);
    EXPECT_EQ(root.parameterWTWithName("c.x"), &x);
    EXPECT_EQ(root.subsetWithName("s"), banner.get());
    EXPECT_NE(lines(root).find("banner\n"), std::string::npos);
}

struct Told : ParameterTree {
    void subtreeAdded(ParameterSet* set) override { text += "+" + set->scriptName().toStdString() + " "; }
    void subtreeRemoved(ParameterSet* set) override { text += "-" + set->scriptName().toStdString() + " "; }
    std::string text;
};

TEST(ParameterSet, ItsTreeIsNotified) {
    const std::tuple<const char*, void (*)(ParameterSet&, const boost::shared_ptr<ParameterSet>&), const char*> rows[] =
        {
            {"assigned",
             [](ParameterSet& set, const auto&) {
                 ParameterSet other;
                 other.addParameterSet(boost::make_shared<ParameterSet>("new"));
                 set = other;
             },
             "+old -old +new "},
            {"cleared", [](ParameterSet& set, const auto&) { set.clearAllLists(); }, "+old -old "},
            {"removed", [](ParameterSet& set, const auto& old) { set.removeParameterSet(old); }, "+old -old "},
        };
    for (const auto& [name, act, told] : rows) {
        SCOPED_TRACE(name);
        Told tree;
        ParameterSet set("set", &tree);
        const auto old = boost::make_shared<ParameterSet>("old");
        set.addParameterSet(old);
        act(set, old);
        EXPECT_EQ(tree.text, told);
        EXPECT_EQ(old->parameterTree(), nullptr);
        EXPECT_EQ(detail::verify(*old), QString());
    }
}

TEST(ParameterSet, ObserversOfADeletionMayDeleteSets) {
    using Sets = std::array<std::unique_ptr<ParameterSet>, 2>;
    const std::tuple<const char*, void (*)(Sets&), std::size_t> rows[] = {
        {"the one that is cleared", [](Sets& sets) { sets[0]->clearAllLists(); }, 0},
        {"the one that is assigned", [](Sets& sets) { *sets[0] = *sets[1]; }, 0},
        {"the source of the assignment", [](Sets& sets) { *sets[0] = *sets[1]; }, 1},
        {"the one that dies", [](Sets& sets) { delete sets[0].release(); }, 1},
    };
    for (const auto& [name, act, deleted] : rows) {
        SCOPED_TRACE(name);
        Sets sets{std::make_unique<ParameterSet>("a"), std::make_unique<ParameterSet>("b")};
        for (int i = 0; i < 2; ++i) {
            const auto member = boost::make_shared<NumericParameter<double>>("member");
            sets[0]->addParameter(member);
            sets[0]->addParameterSet(boost::make_shared<ParameterSet>("below"));
            QObject::connect(member.get(), &ParameterWithoutType::changed,
                             [&sets, index = deleted] { sets[index].reset(); });
        }
        sets[1]->addParameterSet(boost::make_shared<ParameterSet>("new"));
        act(sets);
        EXPECT_FALSE(sets[deleted]);
        for (const auto& set : sets)
            EXPECT_TRUE(!set || detail::verify(*set).isEmpty());
    }
}

/// What an observer of a parameter's end finds in its set.
TEST(ParameterSet, ListsNothingHalfDestroyed) {
    ParameterSet set;
    auto moved = std::make_unique<MovedParameter>("old");
    set.addBasicParameter(*moved);
    std::size_t listed = 9;
    boost::shared_ptr<int> end(nullptr, [&](int*) { listed = set.basicParameters().size(); });
    moved->setMigrationFunction([held = end](auto...) { return held == nullptr; });
    end.reset();
    moved.reset();
    EXPECT_EQ(listed, 0u);
}

TEST(ParameterSet, CommandsOfPartsReachTheirObserverOnce) {
    ParameterSet root;
    ParameterSet below("below");
    CompoundParameter outer("outer");
    CompoundParameter inner("inner");
    NumericParameter<double> part("part");
    inner.addParameter(part);
    outer.addParameter(inner);
    below.addParameter(outer);
    below.addParameter(part);
    root.addParameterSet(below);
    ChangeRecorder recorder;
    const auto attach = [&](bool recursive) {
        root.AttachCommandRegistrationObserver(&recorder, SLOT(onChanged(Prm::ParameterChange&)), recursive);
    };
    Bsc::CompositeCommand command;
    attach(false);
    EXPECT_FALSE(part.hasCommandRegistrationObserver());
    attach(true);
    part.registerCompositeCommand(command, at(0));
    EXPECT_EQ(recorder.take(), "COMMAND_REGISTERED 0 0\n");
    root.DetachCommandRegistrationObserver(&recorder, true);
    for (const ParameterWithoutType* parameter : std::initializer_list<ParameterWithoutType*>{&outer, &inner, &part})
        EXPECT_FALSE(parameter->hasCommandRegistrationObserver());
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

TEST(ParameterSet, MayBeDeepOrWide) {
    EXPECT_TRUE(textOf(10000, true).contains(".s.s.name="));
    EXPECT_TRUE(textOf(300000, false).contains("\ns_300000.name=\"n\""));
}

} // namespace
