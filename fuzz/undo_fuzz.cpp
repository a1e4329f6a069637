// After each call of a play all invariants hold, values follow from the steps that explain them, compounds are the
// union of their parts, and the host knows the sets of its tree; if nothing interfered, what was undone, done again or
// restored is exactly as it was, what threw has not happened, and what is saved is loaded alike.

#include "fuzz/Play.h"
#include "tests/world/Replay.h"

using namespace Worlds;

namespace {

/// A compound is its parts, asked one by one.
void compareWithParts(const CompoundParameter& compound, const View& view) {
    std::set<double> times;
    for (const P* part : compound.subparameters()) {
        for (unsigned i = 0; i < part->keyframeCount(view); ++i)
            times.insert(part->keyframeTime(i, view).time.toDouble());
    }
    std::vector<double> seen;
    for (const Context& at : compound.allKeyframesTime(view))
        seen.push_back(at.time.toDouble());
    HOLD(seen == std::vector<double>(times.begin(), times.end()));
    HOLD(compound.keyframeCount(view) == times.size());
    for (const double time : askedTimes) {
        const Context at(Time::fromDouble(time), view);
        const auto after = times.upper_bound(time);
        const auto notBefore = times.lower_bound(time);
        Context found;
        HOLD(compound.bKeyframeAt(Context::Explicit(at)) == (times.count(time) > 0));
        HOLD(compound.bNextKeyframe(at, found) == (after != times.end()));
        HOLD(after == times.end() || found == Context(Time::fromDouble(*after), view));
        HOLD(compound.bPreviousKeyframe(at, found) == (notBefore != times.begin()));
        HOLD(notBefore == times.begin() || found == Context(Time::fromDouble(*std::prev(notBefore)), view));
        const QVariant value = compound.variantValue(at, std::nothrow);
        QString parts;
        for (const P* part : compound.subparameters())
            parts += ' ' + exact(part->variantValue(at, std::nothrow));
        HOLD(!value.isValid() || exact(value) == parts);
    }
}

struct Project {
    Project() { file.setTimeOfWriting(QDateTime(QDate(2021, 3, 1), QTime(), Qt::UTC)); }
    void enlist(const World& world) {
        for (int i = 0; i < setCount; ++i)
            root.addParameterSet(*world.set(i));
    }
    ParameterSet root;
    ProjectFile file{root};
};

class Checked : public Play {
public:
    using Play::Play;

private:
    void check() override {
        knowsItsSets();
        // Of one view only, so that some changes are missed.
        compareCompounds({asked[m_left % 3]});
        for (const P* const parameter : m_world->parameters())
            explainOne(*parameter);
    }

    void compareCompounds(const std::vector<View>& views) const {
        for (const P* const parameter : m_world->parameters()) {
            const auto* const compound = dynamic_cast<const CompoundParameter*>(parameter);
            for (const View view : views)
                compound ? compareWithParts(*compound, view) : void();
        }
    }

    QByteArray state() const override {
        Fuzz::intact(m_world->broken() + detail::verify(m_project.root));
        compareCompounds({asked, asked + std::size(asked)});
        // Sets the name prefixes, which are in the state of the world.
        const QByteArray text = m_project.file.text();
        return m_world->state() + text;
    }

    /// All of it is undone, done again, saved and loaded.
    void playHistory() override {
        m_project.enlist(*m_world);
        look();
        m_isWatched = nextStep().below(3) > 0;
        Play::playHistory();
        travelTo(commandCount());
        look();
        travelTo(0);
        m_isWatched = true;
        travelTo(commandCount());
        saveAndLoad();
        travelTo(0);
    }

    /// A project that can be saved without losses comes back in an equal world.
    void saveAndLoad() {
        if (!m_project.file.saveLosses().isEmpty())
            return;
        World world(Choices(nullptr, 0), m_world->options);
        Project project;
        for (int i = 0; i < setCount; ++i) {
            const auto& kept = m_world->set(i)->basicParameters();
            for (BasicParameter* const basic : std::vector<BasicParameter*>(world.set(i)->basicParameters())) {
                const auto isIt = [=](const BasicParameter* one) { return one->scriptName() == basic->scriptName(); };
                if (std::none_of(kept.begin(), kept.end(), isIt))
                    ParameterSetRemoveEdit(*world.set(i), *basic).doIt();
            }
        }
        project.enlist(world);
        for (int i = 0; i < setCount + compoundCount; ++i) {
            for (const auto& member : m_world->set(i)->parameters())
                world.set(i)->addParameter(world.owner(m_world->numberOf(member.get())));
            for (const ParameterSet* subset : m_world->set(i)->subsets())
                world.set(i)->addParameterSet(*world.set(m_world->numberOfSet(subset)));
        }
        for (int i = 0; i < setCount; ++i)
            world.set(i)->setScriptName(m_world->set(i)->scriptName());
        for (int i = 0; i < world.parameterCount; ++i)
            makeAlike(*world.parameter(i), *m_world->parameter(i));
        const QByteArray text = m_project.file.text();
        HOLD(project.file.loadText(text));
        for (const ProjectFileFinding& finding : project.file.report()) {
            // A master outside the project is not found again.
            if (finding.reason == ProjectFileFinding::UnresolvedMaster)
                return;
            Fuzz::fail("what was saved is well formed", finding.text);
        }
        Fuzz::same("saved, loaded and saved", text, project.file.text());
    }

    /// In all but its data.
    static void makeAlike(P& fresh, const P& own) {
        fresh.setScriptName(own.scriptName());
        if (dynamic_cast<const CompoundParameter*>(&own))
            return;
        fresh.assignFrom(own);
        fresh.hide(false);
        for (const View view : std::vector<View>(fresh.viewList())) {
            fresh.vDeleteAllKeyframes(view);
            fresh.vReset({Time::INVALID, view});
        }
    }

    /// At times between keyframes and, half of them, where keyframes often are.
    void explainOne(const P& parameter) {
        const double time = static_cast<double>(m_random() % 12000) / 1000 - 3;
        const Time rounded = Time::fromDouble(std::floor(4 * time) / 4);
        const Context at(m_random() % 2 ? rounded : Time::fromDouble(time), asked[m_random() % std::size(asked)]);
        HOLD(isExplained(parameter, explain(parameter, at)));
    }

    void knowsItsSets() const {
        std::set<const ParameterSet*> inTree;
        for (int i = 0; i < setCount; ++i) {
            if (m_world->set(i) && m_world->set(i)->parameterTree())
                inTree.insert(m_world->set(i));
        }
        HOLD(m_world->host.known == inTree);
    }

    Project m_project;
};

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Checked(data, size).run();
    return 0;
}
