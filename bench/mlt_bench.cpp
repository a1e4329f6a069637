// The same curve in MLT, where it is installed. Times are whole frames there.

#include "bench/Curves.h"

extern "C" {
#include <framework/mlt_properties.h>
}
#include <memory>

namespace {

class PropertyCurve {
public:
    explicit PropertyCurve(int count) : m_length(static_cast<int>(Bench::keyTime(count - 1)) + 1) {
        for (int i = 0; i < count; ++i)
            mlt_properties_anim_set_double(m_properties.get(), name, Bench::keyValue(i),
                                           static_cast<int>(Bench::keyTime(i)), m_length, mlt_keyframe_linear);
    }

    double value(double time) const {
        return mlt_properties_anim_get_double(m_properties.get(), name, static_cast<int>(time), m_length);
    }

private:
    static constexpr const char* name = "value";

    int m_length;
    std::unique_ptr<mlt_properties_s, decltype(&mlt_properties_close)> m_properties{mlt_properties_new(),
                                                                                    mlt_properties_close};
};

void mltAtRandom(benchmark::State& state) {
    const PropertyCurve curve(static_cast<int>(state.range(0)));
    Bench::evaluate<PropertyCurve, Bench::PlainCurve>(state, curve, Bench::Order::Random);
}
BENCHMARK(mltAtRandom)->Arg(2)->Arg(1000);

} // namespace
