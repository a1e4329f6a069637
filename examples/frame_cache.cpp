// A cache of rendered frames that drops exactly those that a change reaches.

#include "prm/Extent.h"
#include "prm/NumericParameter.h"
#include "prm/ParameterChange.h"
#include "prm/ParameterSet.h"

#include <cmath>
#include <functional>
#include <map>
#include <utility>

using Prm::Context;
using Prm::Time;

namespace {

/// The rendered frames of one view.
class FrameCache : public QObject {
    Q_OBJECT

public:
    using Render = std::function<double(const Context&)>;

    FrameCache(const Prm::ParameterSet& project, Prm::View view, Render render)
        : m_view(view), m_render(std::move(render)) {
        project.attachObserver(this, SLOT(onChanged(Prm::ParameterChange&)), true);
    }

    double frame(int number) {
        const auto known = m_frames.find(number);
        if (known != m_frames.end())
            return known->second;
        ++rendered;
        return m_frames[number] = m_render(Context(Time::fromInt(number), m_view));
    }

    int rendered = 0;

public Q_SLOTS:
    // [drop]
    void onChanged(Prm::ParameterChange& change) {
        for (const Prm::TimeSpan& span : Prm::extentOf(change).in(m_view)) {
            auto frame = m_frames.lower_bound(std::ceil(span.from));
            while (frame != m_frames.end() && frame->first <= span.to)
                frame = span.contains(Time::fromDouble(frame->first)) ? m_frames.erase(frame) : std::next(frame);
        }
    }
    // [drop]

private:
    Prm::View m_view;
    Render m_render;
    /// By their numbers.
    std::map<double, double> m_frames;
};

} // namespace

int main() {
    Prm::NumericParameter<double> opacity("opacity"), brightness("brightness", 1.0);
    Prm::ParameterSet project("project");
    project.addParameter(opacity);
    project.addParameter(brightness);
    for (const int frame : {0, 10, 20, 30})
        opacity.vSetValue(frame / 30.0, Time::fromInt(frame));
    FrameCache cache(project, Prm::View(), [&](const Context& at) { return opacity.value(at) * brightness.value(at); });
    const auto renderedAnew = [&] {
        cache.rendered = 0;
        for (int frame = 0; frame <= 30; ++frame)
            cache.frame(frame);
        return cache.rendered;
    };
    bool asExpected = renderedAnew() == 31;
    asExpected = asExpected && renderedAnew() == 0;
    // [edits]
    opacity.vSetValue(0.5, Time::fromInt(10)); // frames 1 to 19 are rendered again
    // [edits]
    asExpected = asExpected && renderedAnew() == 19;
    brightness.vSetValue(0.5, Time::INVALID);
    asExpected = asExpected && renderedAnew() == 31;
    brightness.hide(true);
    asExpected = asExpected && renderedAnew() == 0;
    return asExpected ? 0 : 1;
}

#include "frame_cache.moc"
