// A parameter beside a plain, slow model of it: both are put through the same random edits, and after each must give
// the same answers and have sent the same changes.

#include "tests/parameter/ModelSteps.h"
#include "tests/support/Always.h"

using namespace Modelled;

namespace {

auto anySteps() {
    using namespace rc;
    const auto views = gen::element(0, 0, 1, 1, 2, 2, 5, 5, static_cast<int>(largest), -1);
    // Few, so that edits meet keyframes; the last one is none.
    const auto times = gen::element(-4, 0, 1, 2, 3, 8, 13, 22);
    // Unscaled: short sequences, too, draw from all the edits.
    const auto number = [](int low, int high) { return gen::resize(kNominalSize, gen::inRange(low, high)); };
    const auto step = gen::construct<Step>(number(0, static_cast<int>(std::size(acts))), number(0, 2), views, views,
                                           times, number(-3, 9), number(0, 4));
    return gen::container<std::vector<Step>>(step);
}

TEST(Model, RandomEditsDoWhatTheModelDoes) {
    const std::vector<ParameterOptions> options{Keyframed | Splittable, Keyframed, Splittable, {}};
    expectAlways(300, [&] {
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

} // namespace
