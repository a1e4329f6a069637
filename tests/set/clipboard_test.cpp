// Keyframes of several parameters as text.

#include "prm/CurveParameter.h"
#include "prm/KeyframeClipboard.h"
#include "tests/support/Library.h"

#include <gtest/gtest.h>

using namespace Prm;

namespace {

QString copyOf(const ParameterSet& set) {
    KeyframeSelection all;
    all.addSet(set);
    return KeyframeClipboard::textOf(all, set);
}

/// Parameters of several kinds, some in compounds; still empty.
struct Scene : ParameterSet {
    Scene() {
        for (P* parameter : {static_cast<P*>(&number), static_cast<P*>(&whole), static_cast<P*>(&text)})
            addParameter(*parameter);
        position.addParameter(x);
        inner.addParameter(y);
        inner.addParameter(point);
        position.addParameter(inner);
        layer.addParameter(position);
        addParameterSet(layer);
    }
    void fill() {
        key(number, {{1 / 3., 0.1}, {12345.678901, -1e300}});
        key(number, {{-5, 2.}, {7, 1 / 7.}}, 2);
        number.vSetInterpolationData({Interpolation::Bezier, 1 / 3., -7.1, 2 / 3., 1e9}, 0, View(0));
        number.vSetInterpolationData({static_cast<Interpolation>(9)}, 1, View(0));
        number.vSetExtrapolationBefore(Extrapolation::Linear);
        number.vSetExtrapolationAfter(static_cast<Extrapolation>(5));
        whole.vSetValue(-3, still());
        whole.vSetValue(4, still(1));
        key(text, {{0, QString("a \"b\"\nview[1].keyframes.append( Key( 1, 2, Linear ) ), x")}});
        key(x, {{1, 1.}, {2, 5.}, {9, 3.}});
        key(y, {{2, 7.5}});
        key(point, {{2, QPointF(1 / 9., 3)}});
    }

    using P = ParameterWithoutType;
    ParameterSet layer{"layer"};
    Number number{"number"}, x{"x"}, y{"y"};
    NumericParameter<int> whole{"whole"};
    Parameter<QString> text{"text"};
    PointParameter point{"point"};
    CompoundParameter position{"position", true}, inner{"inner"};
};

TEST(Clipboard, CopiesExactlyInOneStep) {
    Scene from;
    Scene to;
    from.fill();
    const QString text = copyOf(from);
    const QString before = copyOf(to);
    Command command;
    EXPECT_EQ(KeyframeClipboard(text).appendToCommand(to, command).join('\n').toStdString(), "");
    command.doIt();
    EXPECT_EQ(copyOf(to).toStdString(), text.toStdString());
    EXPECT_EQ(lines(to), lines(from));
    command.undoIt();
    EXPECT_EQ(copyOf(to).toStdString(), before.toStdString());

    // Another place and other views: one distance for all.
    Command later;
    KeyframeClipboard(text).appendToCommand(to, later, Time::fromDouble(100.25), {View(1)});
    later.doIt();
    EXPECT_EQ(to.number.keyframeTime(0, View(1)).time.toDouble(), 100.25);
    EXPECT_EQ(to.x.allKeyframes(), (QVector<Context>{at(106.25, 1), at(107.25, 1), at(114.25, 1)}));
    EXPECT_EQ(to.whole.staticValue(View(1)), 4);
}

TEST(Clipboard, FindsParametersByPathThenByNameAndTellsTheRest) {
    const QString line = "view 0\nkeyframes.append( Key( 5, 1, Linear ) )\n";
    const QString number = line + "keyframes.append( Key( 6, one, Linear ) )\nview 1\nvalue=2\n";
    // Path, type, what is reported, and the parameter that has the keyframe then.
    const std::tuple<const char*, const char*, const char*, const char*> rows[] = {
        {"layer.position.x", "double", "'layer.position.x': value 'one' is not a number", "x"},
        {"old.inner.y", "double", "'layer.position.inner.y': value 'one' is not a number", "y"},
        {"other.number", "double", "'number': value 'one' is not a number", "number"},
        {"number", "QPointF", "'number' has values of type double, not QPointF", ""},
        {"other.number", "int", "No parameter of type int matches 'other.number'", ""},
        {"", "double", "No parameter of type double matches ''", ""},
        {"a.same", "double", "Several parameters match 'a.same', among them same and layer.same", ""},
        {"still", "double", "'still' is not animated", ""},
    };
    for (const auto& [path, kind, told, taking] : rows) {
        Scene scene;
        Number one("same");
        Number two("same");
        Number still("still", 0, Splittable);
        scene.addParameter(one);
        scene.layer.addParameter(two);
        scene.addParameter(still);
        Command command;
        const QString text = QString("Prm keyframes 1\r\nparameter \"%1\" %2\n").arg(path, kind) + number;
        EXPECT_EQ(KeyframeClipboard(text).appendToCommand(scene, command).join('|').toStdString(), told);
        command.doIt();
        QStringList taken;
        scene.forEachParameterAndPart([&](ParameterWithoutType* parameter) {
            if (parameter->keyframeCount(View(0)) > 0)
                taken += parameter->scriptName();
        });
        EXPECT_TRUE(*taking ? taken.contains(taking) : taken.isEmpty()) << path;
    }
}

TEST(Clipboard, IsRefusedByOtherReadersAndRefusesOtherText) {
    Scene scene;
    scene.fill();
    const QString own = copyOf(scene);
    EXPECT_NE(errorOf([&] { ParameterPasteKeyframesEdit(scene.number, own).doIt(); }), "");
    EXPECT_NE(errorOf([&] { ParameterPasteKeyframesEdit(scene.position, own).doIt(); }), "");
    ProjectFile file(scene);
    EXPECT_FALSE(file.loadText(own.toUtf8()));

    const QString start = "Prm keyframes 1\n";
    const QString parameter = start + "parameter \"x\" double\n";
    const std::pair<QString, const char*> rows[] = {
        {"", "The text holds no copied keyframes: it does not begin with 'Prm keyframes 1'"},
        {"keyframes.append( Key( 5, 1, Linear ) )",
         "The text holds no copied keyframes: it does not begin with 'Prm keyframes 1'"},
        {"Prm keyframes 2\n", "The text has keyframes of a version that is not known: 'Prm keyframes 2'"},
        {start + "view 0\n", "Line 2: 'view 0' is no line of copied keyframes"},
        {start + "parameter \"x double\n", "Line 2: 'x double' has no quote after the path"},
        {parameter + "value=3\n", "Line 3: 'value=3' is no line of copied keyframes"},
        {parameter + "view -1\n", "Line 3: 'view -1' is no line of copied keyframes"},
        {parameter + "view 4294967295\n", "Line 3: 'view 4294967295' is no line of copied keyframes"},
        {parameter + "before=Bezier\n", "Line 3: 'before=Bezier' is no line of copied keyframes"},
        {parameter + "view 0\nkeyframes.append( Key( 5 ) )", "Line 4: 'keyframes.append( Key( 5 ) )' is no keyframe"},
        {parameter + "view 0\nkeyframes.append( Key( nan, 1, Linear ) )",
         "Line 4: 'keyframes.append( Key( nan, 1, Linear ) )' has no valid time"},
        {parameter + "view 0\nkeyframes.append( Key( -1e99, 1, Linear ) )",
         "Line 4: 'keyframes.append( Key( -1e99, 1, Linear ) )' has no valid time"},
    };
    for (const auto& [text, error] : rows)
        EXPECT_EQ(errorOf([&, one = text] { KeyframeClipboard{one}; }), error) << text.toStdString();
    Command command;
    EXPECT_THROW(KeyframeClipboard(own).appendToCommand(scene, command, Time::LAST), std::runtime_error);
    EXPECT_TRUE(command.empty());
}

} // namespace
