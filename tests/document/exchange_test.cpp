// What is written in another form is what the project text says, by readings of our own and by the way back.

#include "prm/Exchange.h"
#include "prm/GuessedSets.h"
#include "prm/ProjectDiff.h"
#include "tests/support/Library.h"

#include <QRegularExpression>
#include <gtest/gtest.h>

#include <random>

using namespace Prm;

namespace {

/// A project text, to be asked for values.
class Opened {
public:
    explicit Opened(const QByteArray& text, const QStringList& rules = {}) : m_root(guessedSets(text, rules)) {
        EXPECT_TRUE(ProjectFile(*m_root).loadText(text));
    }

    /// NaN where there is no such parameter.
    QPointF value(const QString& path, const Context& context) const {
        const ParameterSet* set = m_root.get();
        QStringList names = path.split('.');
        const QString last = names.takeLast();
        for (const QString& name : qAsConst(names))
            set = set ? set->subsetWithName(name) : nullptr;
        const auto parameter = set ? set->parameterWTWithName(last) : nullptr;
        const QVariant value = parameter ? parameter->variantValue(context) : QVariant(std::nan(""));
        return value.userType() == QMetaType::QPointF ? value.toPointF() : QPointF(value.toDouble(), 0);
    }

private:
    boost::shared_ptr<ParameterSet> m_root;
};

/// Project text made of random numbers.
class Random {
public:
    explicit Random(unsigned int seed) : m_random(seed) {}

    int below(int end) { return static_cast<int>(m_random() % static_cast<unsigned int>(end)); }

    QByteArray number(double least, double most) {
        return QByteArray::number(least + (most - least) * below(10001) / 10000, 'g', 6);
    }

    QByteArray value(bool isPoint) { return number(-50, 50) + (isPoint ? ' ' + number(-50, 50) : QByteArray()); }

    /// Up to 7 keyframes at quarter frames, of any kind that other forms have.
    QByteArray animated(const QByteArray& path, bool isPoint, const char* view = "") {
        QByteArray lines = path + ".before=Constant\n" + path + ".after=Constant\n";
        double time = below(40) / 4. - 3;
        for (int left = 1 + below(7); left > 0; --left, time += (1 + below(30)) / 4.) {
            const int kind = below(4);
            const QByteArray start = QByteArray::number(time) + ", " + value(isPoint) + ", ";
            lines += path + view + ".keyframes.append( ";
            if (kind < 2)
                lines += "BezierKey( " + start + number(0, 1) + ", " + number(-2, 3) + ", " + number(0, 1) + ", " +
                         number(-2, 3) + " ) )\n";
            else
                lines += "Key( " + start + (kind == 2 ? "Linear" : "Constant") + " ) )\n";
        }
        return lines;
    }

private:
    std::minstd_rand m_random;
};

QVector<Time> quarters() {
    QVector<Time> times;
    for (int quarter = -20; quarter < 260; ++quarter)
        times += Time::fromDouble(quarter / 4.);
    return times;
}

struct PlaceRow {
    const char* path;
    bool isPoint;
    /// Where an animation has the value, or its two components.
    QStringList places;
};

const PlaceRow animationPlaces[] = {
    {"a.opacity", false, {"a.transform.opacity"}},
    {"a.rotation", false, {"a.transform.rotation"}},
    {"a.scale", true, {"a.transform.scale.x", "a.transform.scale.y"}},
    {"a.position", true, {"a.transform.position.x", "a.transform.position.y"}},
    {"a.glow", false, {"a.effects.glow.Slider"}},
    {"a.centre", true, {"a.effects.centre.Point.x", "a.effects.centre.Point.y"}},
    {"b.inner.far", false, {"b_inner.effects.far.Slider"}},
};

TEST(Exchange, AnimationsShowWhatTheProjectShows) {
    for (unsigned int seed = 1; seed <= 40; ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        QByteArray text;
        for (const PlaceRow& row : animationPlaces)
            text += random.animated(row.path, row.isPoint);
        ExportOptions options;
        options.framesPerSecond = 24;
        const Opened own(text);
        const Opened other(importAnimation(exportAnimation(text, options).text).text);
        for (const PlaceRow& row : animationPlaces) {
            for (const Time time : quarters()) {
                const Context context(time, View());
                const QPointF value = own.value(row.path, context);
                ASSERT_NEAR(other.value(row.places.front(), context).x(), value.x(), 1e-9)
                    << row.path << " " << time.toDouble();
                if (row.isPoint) {
                    ASSERT_NEAR(other.value(row.places.back(), context).x(), value.y(), 1e-9)
                        << row.path << " " << time.toDouble();
                }
            }
        }
    }
}

TEST(Exchange, TablesHaveEveryValueOfEveryView) {
    for (unsigned int seed = 1; seed <= 40; ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        QByteArray text = "n.views=[0, 1]\np.views=[0, 5]\n";
        text += random.animated("n", false, ".view[0]") + random.animated("n", false, ".view[1]");
        text += random.animated("p", true, ".view[0]") + "p.view[5].value=" + random.value(true) + '\n';
        text += "g.tied.MasterParameterId=n\ng.still.value=" + random.value(false) + '\n';
        ExportOptions options;
        options.times = quarters();
        const Opened own(text);
        const Opened other(importTable(exportTable(text, options).text).text);
        for (const Time time : qAsConst(options.times)) {
            for (const auto& [path, view] : {std::pair("n", 0u),
                                             {"n", 1u},
                                             {"p", 0u},
                                             {"p", 5u},
                                             {"g.tied", 0u},
                                             {"g.tied", 1u},
                                             {"g.still", 0u}}) {
                const Context context(time, View(view));
                ASSERT_EQ(other.value(path, context), own.value(path, context))
                    << path << " view " << view << " at " << time.toDouble();
            }
        }
    }
}

// --- style sheets, as a browser reads them ---------------------------------------------------------------------------

struct Stop {
    double part;
    double value;
    QString easing;
};

/// How far a cubic from (0, 0) to (1, 1) has come where its x is as given, by bisection.
double cubic(double x, double x1, double y1, double x2, double y2) {
    const auto along = [](double t, double first, double second) {
        return 3 * (1 - t) * (1 - t) * t * first + 3 * (1 - t) * t * t * second + t * t * t;
    };
    double low = 0;
    double high = 1;
    for (int i = 0; i < 200; ++i) {
        const double middle = (low + high) / 2;
        (along(middle, x1, x2) < x ? low : high) = middle;
    }
    return along(low, y1, y2);
}

double eased(double part, const QString& easing) {
    static const QRegularExpression bezier("^cubic-bezier\\((.*), (.*), (.*), (.*)\\)$");
    const QRegularExpressionMatch found = bezier.match(easing);
    if (found.hasMatch())
        return cubic(part, found.captured(1).toDouble(), found.captured(2).toDouble(), found.captured(3).toDouble(),
                     found.captured(4).toDouble());
    return easing == "linear" ? part : std::floor(part);
}

/// Custom properties over time.
class Sheet {
public:
    explicit Sheet(const QString& text) : m_text(text) {}

    double value(const QString& name, const QString& property, double second) const {
        const QString time = first("\\." + name + " \\{ animation: " + name + " (.*)s linear (.*)s both; \\}", 1);
        if (time.isEmpty())
            return first("\\." + name + " \\{.* --" + property + ": ([^;]*);.*\\}", 1).toDouble();
        const double start =
            first("\\." + name + " \\{ animation: " + name + " (.*)s linear (.*)s both; \\}", 2).toDouble();
        const double part = std::clamp((second - start) / time.toDouble(), 0., 1.);
        const std::vector<Stop> stops = stopsOf(name, property);
        for (std::size_t i = 0; i + 1 < stops.size(); ++i) {
            const Stop& from = stops[i];
            const Stop& to = stops[i + 1];
            if (part < to.part)
                return from.value +
                       (to.value - from.value) * eased((part - from.part) / (to.part - from.part), from.easing);
        }
        return stops.back().value;
    }

private:
    QString first(const QString& pattern, int group) const {
        return QRegularExpression(pattern).match(m_text).captured(group);
    }

    std::vector<Stop> stopsOf(const QString& name, const QString& property) const {
        std::vector<Stop> stops;
        const QRegularExpression stop("(\\S+)% \\{.* --" + property + ": ([^;]*);(?:.*function: ([^;]*);)?");
        const int start = m_text.indexOf("@keyframes " + name + " {");
        const QString rule = m_text.mid(start, m_text.indexOf("\n}", start) - start);
        for (auto each = stop.globalMatch(rule); each.hasNext();) {
            const QRegularExpressionMatch match = each.next();
            stops.push_back({match.captured(1).toDouble() / 100, match.captured(2).toDouble(), match.captured(3)});
        }
        return stops;
    }

    QString m_text;
};

TEST(Exchange, StyleSheetsShowWhatTheProjectShows) {
    for (unsigned int seed = 1; seed <= 15; ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        const QByteArray text = random.animated("a.x", false) + random.animated("a.p", true);
        ExportOptions options;
        options.framesPerSecond = 25;
        const Opened own(text);
        const Sheet sheet(QString::fromUtf8(exportStyleSheet(text, options).text));
        for (int i = 0; i < 150; ++i) {
            // Between the quarters, since a browser rounds where a hold ends.
            const double frame = i / 2. - 7.3;
            const Context context(Time::fromDouble(frame), View());
            EXPECT_NEAR(sheet.value("a-x", "a-x", frame / 25), own.value("a.x", context).x(), 1e-6) << frame;
            EXPECT_NEAR(sheet.value("a-p", "a-p-x", frame / 25), own.value("a.p", context).x(), 1e-6) << frame;
            EXPECT_NEAR(sheet.value("a-p", "a-p-y", frame / 25), own.value("a.p", context).y(), 1e-6) << frame;
        }
    }
}

struct ShownRow {
    const char* name;
    const char* views;
    /// In which there are keyframes; "" for the only place of all views.
    std::vector<const char*> prefixes;
};

const ShownRow shownViews[] = {
    {"one place", "", {""}},
    {"the first view only", "[0]", {".view[0]"}},
    {"not in the first view", "[2]", {".view[2]"}},
    {"views apart", "[1, 3, 7]", {".view[1]", ".view[3]", ".view[7]"}},
};

// A view without data has the keyframes of another one, not only its values frame by frame.
TEST(Exchange, WhatHoldsOneViewHoldsWhatTheViewShows) {
    for (const ShownRow& row : shownViews) {
        Random random(7);
        QByteArray text;
        for (const QByteArray path : {"a.rotation", "a.opacity"}) {
            text += *row.views ? path + ".views=" + row.views + '\n' : QByteArray();
            for (const char* prefix : row.prefixes)
                text += random.animated(path, false, prefix);
        }
        text += "a.scale.value=1 2\na.glow.MasterParameterId=a.rotation\n";
        const Opened own(text);
        for (const quint32 id : {0u, 1u, 2u, 3u, 5u, 7u, 9u}) {
            SCOPED_TRACE(std::string(row.name) + ", view " + std::to_string(id));
            ExportOptions options;
            options.framesPerSecond = 25;
            options.view = View(id);
            const Opened animation(importAnimation(exportAnimation(text, options).text).text);
            const Sheet sheet(QString::fromUtf8(exportStyleSheet(text, options).text));
            for (int i = 0; i < 60; ++i) {
                const double frame = i - 7.3;
                const auto value = [&](const char* path) {
                    return own.value(path, Context(Time::fromDouble(frame), View(id))).x();
                };
                const auto shown = [&](const char* path) {
                    return animation.value(path, Context(Time::fromDouble(frame), View())).x();
                };
                ASSERT_NEAR(shown("a.transform.rotation"), value("a.rotation"), 1e-9) << frame;
                ASSERT_NEAR(shown("a.transform.opacity"), value("a.opacity"), 1e-9) << frame;
                ASSERT_NEAR(shown("a.effects.glow.Slider"), value("a.glow"), 1e-9) << frame;
                ASSERT_NEAR(sheet.value("a-rotation", "a-rotation", frame / 25), value("a.rotation"), 1e-6) << frame;
                ASSERT_NEAR(sheet.value("a-glow", "a-glow", frame / 25), value("a.glow"), 1e-6) << frame;
            }
        }
    }
}

// --- objects of animations -------------------------------------------------------------------------------------------

struct ObjectRow {
    const char* name;
    /// Layers, and assets if there are any.
    const char* layers;
    const char* assets;
    /// Paths that have to be in the project text.
    QStringList paths;
};

const ObjectRow objects[] = {
    {"solid",
     R"({"ty":1,"sc":"#ff0000","sw":10,"sh":10,"ip":0,"op":9,"ks":{"o":{"a":0,"k":5}}})",
     "",
     {"solid.transform.opacity.value=5"}},
    {"picture",
     R"({"ty":2,"refId":"i","ip":0,"op":9,"ks":{"r":{"a":0,"k":5}}})",
     R"({"id":"i","w":9,"h":9,"u":"","p":"x.png","e":0})",
     {"image.transform.rotation.value=5"}},
    {"parent",
     R"({"ty":3,"ind":7,"nm":"one","ip":0,"op":9,"ks":{}},{"ty":3,"nm":"two","parent":7,"ip":0,"op":9,"ks":{}})",
     "",
     {"two.parent.value=\"one\""}},
    {"composition",
     R"({"ty":0,"refId":"c","nm":"outer","ip":0,"op":9,"ks":{},"tm":{"a":1,"k":[{"t":0,"s":[0],"h":1},{"t":9,"s":[1]}]}})",
     R"({"id":"c","nm":"Inner","fr":30,"layers":[{"ty":3,"nm":"deep","ip":0,"op":9,"ks":{"o":{"a":0,"k":3}}}]})",
     {"Inner.deep.transform.opacity.value=3", "Inner.deep.frame_rate.value=30", "outer.composition.value=\"Inner\""}},
    {"dashes",
     R"({"ty":4,"nm":"s","ip":0,"op":9,"ks":{},"shapes":[{"ty":"st","c":{"a":0,"k":[1,0,0,1]},"o":{"a":0,"k":50},"w":{"a":0,"k":2},"d":[{"n":"d","nm":"dash","v":{"a":0,"k":4}},{"n":"g","nm":"gap","v":{"a":0,"k":6}}]}]})",
     "",
     {}},
    {"shapes in groups",
     R"({"ty":4,"nm":"s","ip":0,"op":9,"ks":{},"shapes":[{"ty":"gr","nm":"g","it":[{"ty":"el","p":{"a":0,"k":[1,2]},"s":{"a":0,"k":[3,4]}},{"ty":"rp","c":{"a":0,"k":3},"o":{"a":0,"k":1},"m":1,"tr":{"ty":"tr","so":{"a":0,"k":9},"eo":{"a":0,"k":8}}},{"ty":"tr","o":{"a":0,"k":7}}]}]})",
     "",
     {}},
    {"mask",
     R"({"ty":3,"nm":"s","ip":0,"op":9,"ks":{},"masksProperties":[{"nm":"hole","mode":"a","inv":false,"o":{"a":0,"k":60},"x":{"a":0,"k":2},"pt":{"a":0,"k":{"c":true,"v":[[0,0]],"i":[[0,0]],"o":[[0,0]]}}}]})",
     "",
     {}},
    {"effects",
     R"({"ty":3,"nm":"s","ip":0,"op":9,"ks":{},"ef":[{"ty":5,"nm":"fx","en":1,"ef":[{"ty":0,"nm":"amount","v":{"a":0,"k":1.5}},{"ty":2,"nm":"tint","v":{"a":0,"k":[1,0.5,0.25,1]}},{"ty":7,"nm":"on","v":{"a":0,"k":1}},{"ty":3,"nm":"at","v":{"a":1,"k":[{"t":0,"s":[1,2],"o":{"x":0.3,"y":0},"i":{"x":0.6,"y":1}},{"t":5,"s":[3,4]}]}}]}]})",
     "",
     {}},
    {"text",
     R"({"ty":5,"nm":"t","ip":0,"op":9,"ks":{},"t":{"d":{"k":[{"t":0,"s":{"t":"x","f":"","s":12}}]},"p":{},"m":{"g":1,"a":{"a":0,"k":[0,0]}},"a":[{"nm":"move","s":{"t":0,"s":{"a":0,"k":5},"e":{"a":0,"k":90}},"a":{"o":{"a":0,"k":30}}}]}})",
     "",
     {}},
    {"one axis alone",
     R"({"ty":3,"nm":"s","ip":0,"op":9,"ks":{"p":{"s":true,"x":{"a":1,"k":[{"t":0,"s":[1],"o":{"x":0.1,"y":2},"i":{"x":0.9,"y":-1}},{"t":8,"s":[3]}]},"y":{"a":0,"k":4}}}})",
     "",
     {"s.transform.position.y.value=4"}},
    {"names given twice",
     R"({"ty":3,"nm":"s","ip":0,"op":9,"ks":{}},{"ty":3,"nm":"s","ip":0,"op":9,"ks":{}},{"ty":3,"nm":"s 2","ip":0,"op":9,"ks":{}})",
     "",
     {}},
};

QByteArray withoutTime(const QByteArray& text) {
    return QByteArray(text).replace(text.indexOf("FileTimestamp"),
                                    text.indexOf('\n', text.indexOf("FileTimestamp")) - text.indexOf("FileTimestamp"),
                                    "");
}

TEST(Exchange, ObjectsOfAnimationsComeBack) {
    for (const ObjectRow& row : objects) {
        SCOPED_TRACE(row.name);
        const QByteArray json = QByteArray(R"({"v":"5.7.0","fr":24,"ip":0,"op":9,"w":9,"h":9,"assets":[)") +
                                row.assets + R"(],"layers":[)" + row.layers + "]}";
        const ImportedText given = importAnimation(json);
        for (const QString& path : row.paths)
            EXPECT_TRUE(given.text.contains('\n' + path.toUtf8() + '\n')) << path.toStdString() << "\n"
                                                                          << given.text.toStdString();
        const ExportedText written = exportAnimation(given.text);
        EXPECT_EQ(withoutTime(importAnimation(written.text).text).toStdString(), withoutTime(given.text).toStdString())
            << written.text.toStdString();
    }
}

struct LossRow {
    const char* name;
    const char* lines;
    const char* fragment;
    QStringList losses;
};

const LossRow losses[] = {
    {"frame rates",
     "a.name=\"a\"\na.frame_rate.value=24\nb.name=\"b\"\nb.frame_rate.value=30\n",
     R"("fr":24,)",
     {"b: its frame rate is 24, as of the layers beside it"}},
    {"parent that is none",
     "a.name=\"a\"\na.frame_rate.value=24\na.parent.value=\"zz\"\n",
     R"("fr":24,)",
     {"a: its parent zz is no layer beside it"}},
    {"composition that is none",
     "a.name=\"a\"\na.frame_rate.value=24\na.composition.value=\"zz\"\n",
     R"("ty":0)",
     {"a: its composition zz has no layers"}},
};

TEST(Exchange, AnimationsSayWhatTheyDoNotHold) {
    for (const LossRow& row : losses) {
        SCOPED_TRACE(row.name);
        const ExportedText written = exportAnimation(row.lines);
        EXPECT_TRUE(written.text.contains(row.fragment)) << written.text.toStdString();
        EXPECT_EQ(written.losses.join("\n").toStdString(), row.losses.join("\n").toStdString());
    }
}

} // namespace
