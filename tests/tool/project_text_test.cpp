// A project text may hold anything at all: it is read as far as possible, and its bytes come back as they were.

#include "prm/MoveKeyframeEdit.h"
#include "tests/support/Always.h"
#include "tool/BuiltParameter.h"
#include "tool/Checks.h"
#include "tool/Problem.h"
#include "tool/ProjectText.h"
#include "tool/edit/ParameterPatch.h"

#include <gtest/gtest.h>

using namespace Tool;

namespace {

/// Pieces from which lines of every kind come about, whole and broken.
const QList<QByteArray> cut =
    QByteArray("a|b.|a.b.|view[1].|view[0].|view[4000000000].|keyframes|.append( |Key( |BezierKey( |1|-2.5|1e39|nan|, |"
               "Linear|Constant| ) )|value=|views=[0, 1]|views=[7|hidden=1|before=Linear|after=|MasterParameterId=a.b|"
               "name=\"x\"|\"t\\\"|0 1|=|.|\n|\n|\r\n|\n\n|FileVersion.value=3002\n|ProductName.value=\"p\"\n|"
               "ProductVersion.value=\"1.2\"\n|FileTimestamp.value=\"\"\n|\xEF\xBB\xBF|\xFF\xC0|NUL|"
               "a.keyframes.append( Key( 1, 2, Linear ) )\n|a.b.view[3].value=1\n|"
               "a.keyframes.append( Key( 5.0,  x, Custom2 ) )\r\n|"
               "a.view[1].keyframes.append( BezierKey( 3, 2, 0, 0.123456789, 1, 1 ) )\n|"
               "a.value=2\n|a.views=[1, 0]\n|a.MasterParameterId=b\n|b.MasterParameterId=a\n")
        .split('|');
const std::vector<QByteArray> pieces(cut.begin(), cut.end());

void readEverything(const ProjectText& text) {
    Kinds kinds(text, KindRules());
    Masters masters;
    for (int node = 1; node < static_cast<int>(text.nodes().size()); ++node) {
        RC_ASSERT(text.findNode(text.path(node).toStdString()) == node || text.path(node).contains(QChar(0xFFFD)));
        if (!text.node(node).isParameter())
            continue;
        BuiltParameter built(text, node, kinds.of(node));
        built.followMasters(text, masters);
        built.sample({Prm::Time::fromInt(-1), Prm::Time::fromInt(3)}, Prm::View(1));
    }
    for (const Finding& finding : findingsIn(text))
        RC_ASSERT(finding.line >= 0 && finding.line < std::max(text.lineCount(), 1));
}

void editOnce(WrittenParameter::Edited& parameter, int what) {
    const Prm::Context place(*rc::gen::elementOf(std::vector<Prm::Time>{Prm::Time::fromInt(1), Prm::Time::fromInt(3),
                                                                        Prm::Time::fromDouble(4.5)}),
                             Prm::View(*rc::gen::inRange(0u, 3u)));
    if (what == 0)
        Prm::ParameterRetimeEdit(parameter, Prm::Retiming::shifted(*rc::gen::inRange(-2, 3))).doIt();
    else if (what == 1)
        Prm::MoveKeyframeEdit(parameter, {Prm::Time::fromInt(5), place.view}, place).doIt();
    else if (what == 2)
        Prm::ParameterSplitViewEdit(parameter, place.view).doIt();
    else
        Prm::ParameterSetValueEdit(parameter, QVariant::fromValue(WrittenValue{QStringLiteral("7"), -1}), place).doIt();
}

std::vector<std::string> linesOfOthers(const ProjectText& text, int node) {
    const std::vector<int>& own = text.node(node).lines;
    std::vector<std::string> lines;
    for (int i = 0; i < text.lineCount(); ++i) {
        if (std::find(own.begin(), own.end(), i) == own.end())
            lines.emplace_back(text.line(i));
    }
    return lines;
}

/// What is edited is read back as it was meant to be, and nothing else is touched.
void editEverything(const ProjectText& text) {
    for (int node = 1; node < static_cast<int>(text.nodes().size()); ++node) {
        if (!text.node(node).isParameter())
            continue;
        WrittenParameter written(linesOf(text, node), text.version());
        const WrittenState before = written.state();
        editOnce(written.parameter(), *rc::gen::inRange(0, 4));
        const WrittenState wanted = written.state();
        try {
            const ProjectText edited(bytesWith(text, changedLines(text, node, before, written)));
            const int again = edited.findNode(text.reading(text.node(node).lines.front()).path);
            RC_ASSERT(again >= 0);
            RC_ASSERT(linesOfOthers(edited, again) == linesOfOthers(text, node));
            const auto views = WrittenParameter(linesOf(edited, again), edited.version()).state().views;
            RC_ASSERT(views.size() == wanted.views.size());
            for (const auto& [view, data] : wanted.views) {
                RC_ASSERT(views.at(view).keys.size() == data.keys.size());
                RC_ASSERT(views.at(view).value == data.value);
            }
        } catch (const Problem&) {
            // The format holds only so many digits.
            continue;
        }
    }
}

TEST(ProjectText, AnyBytesComeBackAndAreReadAsFarAsTheyGo) {
    expectAlways(400, [] {
        QByteArray lines;
        for (const QByteArray& piece : *rc::gen::container<std::vector<QByteArray>>(rc::gen::elementOf(pieces)))
            lines += piece == "NUL" ? QByteArray(1, 0) : piece;
        const QByteArray noise =
            QByteArray::fromStdString(*rc::gen::container<std::string>(rc::gen::arbitrary<char>()));
        for (const QByteArray& bytes : {lines, noise, lines + noise}) {
            const ProjectText text(bytes);
            RC_ASSERT(text.bytes() == bytes);
            readEverything(text);
            editEverything(text);
        }
    });
}

QString written(const Prm::ParameterWithoutType& parameter) {
    QString text;
    QTextStream stream(&text);
    parameter.bStreamOut(stream, QString(), false);
    return text;
}

TEST(ProjectText, IsReadInTheFastestOrderAsInItsOwn) {
    const std::vector<QByteArray> lines{"keyframes.append( Key( 3, 1, Linear ) )",
                                        "keyframes.append( Key( 2, 2, Linear ) )",
                                        "keyframes.append( Key( 2, 3, Linear ) )",
                                        "view[1].keyframes.append( Key( 1, 4, Linear ) )",
                                        "keyframes.append( Key( inf, 5, Linear ) )",
                                        "keyframes.append( Key( -inf, 6, Linear ) )",
                                        "views=[0, 1]",
                                        "value=7",
                                        "view[0].value=8",
                                        "view[1].value=9",
                                        "hidden=1",
                                        "hidden=0",
                                        "after=Linear"};
    EXPECT_TRUE(rc::check([&] {
        QByteArray file = *rc::gen::element<QByteArray>("FileVersion.value=3000\n", "FileVersion.value=3002\n");
        Prm::Parameter<QString> expected;
        const ProjectText version(file);
        const auto any = rc::gen::container<std::vector<QByteArray>>(rc::gen::elementOf(lines));
        for (const QByteArray& line : *rc::gen::nonEmpty(any)) {
            file += "a." + line + '\n';
            expected.streamInValue(line, version.version(), {});
        }
        const ProjectText text(file);
        RC_ASSERT(written(*buildRaw(text, text.findNode("a"), {})) == written(expected));
    }));
}

} // namespace
