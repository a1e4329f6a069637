// Times, frames and contexts; the views of a project, and which of them an edit concerns.

#include "prm/NumericParameter.h"
#include "prm/ProxyScale.h"
#include "prm/Views.h"

#include <QTextStream>

using Prm::Context;
using Prm::Frame;
using Prm::Time;
using Prm::View;

int main() {
    QTextStream out(stdout);
    // [time]
    const Time halfway = Time::fromDouble(12.5);            // between two frames
    const Time later = halfway + 24.0;                      // the distance is in frames, too
    const bool never = !Time(Time::INVALID).isValid();      // so is every time that is no number
    const Frame holding = Frame(Prm::BaseContext(halfway)); // 12: the frame that holds the time
    // [time]
    out << "24 frames after " << halfway.toDouble() << " is " << later.toDouble() << ", in frame " << holding << '\n';

    // [views]
    Prm::Views views;
    views.setViewNames({{"Left", "L"}, {"Right", "R"}});
    const View right = views.lookupView("Right");
    views.setCurrentView(right);
    // [views]

    // [context]
    Prm::NumericParameter<double> offset("offset");
    offset.vSetValue(3.0, Context(Time::fromInt(0)));         // a time alone means view 0
    offset.vSetValue(-3.0, Context(Time::fromInt(0), right)); // now view 1 has data of its own
    // For exactly one keyframe, the view must be given.
    offset.vDeleteKeyframe(Context::Explicit(Time::fromInt(0), right));
    // [context]
    out << "left " << offset.value(halfway) << ", right " << offset.value({halfway, right}) << '\n';

    // [state]
    // Whether an edit concerns all views or the current one: the flags say so, and the views turn them into a list.
    Prm::AnimationFlags flags;
    flags.setAllViews(true);
    const Prm::AnimationState everywhere(flags, &views);
    offset.iAddKeyframe(Frame::fromInt(10), everywhere);
    // [state]

    // [provider]
    const auto names = [](const Prm::IViewsProvider& provider, const std::vector<View>& shown) {
        QString list;
        for (const View view : shown)
            list += ' ' + provider.viewName(view);
        return list;
    };
    // [provider]
    out << "current:" << names(views, views.currentViews()) << "; all:" << names(views, everywhere.views()) << '\n';

    // [index]
    const Prm::KeyframeIndex added(&offset, right, 0);
    const Context at = added.toContext(); // frame 10 in the right view
    // [index]
    out << "keyframe " << added.index << " of the right view is at " << at.time.toDouble() << '\n';

    // [proxy]
    const QSize half = Prm::ProxyScale(Prm::ProxyScale::Half).toProxySize(QSize(1921, 1080));
    // [proxy]
    out << "half the size: " << half.width() << " x " << half.height() << '\n';

    const bool times = never && later == Time::fromDouble(36.5) && holding == Frame::fromInt(12);
    const bool seen = everywhere.views().size() == 2 && at == Context(Time::fromInt(10), right);
    return times && seen && half == QSize(960, 540) ? 0 : 1;
}
