#include "bench/ProjectText.h"

#include <boost/make_shared.hpp>

#include <algorithm>
#include <map>
#include <memory>

namespace Bench {

namespace {

using Prm::Interpolation;
using Prm::IType;
using Prm::Time;
using Prm::View;

constexpr int keyframesPerCurve = 1000;
constexpr int curvesPerSet = 50;

/// Made for a number of keyframes when it is asked for first.
template <class Made, class Make> const Made& madeOnce(qint64 keyframes, const Make& make) {
    static std::map<qint64, std::unique_ptr<const Made>> all;
    std::unique_ptr<const Made>& made = all[keyframes];
    if (!made)
        made = make();
    return *made;
}

bool areSame(const Keyframe& a, const Keyframe& b) {
    return a.time == b.time && a.value == b.value && a.interpolationData == b.interpolationData;
}

} // namespace

Project::Project(qint64 keyframes) {
    boost::shared_ptr<Prm::ParameterSet> set;
    for (int i = 0; i < keyframes / keyframesPerCurve; ++i) {
        if (i % curvesPerSet == 0) {
            set = boost::make_shared<Prm::ParameterSet>(QStringLiteral("node%1").arg(i / curvesPerSet));
            root.addParameterSet(set);
        }
        curves.push_back(boost::make_shared<Curve>(QStringLiteral("point%1").arg(i % curvesPerSet)));
        set->addParameter(curves.back());
    }
    file.setTimeOfWriting(QDateTime(QDate(2021, 3, 1), QTime(), Qt::UTC));
}

void Project::animate() {
    int number = 0;
    for (const auto& curve : curves) {
        for (int i = 0; i < keyframesPerCurve; ++i, ++number) {
            const auto index = static_cast<unsigned int>(curve->vSetValue(number * 0.37 + i, Time::fromInt(i)));
            curve->vSetInterpolationData(number % 3 == 0 ? IType(Interpolation::Bezier, 0.25, 0, 0.75, 1)
                                                         : IType(Interpolation::Linear),
                                         index, View());
        }
    }
}

const Project& animatedProject(qint64 keyframes) {
    return madeOnce<Project>(keyframes, [&] {
        auto made = std::make_unique<Project>(keyframes);
        made->animate();
        return made;
    });
}

const QByteArray& projectText(qint64 keyframes) {
    return madeOnce<QByteArray>(keyframes,
                                [&] { return std::make_unique<QByteArray>(animatedProject(keyframes).file.text()); });
}

const Content& projectContent(qint64 keyframes) {
    return madeOnce<Content>(keyframes, [&] {
        auto content = std::make_unique<Content>();
        for (const auto& curve : animatedProject(keyframes).curves) {
            content->emplace_back();
            for (unsigned int i = 0; i < curve->keyframeCount(View()); ++i)
                content->back().push_back(curve->keyframe(i, View()));
        }
        return content;
    });
}

bool isContent(const Content& content, qint64 keyframes) {
    const Content& expected = projectContent(keyframes);
    return std::equal(content.begin(), content.end(), expected.begin(), expected.end(),
                      [](const std::vector<Keyframe>& a, const std::vector<Keyframe>& b) {
                          return std::equal(a.begin(), a.end(), b.begin(), b.end(), areSame);
                      });
}

} // namespace Bench
