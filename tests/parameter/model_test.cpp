// A parameter beside a plain, slow model of it: both are put through the same random edits, and after each must give
// the same answers and have sent the same changes. Whatever observers do meanwhile, the parameter stays sound.

#include "tests/parameter/ModelSteps.h"

#include <QPointer>
#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <sstream>

using namespace Modelled;

namespace {

auto anySteps() {
    using namespace rc;
    const auto views = gen::element(0, 0, 1, 1, 2, 2, 5, 5, static_cast<int>(largest), -1);
    // Unscaled: short sequences, too, draw from all the edits.
    const auto number = [](int low, int high) { return gen::resize(kNominalSize, gen::inRange(low, high)); };
    const auto step = gen::construct<Step>(number(0, static_cast<int>(std::size(acts))), number(0, 2), views, views,
                                           number(-4, 23), number(-3, 9), number(0, 4));
    return gen::container<std::vector<Step>>(step);
}

/// The same each time, whatever the environment says.
template <class Property> void expectAlways(const Property& property) {
    rc::detail::TestParams params;
    params.seed = 20;
    params.maxSuccess = 300;
    const auto result = rc::detail::checkTestable(property, rc::detail::TestMetadata(), params);
    std::ostringstream text;
    rc::detail::printResultMessage(result, text);
    EXPECT_TRUE(result.template is<rc::detail::SuccessResult>()) << text.str();
}

TEST(Model, RandomEditsDoWhatTheModelDoes) {
    const std::vector<ParameterOptions> options{Keyframed | Splittable, Keyframed, Splittable, {}};
    expectAlways([&] {
        Pair first(Keyframed | Splittable);
        Pair second(*rc::gen::elementOf(options));
        for (const Step& s : *anySteps()) {
            acts[s.act].run(s.own == 0 ? first : second, s.own == 0 ? second : first, s);
            compare(s.own == 0 ? first : second);
        }
        compare(first);
        compare(second);
    });
}

using Observer = void (*)(P&, const ParameterChange&);
const std::vector<Observer> hostileObservers{
    [](P& p, const ParameterChange&) { delete &p; },
    [](P&, const ParameterChange&) { throw std::logic_error("observer"); },
    [](P& p, const ParameterChange& change) { p.deleteView(change.context.view); },
    [](P& p, const ParameterChange&) { p.deleteView(View(0)); },
    [](P& p, const ParameterChange&) { p.clearViewData(); },
    [](P& p, const ParameterChange& change) { p.vDeleteAllKeyframes(change.context.view); },
    [](P& p, const ParameterChange& change) { p.vSetValue(-1, at(3, change.context.view.id())); },
    [](P& p, const ParameterChange&) { p.uniquifyView(View(8)); },
    [](P& p, const ParameterChange&) { p.assignFrom(P(QStringLiteral("another"), 3)); },
    [](P& p, const ParameterChange&) { p.setSplittable(false); },
};

TEST(Model, ObserversMayDoAnythingDuringAnyEdit) {
    expectAlways([] {
        P* parameters[] = {new P, new P};
        for (const Step& s : *anySteps()) {
            P*& own = parameters[s.own];
            const QPointer<QObject> alive(own);
            int until = *rc::gen::element(0, 0, 1, 2);
            const Observer observer = *rc::gen::elementOf(hostileObservers);
            ChangeRecorder recorder(own);
            recorder.then = [&](const ParameterChange& change) {
                if (until-- == 0)
                    observer(*own, change);
            };
            try {
                acts[s.act].edit(*own, *parameters[1 - s.own], s);
            } catch (const std::logic_error&) {
            }
            own = alive ? own : new P;
            own->detachAllObservers();
            RC_ASSERT(detail::verify(*own).isEmpty());
            RC_ASSERT(own->value(at(1, 12)) == own->value(at(1, 13)) || own->hasViewData(View(largest)));
        }
        delete parameters[0];
        delete parameters[1];
    });
}

} // namespace
