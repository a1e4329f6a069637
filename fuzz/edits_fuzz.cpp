// Sequences of edits of two parameters beside the plain model of the tests.

#include "fuzz/Fuzz.h"
#include "tests/parameter/ModelSteps.h"

using namespace Modelled;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Fuzz::Choices choose(data, std::min<std::size_t>(size, 8 * 30));
    const ParameterOptions options[] = {Keyframed | Splittable, Keyframed, Splittable, {}};
    const int views[] = {0, 0, 1, 1, 2, 2, 5, 5, static_cast<int>(largest), -1};
    Pair first(Keyframed | Splittable);
    Pair second(options[choose.below(4)]);
    const char* last = "";
    const auto run = [&](const Step& step) {
        Pair& own = step.own == 0 ? first : second;
        last = acts[step.act].name;
        acts[step.act].run(own, step.own == 0 ? second : first, step);
        compare(own);
    };
    try {
        while (!choose.atEnd()) {
            Step step{};
            step.act = choose.below(static_cast<int>(std::size(acts)));
            step.own = choose.below(2);
            step.view = views[choose.below(10)];
            step.from = views[choose.below(10)];
            step.time = choose.below(27) - 4;
            step.value = choose.below(12) - 3;
            step.kind = choose.below(4);
            run(step);
        }
        compare(first);
        compare(second);
    } catch (const Difference& difference) {
        Fuzz::fail("parameter and model are alike", QString::fromUtf8(difference.what()) + " behind " + last);
    }
    return 0;
}
