// Shows that the thread sanitizer still sees a race: one write to a view's data without its lock, beside a reader. The
// run is expected to report it.

#include "prm/NumericParameter.h"

#include <atomic>
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
    Parameter<double> parameter;
    parameter.vSetValue(1, Context(Context::INVALID_TIME));
    std::atomic<bool> isOver{false};
    std::atomic<int> passes{0};
    std::thread reader([&] {
        for (; !isOver; ++passes)
            parameter.value(Context());
    });
    while (passes.load(std::memory_order_relaxed) < 100)
        std::this_thread::yield();
    viewsOf(parameter)[View(0)].staticValue = 2;
    isOver = true;
    reader.join();
}
