#include "tests/parameter/EditTable.h"

#include "tests/support/ChangeRecorder.h"

#include <QPointer>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <stdexcept>

using namespace Prm;

namespace {

using P = Parameter<int>;
using Observer = std::function<void(P&, const ParameterChange&)>;

QString lineOf(const ParameterChange& change) {
    QString line = change.typeToString().remove(QRegExp("^(KEYFRAME_|PARAMETER_)(CHANGED_)?"));
    if (change.type <= ParameterChange::KEYFRAME_CHANGED_INTERPOLATION)
        line += QString::number(static_cast<int>(change.getAffectedIndex()));
    if (change.context.view != View(0))
        line += QStringLiteral("@%1").arg(static_cast<int>(change.context.view.id()));
    if (change.type == ParameterChange::KEYFRAME_REMOVED)
        line += QStringLiteral("[%1]").arg(change.context.time.toDouble());
    return line;
}

const std::pair<const char*, Observer> hostileObservers[] = {
    {"deletes it", [](P& p, const ParameterChange&) { delete &p; }},
    {"throws", [](P&, const ParameterChange&) { throw std::logic_error("observer"); }},
    {"deletes the view", [](P& p, const ParameterChange& change) { p.deleteView(change.context.view); }},
    {"deletes view 0", [](P& p, const ParameterChange&) { p.deleteView(View(0)); }},
    {"clears all views", [](P& p, const ParameterChange&) { p.clearViewData(); }},
    {"deletes keyframes", [](P& p, const ParameterChange& change) { p.vDeleteAllKeyframes(change.context.view); }},
    {"calls back", [](P& p, const ParameterChange& change) { p.vSetValue(-1, at(3, change.context.view.id())); }},
    {"splits another view", [](P& p, const ParameterChange&) { p.uniquifyView(View(8)); }},
    {"assigns", [](P& p, const ParameterChange&) { p.assignFrom(*made("ks", "0 10=3 30=4; 2 5=1")); }},
    {"forbids views", [](P& p, const ParameterChange&) { p.setSplittable(false); }},
};

void expectSound(const P& parameter) {
    const std::vector<View>& views = parameter.viewList();
    EXPECT_TRUE(std::is_sorted(views.begin(), views.end()));
    EXPECT_EQ(std::adjacent_find(views.begin(), views.end()), views.end());
    EXPECT_EQ(parameter.isSplit(), views.size() > 1);
    EXPECT_TRUE(std::all_of(views.begin(), views.end(), [&](View view) { return parameter.hasViewData(view); }));
    EXPECT_EQ(parameter.value(at(1, 12)), parameter.value(at(1, 13)));
}

/// At the change of that number the observer acts, once.
void runUnder(const Observer& observer, int number, P* parameter, const std::function<void(P&)>& act) {
    const QPointer<QObject> alive(parameter);
    int seen = 0;
    ChangeRecorder recorder(parameter);
    recorder.then = [&, parameter](const ParameterChange& change) {
        if (seen++ == number)
            observer(*parameter, change);
    };
    try {
        act(*parameter);
    } catch (const std::logic_error&) {
    }
    EXPECT_TRUE(!alive || seen > number) << "change " << number << " did not come";
    if (!alive)
        return;
    parameter->detachAllObservers();
    expectSound(*parameter);
    delete parameter;
}

} // namespace

QString text(const P& parameter) {
    QStringList views;
    for (const View view : parameter.viewList()) {
        const int value = parameter.staticValue(view);
        views += QString::number(view.id()) + (value == 0 ? QString() : QStringLiteral("(%1)").arg(value));
        for (unsigned int i = 0; i < parameter.keyframeCount(view); ++i)
            views.last() += QStringLiteral(" %1=%2")
                                .arg(parameter.keyframeTime(i, view).time.toDouble())
                                .arg(parameter.keyframeValue(i, view));
    }
    return views.join("; ");
}

std::unique_ptr<P> made(const QString& options, const QString& state) {
    const auto has = [&](char letter, ParameterOption option) {
        return options.contains(letter) ? option : ParameterOption();
    };
    auto parameter = std::make_unique<P>("edited", 0, ParameterOptions(has('k', Keyframed) | has('s', Splittable)));
    for (const QString& view : state.split("; ", Qt::SkipEmptyParts)) {
        const QStringList parts = view.split(QRegExp("[ ()=]+"), Qt::SkipEmptyParts);
        const bool hasStatic = view.contains('(');
        parameter->vSetValue(hasStatic ? parts[1].toInt() : 0, still(parts[0].toUInt()));
        for (int i = hasStatic ? 2 : 1; i < parts.size(); i += 2)
            parameter->vSetValue(parts[i + 1].toInt(), at(parts[i].toDouble(), parts[0].toUInt()));
    }
    if (!state.isEmpty() && !state.startsWith('0'))
        parameter->deleteView(View(0));
    parameter->vSetDefault(options.contains('6') ? 6 : 0);
    return parameter;
}

QString changesDuring(ParameterWithoutType& parameter, const std::function<void()>& act) {
    QStringList lines;
    ChangeRecorder recorder(&parameter);
    recorder.then = [&](const ParameterChange& change) { lines += lineOf(change); };
    act();
    return lines.join(' ');
}

Context Words::context(int i) const {
    const QStringList parts = value(i).split('@');
    const Time time = parts[0] == "-" ? Time::INVALID : Time::fromDouble(parts[0].toDouble());
    return {time, View(static_cast<quint32>(parts.value(1).toInt()))};
}

void checkEdits(const Verbs& verbs, const char* table) {
    for (const QString& line : QString(table).split('\n', Qt::SkipEmptyParts)) {
        SCOPED_TRACE(line.toStdString());
        QStringList cells;
        for (const QString& cell : line.split('|'))
            cells += cell.trimmed();
        ASSERT_EQ(cells.size(), 6);
        Words words;
        words += cells[3].split(' ');
        const Verb& verb = verbs.at(words[0]);
        const auto parameter = made(cells[1], cells[2]);
        QString answer;
        const QString changes = changesDuring(*parameter, [&] { answer = verb.run(*parameter, words); });
        EXPECT_EQ((answer + changes).trimmed().toStdString(), cells[4].toStdString());
        EXPECT_EQ(text(*parameter).toStdString(), cells[cells[5] == "=" ? 2 : 5].toStdString());
        expectSound(*parameter);
        const int count = changes.isEmpty() ? 0 : changes.count(' ') + 1;
        for (int number = 0; number < count; ++number) {
            for (const auto& [name, observer] : hostileObservers) {
                SCOPED_TRACE(name);
                runUnder(observer, number, made(cells[1], cells[2]).release(), [&](P& p) { verb.run(p, words); });
            }
        }
    }
}
