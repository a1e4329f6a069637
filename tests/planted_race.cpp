// Shows that the thread sanitizer still sees a race: writes to a view's data without its lock, beside a reader. The
// run is expected to report it.

#include "prm/NumericParameter.h"

#include <atomic>
#include <chrono>
#include <thread>

using namespace Prm;
using Data = detail::FastViewMap<double>;

namespace {

// Explicit instantiations may name private members: this way in needs no door in the library.
Data& viewsOf(Parameter<double>& parameter);
template <Data Parameter<double>::*member> struct WayIn {
    friend Data& viewsOf(Parameter<double>& parameter) { return parameter.*member; }
};
template struct WayIn<&Parameter<double>::m_views>;

} // namespace

int main() {
    // Slowly, for the sanitizer keeps silent about a race when it has forgotten what the other thread did meanwhile.
    constexpr std::chrono::milliseconds pause(1);
    Parameter<double> parameter;
    parameter.vSetValue(1, Context(Context::INVALID_TIME));
    std::atomic<bool> isOver{false};
    std::thread reader([&] {
        while (!isOver) {
            parameter.value(Context());
            std::this_thread::sleep_for(pause);
        }
    });
    for (int i = 0; i < 100; ++i) {
        viewsOf(parameter)[View(0)].staticValue += 1;
        std::this_thread::sleep_for(pause);
    }
    isOver = true;
    reader.join();
}
