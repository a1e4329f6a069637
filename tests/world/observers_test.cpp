// From within each change that an act sends, an observer does each of the worst things. What then becomes of the act
// is described in docs/locks-and-notification.md.

#include "tests/world/Acts.h"

#include <gtest/gtest.h>

using namespace Worlds;
using Type = ParameterChange::ChangeType;

namespace {

/// One act of a keyed number, or of a part, in a world of its own. The observer acts once, at the first change of a
/// type.
struct Disturbed {
    using Disturb = std::function<void(Disturbed&)>;

    Disturbed(const Act& act, const A& a, Who who, Type type, const Disturb& disturb)
        : own(world.parameter(who)), former(world.state()) {
        const auto hear = [&](const ParameterChange& change) {
            heard.push_back(change.type);
            if (change.type == type && !std::exchange(acted, true))
                disturb(*this);
        };
        for (const auto signal : {&P::changed, &P::commandRegistrationChanged})
            QObject::connect(own, signal, hear);
        Command command;
        try {
            act.run(command, *own, *world.parameter(Master), a);
            command.doIt();
        } catch (const std::runtime_error& error) {
            threw = error.what();
        }
        if (own)
            own->detachAllObservers();
        EXPECT_EQ(world.broken(), QString());
        state = world.state();
    }
    void destroy(std::initializer_list<Who> all) {
        world.root.clearAllLists();
        for (const int set : {0, setCount, setCount + 1, setCount + 2})
            world.set(set)->clearAllLists();
        for (const Who who : all)
            world.slots[who].owner.reset();
    }

    Exhibits world;
    QPointer<P> own;
    std::string former;
    std::string state;
    std::string threw;
    std::vector<Type> heard;
    bool acted = false;
};

void disturbEach(const Act& act, bool isCommand, const A& a, Who who) {
    const auto nothing = [](Disturbed&) {};
    const Disturbed undisturbed(act, a, who, ParameterChange::NUM_CHANGE_TYPES, nothing);
    const bool isLine = std::string(act.name).find("readLine") == 0;
    const std::set<Type> types(undisturbed.heard.begin(), undisturbed.heard.end());
    for (const Type type : types) {
        SCOPED_TRACE(std::string(act.name) + " " +
                     ParameterChange(type, nullptr, nullptr).typeToString().toStdString());

        const Disturbed deleting(act, a, who, type, [=](Disturbed& d) { d.destroy({who}); });
        EXPECT_TRUE(deleting.acted && !deleting.own);
        EXPECT_EQ(deleting.heard.back(), ParameterChange::PARAMETER_DELETED) << "nothing more is sent";

        const Disturbed orphaned(act, a, who, type, [](Disturbed& d) { d.destroy({Position, Outer}); });
        EXPECT_TRUE(orphaned.acted && orphaned.own && orphaned.threw.empty());

        const Disturbed throwing(act, a, who, type, [](Disturbed&) { throw std::runtime_error("observer"); });
        EXPECT_EQ(throwing.threw, &act == &edits[1] ? "" : "observer");
        // What has been sent has happened, save commands and lines of text, which are taken back.
        const bool isUndone = throwing.state == throwing.former;
        const bool isSingle = undisturbed.heard.size() == 1;
        EXPECT_TRUE(isCommand ? isUndone : !isSingle || throwing.state == undisturbed.state || (isLine && isUndone));
    }
}

TEST(Observers, FromWithinEachChangeOfEachAct) {
    const Warnings quiet;
    for (const auto& [who, a] : {std::pair(Keyed, places[0]), {Keyed, places[1]}, {X, places[2]}}) {
        for (const Act& act : edits)
            disturbEach(act, false, a, who);
        for (const Act& act : commands)
            disturbEach(act, true, a, who);
    }
}

} // namespace
