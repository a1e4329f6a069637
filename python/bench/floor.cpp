// The floors of python/bench/bench.py: a method that does nothing, and sampling in C++ alone.

#include "prm/NumericParameter.h"
#include "python/src/Convert.h"

#include <algorithm>
#include <ctime>
#include <vector>

namespace {

struct Empty {
    double method(double time, const PrmPython::ViewName&) const { return time; }
};

/// The seconds of this thread.
double processorTime() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// The seconds that sampling a curve of so many keyframes takes.
double sample(int keyframes, const py::array_t<double>& frames) {
    Prm::NumericParameter<double> opacity("opacity");
    for (int i = 0; i < keyframes; ++i) {
        opacity.vSetValue(i % 5, Prm::Time::fromDouble(24.0 * i));
        opacity.vSetInterpolationData({Prm::Interpolation::Bezier, 0.3, 0, 0.7, 1}, static_cast<unsigned int>(i), {});
    }
    std::vector<Prm::Time> times;
    for (py::ssize_t i = 0; i < frames.size(); ++i)
        times.push_back(Prm::Time::fromDouble(frames.data()[i]));
    double least = 1.0;
    for (int round = 0; round < 3; ++round) {
        std::vector<double> values(times.size());
        const double start = processorTime();
        opacity.sampleValues(times.data(), static_cast<int>(times.size()), {}, values.data());
        least = std::min(least, processorTime() - start);
    }
    return least;
}

} // namespace

PYBIND11_MODULE(_floor, module) {
    py::class_<Empty>(module, "Empty")
        .def(py::init<>())
        .def("method", &Empty::method, py::arg("time") = 0.0, py::arg("view") = PrmPython::ViewName());
    module.def("sample", &sample);
}
