// From within each type of change an observer does each of the worst things. What then becomes of the edit stands in
// docs/locks-and-notification.md.

#include "host/bsc/CompositeCommand.h"
#include "prm/CompoundParameter.h"
#include "prm/ParameterEdits.h"
#include "prm/Views.h"
#include "prm/project/Invariants.h"
#include "tests/edits/World.h"
#include "tests/support/Warnings.h"

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>

using namespace Prm;
using Change = ParameterChange;

namespace {

/// A number that two sets and a compound list, beside another one.
struct Scene {
    Scene() {
        for (const auto& each : {number, another}) {
            key(*each, {{0, 1.}, {10, 2.}});
            each->setVariantValue(3., still(1));
            root.addParameter(*each);
            group.addParameter(*each);
            root.addParameterSet(below);
        }
        below.addParameter(*number);
        stereo.setViewNames({{"left"}, {"right"}});
    }
    ~Scene() {
        destroy(number);
        destroy(another);
    }
    Q_DISABLE_COPY(Scene)

    static void destroy(World::Number*& parameter) {
        delete parameter;
        parameter = nullptr;
    }

    QString state() const {
        QString text;
        QTextStream stream(&text);
        if (number)
            World::write(stream, *number);
        return text;
    }
    void expectSound() const {
        EXPECT_EQ(detail::verify(root), QString());
        EXPECT_EQ(detail::verify(group), QString());
        EXPECT_EQ(number ? detail::verify(*number) : QString(), QString());
        EXPECT_EQ(below.parameters().size(), number ? 1U : 0U);
    }

    Views stereo;
    ParameterSet root{"root"};
    ParameterSet below{"below"};
    CompoundParameter group{"group"};
    World::Number* number = new World::Number("number");
    World::Number* another = new World::Number("another");
};

/// What becomes of an edit that its observer throws out of.
enum Thrown { Made, Begun, Undone, Caught, Partly };

struct Sent {
    Change::ChangeType type;
    void (*edit)(Scene&);
    Thrown thrown = Made;
};

const Sent changes[] = {
    {Change::KEYFRAME_ADDED, [](Scene& s) { s.number->iAddKeyframe(at(5)); }},
    {Change::KEYFRAME_ADDED, [](Scene& s) { s.number->vSetValue(9, at(5)); }},
    {Change::KEYFRAME_ADDED,
     [](Scene& s) { s.number->iAddKeyframe(Frame::fromInt(5), AnimationState(AnimationFlags(4), &s.stereo)); }, Partly},
    {Change::VIEW_RESET, [](Scene& s) { s.number->resetAll(); }, Partly},
    {Change::KEYFRAME_REMOVED, [](Scene& s) { s.number->vDeleteKeyframe(Context::Explicit(at(10))); }},
    {Change::KEYFRAME_CHANGED_VALUE, [](Scene& s) { s.number->vSetValue(9, at(10)); }},
    {Change::KEYFRAME_CHANGED_TIME_VALUE, [](Scene& s) { Change::keyframeChangedTimeValue(*s.number, 1, View(0)); }},
    {Change::KEYFRAME_CHANGED_INTERPOLATION, [](Scene& s) { s.number->vSetInterpolation(Interpolation(), at(0)); }},
    {Change::PARAMETER_CHANGED_EXTRAPOLATION_BEFORE,
     [](Scene& s) { s.number->vSetExtrapolationBefore(Extrapolation::Linear); }},
    {Change::PARAMETER_CHANGED_EXTRAPOLATION_AFTER,
     [](Scene& s) { s.number->vSetExtrapolationAfter(Extrapolation::Linear); }},
    {Change::PARAMETER_ASSIGNED, [](Scene& s) { s.number->vCopyKeyframeDataFrom(s.another); }},
    {Change::PARAMETER_ASSIGNED, [](Scene& s) { s.below.doImportState(s.below.exportState()); }},
    {Change::VIEW_RESET, [](Scene& s) { s.number->vReset(still(1)); }},
    {Change::VIEW_CLEARED, [](Scene& s) { s.number->vDeleteAllKeyframes(View(0)); }},
    {Change::PARAMETER_CHANGED_NAME,
     [](Scene& s) {
         Change change(Change::PARAMETER_CHANGED_NAME, *s.number, 0);
         s.number->emitChange(change);
     }},
    {Change::VALUE_CHANGED, [](Scene& s) { s.number->copyViewData(View(0), View(1), nullptr); }},
    {Change::KEYFRAME_MOVED, [](Scene& s) { ParameterRetimeEdit(*s.number, Retiming::shifted(3)).doIt(); }, Undone},
    {Change::COMMAND_REGISTERED,
     [](Scene& s) {
         Bsc::CompositeCommand command;
         s.number->registerCompositeCommand(command, at(0));
     }},
    {Change::VIEW_ADDED, [](Scene& s) { s.number->vSetValue(4, at(5, 2)); }, Begun},
    {Change::VIEW_ADDED, [](Scene& s) { s.root.bStreamIn("number.view[2].value=4", ProjectFileVersion()); }, Undone},
    {Change::KEYFRAME_CHANGED_INTERPOLATION,
     [](Scene& s) {
         const ScopedSignalPermit permit(*s.number, Change::KEYFRAME_CHANGED_INTERPOLATION);
         s.root.bStreamIn("number.keyframes.append( Key( 5, 9, Constant ) )", ProjectFileVersion());
     },
     Undone},
    {Change::VIEW_ADDED, [](Scene& s) { s.number->vReset(still(2)); }, Partly},
    {Change::VIEW_ADDED, [](Scene& s) { s.number->uniquifyView(View(2)); }, Partly},
    {Change::VIEW_REMOVED, [](Scene& s) { s.number->clearViewData(); }},
    {Change::PARAMETER_HIDDEN_CHANGED, [](Scene& s) { s.number->hide(true); }},
    {Change::PARAMETER_LOCKED_CHANGED, [](Scene& s) { s.number->setLocked(true); }},
    {Change::PARAMETER_DELETED, [](Scene& s) { Scene::destroy(s.number); }, Caught},
};

/// Runs the edit in a scene of its own; the observer acts once, at the first change of the type.
struct Disturbed {
    Disturbed(const Sent& sent, const std::function<void(Scene&)>& act) : former(scene.state()) {
        bool acted = false;
        const auto hear = [&](const Change& change) {
            lastHeard = change.type;
            if (change.type == sent.type && !std::exchange(acted, true))
                act(scene);
        };
        for (const auto heard : {&ParameterWithoutType::changed, &ParameterWithoutType::commandRegistrationChanged})
            QObject::connect(scene.number, heard, hear);
        try {
            sent.edit(scene);
        } catch (const std::runtime_error&) {
            threw = true;
        }
        EXPECT_TRUE(acted);
        scene.expectSound();
        if (scene.number)
            scene.number->detachAllObservers();
        state = scene.state();
    }

    Scene scene;
    QString former;
    QString state;
    bool threw = false;
    std::optional<Change::ChangeType> lastHeard;
};

TEST(Observers, FromWithinEachChange) {
    for (const Sent& sent : changes) {
        SCOPED_TRACE(Change(sent.type, nullptr, nullptr).typeToString().toStdString());
        const QString undisturbed = Disturbed(sent, [](Scene&) {}).state;

        if (sent.type != Change::PARAMETER_DELETED) {
            const Disturbed deleting(sent, [](Scene& s) { Scene::destroy(s.number); });
            EXPECT_FALSE(deleting.scene.number);
            EXPECT_EQ(deleting.lastHeard, Change::PARAMETER_DELETED) << "nothing more is told";
        }

        const Disturbed other(sent, [](Scene& s) { Scene::destroy(s.another); });
        EXPECT_EQ(other.state, undisturbed);
        EXPECT_TRUE(!other.scene.another && !other.threw);

        const Warnings warnings;
        const Disturbed throwing(sent, [](Scene&) { throw std::runtime_error("observer"); });
        EXPECT_EQ(throwing.threw, sent.thrown != Caught);
        EXPECT_EQ(Warnings::text().contains("threw an exception"), sent.thrown == Caught);
        if (sent.thrown == Begun)
            EXPECT_TRUE(throwing.scene.number->hasViewData(View(2)) && throwing.state != undisturbed);
        else
            EXPECT_TRUE(sent.thrown == Partly ||
                        throwing.state == (sent.thrown == Undone ? throwing.former : undisturbed));

        const Disturbed members(sent, [](Scene& s) {
            const auto made = boost::make_shared<World::Number>("new");
            s.root.clearAllLists();
            s.group.addParameter(made);
            s.root.addParameterSet(boost::make_shared<ParameterSet>("set"));
            s.root.addParameter(made);
            s.root.addParameter(*s.number);
        });
        EXPECT_EQ(members.state, undisturbed);
        EXPECT_EQ(members.scene.root.parameters().size(), members.scene.number ? 2U : 1U);
        EXPECT_EQ(members.scene.root.subsets().size(), 1U);

        const Disturbed views(sent, [](Scene& s) {
            s.number->uniquifyView(View(7));
            s.number->deleteView(View(1));
            s.number->deleteView(View(0));
        });
        EXPECT_FALSE(views.threw);
        EXPECT_TRUE(!views.scene.number || views.scene.number->hasViewData(View(7)));
    }
}

} // namespace
