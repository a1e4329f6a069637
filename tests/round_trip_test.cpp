// Random trees of sets, saved, loaded into an equal tree and saved again, in a locale with decimal commas.

#include "prm/NumericParameter.h"
#include "prm/ParameterSet.h"
#include "prm/ProjectFile.h"
#include "prm/StaticParameter.h"
#include "tests/support/Always.h"
#include "tests/support/Warnings.h"

#include <QTextStream>
#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include <clocale>
#include <cmath>

using namespace Prm;

namespace {

template <class T> T valueOf(int i) {
    return static_cast<T>(i);
}
template <> bool valueOf(int i) {
    return i % 2 != 0;
}
template <> double valueOf(int i) {
    return i == 3 ? NAN : i == 4 ? -0.0 : i == 5 ? 1e300 : i / 3.;
}
template <> QPoint valueOf(int i) {
    return {i, -i};
}
template <> QPointF valueOf(int i) {
    return {valueOf<double>(i), 1e-9 * i};
}
template <> QString valueOf(int i) {
    const QString texts[] = {"",        "\"",       ", \"",
                             "a, b) )", "\\n\n\r",  QString("\u20ac") + QChar(0),
                             "=\"x\"=", "Key( 1, ", QString("z") + QChar(0xD83D)};
    return texts[i % 9];
}

struct Step {
    int act, at, other, view, time, value;
};

void showValue(const Step& s, std::ostream& out) {
    out << "{" << s.act << ", " << s.at << ", " << s.other << ", " << s.view << ", " << s.time << ", " << s.value
        << "}";
}

/// The same members for the same steps; edits come after.
struct Tree {
    explicit Tree(const std::vector<Step>& steps) {
        ParameterSet* set = &root;
        for (const Step& s : steps) {
            const QString name = (s.other == 0 ? "n.%1" : s.other == 1 ? "n=%1" : "\u00f6 %1_");
            make(*set, s, name.arg(edits.size()));
            if (s.act > 8) {
                const auto below = boost::make_shared<ParameterSet>("s.1");
                set->addParameterSet(below);
                set = s.act == 9 ? below.get() : &root;
            }
        }
        file.setTimeOfWriting(QDateTime(QDate(2021, 3, 1), QTime(), Qt::UTC));
    }

    template <class Kind> void add(ParameterSet& set, const Step& s, const QString& name) {
        using Value = std::decay_t<decltype(std::declval<Kind>().defaultValue())>;
        const auto parameter = boost::make_shared<Kind>(name, Value(), static_cast<ParameterOptions>(s.time & 3));
        set.addParameter(parameter);
        all.push_back(parameter.get());
        edits.push_back([p = parameter.get()](const Step& step) {
            const View view(step.view < 3 ? static_cast<quint32>(step.view) : 2147483646u);
            const double times[] = {step.time / 2., step.time * 0.1, 1e6 + step.time, -1e300};
            p->vSetValue(
                valueOf<Value>(step.value),
                {step.time > 20 ? Time(Time::INVALID) : Time::fromDouble(times[step.other > 2 ? 0 : step.other]),
                 view});
            const auto kind = static_cast<Interpolation>(1 + step.value % 5);
            p->vSetInterpolationData(step.act > 5 && (step.other != 3 || kind == Interpolation::Bezier)
                                         ? IType(kind, 0.1, step.value, 1. / 3, -2)
                                         : IType(kind),
                                     0, view);
            if (step.act == 1)
                p->vSetExtrapolationAfter(static_cast<Extrapolation>(1 + step.value % 3));
            p->hide(step.act == 2);
        });
    }
    template <class Value> void addStatic(ParameterSet& set, const Step&, const QString& name) {
        auto parameter = std::make_unique<OwnedStaticParameter<Value>>(QString(name).remove('='));
        edits.push_back([p = parameter.get()](const Step& s) { p->setValue(valueOf<Value>(s.value)); });
        set.adoptBasicParameter(std::move(parameter));
    }
    void make(ParameterSet& set, const Step& s, const QString& name) {
        using Make = void (Tree::*)(ParameterSet & set, const Step& s, const QString& name);
        static const Make kinds[] = {&Tree::add<Parameter<bool>>,
                                     &Tree::add<Parameter<QString>>,
                                     &Tree::add<Parameter<QPoint>>,
                                     &Tree::add<PointParameter>,
                                     &Tree::add<NumericParameter<double>>,
                                     &Tree::add<NumericParameter<int>>,
                                     &Tree::add<NumericParameter<unsigned>>,
                                     &Tree::addStatic<unsigned>,
                                     &Tree::addStatic<QString>};
        (this->*kinds[std::min<std::size_t>(static_cast<std::size_t>(s.act), std::size(kinds) - 1)])(set, s, name);
    }
    void edit(const Step& s) {
        const auto at = static_cast<std::size_t>(s.at);
        if (!edits.empty())
            edits[at % edits.size()](s);
        if (s.act == 0 && !all.empty())
            all[at % all.size()]->bAddConstrainedParameter(all[static_cast<std::size_t>(s.value) % all.size()]);
        if (s.act == 3)
            root.assignName(valueOf<QString>(s.value));
    }

    ParameterSet root;
    ProjectFile file{root};
    std::vector<ParameterWithoutType*> all;
    std::vector<std::function<void(const Step&)>> edits;
};

void roundTrip(const std::vector<Step>& members, const std::vector<Step>& edits) {
    Tree first(members);
    for (const Step& s : edits)
        first.edit(s);
    const std::string losses = first.file.saveLosses().join('\n').toStdString();
    const QByteArray text = first.file.text();

    Tree second(members);
    RC_ASSERT(second.file.loadText(text));
    const QByteArray again = second.file.text();
    RC_LOG() << "losses:\n" << losses << "\nwritten:\n" << text.toStdString();
    if (losses.empty()) {
        RC_ASSERT(second.file.report().isEmpty());
        RC_ASSERT(again.toStdString() == text.toStdString());
    }
    Tree third(members);
    third.file.loadText(again);
    RC_ASSERT(third.file.text().toStdString() == again.toStdString());

    QString odd;
    QTextStream stream(&odd);
    stream.setIntegerBase(2);
    stream.setFieldWidth(30);
    stream.setRealNumberNotation(QTextStream::FixedNotation);
    stream.setLocale(QLocale(QLocale::German));
    third.root.writeMembers(stream, {}, true);
    RC_ASSERT(third.file.text().endsWith(odd.toUtf8() + third.file.keptLines().join('\n')) ||
              !third.file.keptLines().isEmpty());
}

TEST(RoundTrip, SavingWhatWasLoadedChangesNothing) {
    using namespace rc;
    const Warnings quiet;
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    std::setlocale(LC_ALL, "de_DE.UTF-8");
    const auto steps = [](Gen<int> other, Gen<int> value) {
        return gen::container<std::vector<Step>>(gen::construct<Step>(gen::inRange(0, 11), gen::inRange(0, 99), other,
                                                                      gen::inRange(0, 4), gen::inRange(-4, 24), value));
    };
    const auto any = steps(gen::inRange(0, 12), gen::inRange(0, 9));
    const auto lossless = steps(gen::just(3), gen::element(0, 1, 2, 5, 6, 7));
    expectAlways(300, [&] {
        const auto& kind = *gen::arbitrary<bool>() ? any : lossless;
        const auto members = *kind;
        roundTrip(members, *kind);
    });
    std::setlocale(LC_ALL, "C");
    QLocale::setDefault(QLocale::c());
}

} // namespace
