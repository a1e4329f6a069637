// The same curve in osgAnimation, where it is installed.

#include "bench/Curves.h"

#include <osgAnimation/Sampler>

namespace {

class SampledCurve {
public:
    explicit SampledCurve(int count) {
        auto* const keyframes = m_sampler->getOrCreateKeyframeContainer();
        for (int i = 0; i < count; ++i)
            keyframes->push_back(osgAnimation::DoubleKeyframe(Bench::keyTime(i), Bench::keyValue(i)));
    }

    double value(double time) const {
        double value = 0.0;
        m_sampler->getValueAt(time, value);
        return value;
    }

private:
    osg::ref_ptr<osgAnimation::DoubleLinearSampler> m_sampler = new osgAnimation::DoubleLinearSampler;
};

void osgAnimationAtRandom(benchmark::State& state) {
    const SampledCurve curve(static_cast<int>(state.range(0)));
    // It blends in single precision.
    Bench::evaluate<SampledCurve, Bench::PlainCurve>(state, curve, Bench::Order::Random, 0.05);
}
BENCHMARK(osgAnimationAtRandom)->Arg(2)->Arg(1000)->Arg(100000);

} // namespace
