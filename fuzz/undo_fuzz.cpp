// Calls in any order over parameters, compounds, sets, their text and commands, with an observer that reads, throws,
// deletes, or makes further calls, and by a host that does so when its tree changes or a text is read; after them, a
// history of commands alone. After each call all invariants hold, values follow from the steps that explain them,
// compounds are the union of their parts, and the host knows the sets of its tree; if nothing interfered, what was
// undone, done again or restored is exactly as it was, what threw has not happened, and what is saved is loaded alike.

#include "fuzz/Fuzz.h"
#include "prm/CurveKinds.h"
#include "tests/world/Acts.h"
#include "tests/world/Replay.h"

#include <cmath>
#include <random>

using namespace Worlds;

namespace {

constexpr std::size_t stepSize = 24;

const char* const names[] = {"", "set.", "set_2.", "set_3.", "p0.", "p1.", "p2.", "p3.", "p6.", "p7.", "p8."};

struct ObserverThrows {};

/// With PRM_FUZZ_TRACE in the environment, each act is printed.
template <class... More> void trace(const char* what, const More&... more) {
    static const bool isWanted = qEnvironmentVariableIsSet("PRM_FUZZ_TRACE");
    if (!isWanted)
        return;
    QString line;
    QTextStream stream(&line);
    static_cast<void>(((stream << what) << ... << more));
    std::fprintf(stderr, "%s\n", qPrintable(line));
}

void run(const Act& act, Command& command, P& own, P& other, const A& a) {
    const auto shown = [](const Context& at) { return QString("%1@%2 ").arg(at.time.toDouble()).arg(at.view.id()); };
    trace(act.name, " of ", own.scriptName(), ", other ", other.scriptName(), " at ", shown(a.at), "to ", shown(a.to),
          " value ", a.value, " number ", a.number, " kind ", a.kind, a.yes ? " yes" : " no");
    act.run(command, own, other, a);
}

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

class Play {
public:
    Play(const std::uint8_t* data, std::size_t size) : m_data(data), m_left(size / stepSize) {
        Choices first = nextStep();
        const World::Options options{first.yes() ? 11 : 6, static_cast<unsigned>(first.below(8)), first.yes()};
        m_isDisturbed = first.yes();
        m_world = std::make_unique<World>(first, options);
        m_world->observer.then = [this](const ParameterChange& change) { react(change); };
        m_world->host.then = [this] { hearAsHost(); };
    }
    ~Play() {
        m_world->observer.then = nullptr;
        m_world->host.then = [] {};
    }
    Q_DISABLE_COPY(Play)

    void run() {
        for (; m_left > 0; settle()) {
            choose() = nextStep();
            if (choose().below(m_isDisturbed ? 64 : 16) == 15)
                break;
            m_mischief = m_isDisturbed ? choose().below(12) : int(Nothing);
            const bool isQuiet = m_mischief >= Nothing && m_mischief < HostDeletes;
            m_when = isQuiet ? -1 : choose().below(4);
            act();
        }
        readAll();
        playHistory();
    }

private:
    enum Mischief {
        Throw,
        Delete,
        CallAgain,
        Read,
        Nothing,
        HostDeletes = 8,
        HostDeletesSet,
        HostCallsAgain,
        HostReads
    };

    /// Of the same size each, so that an input is a list of steps. Each step's choices are 0 after its end.
    Choices nextStep() {
        if (m_left == 0)
            return {nullptr, 0};
        --m_left;
        return {std::exchange(m_data, m_data + stepSize), stepSize};
    }
    Choices& choose() const { return m_world->choose; }
    P* chosenParameter() const { return m_world->parameter(choose().below(m_world->parameterCount)); }
    ParameterSet* chosenSet() const { return m_world->set(choose().below(setCount + compoundCount)); }

    // Observers and the host.

    void hearAsHost() {
        if (m_mischief < HostDeletes || m_when-- != 0)
            return;
        if (m_mischief == HostReads)
            return readAll();
        m_interfered = true;
        if (m_mischief == HostCallsAgain)
            act();
        else if (m_mischief == HostDeletes)
            letGo(choose().below(m_world->parameterCount));
        else
            letSetGo(choose().below(setCount));
    }

    void react(const ParameterChange& change) {
        const bool isDeath = change.type == ParameterChange::PARAMETER_DELETED;
        if (m_mischief < HostDeletes && m_when-- == 0 && !(isDeath && m_mischief == Throw))
            interfere(change);
        const int number = m_world->numberOf(change.parameter);
        if (isDeath && number < m_world->parameterCount)
            m_world->slots[static_cast<std::size_t>(number)].dying = true;
    }

    void interfere(const ParameterChange& change) {
        if (m_mischief == Read)
            return readAll();
        m_threw = m_mischief == Throw;
        if (m_threw)
            throw ObserverThrows();
        m_interfered = true;
        if (m_mischief == CallAgain)
            return act();
        const int told = m_world->numberOf(change.parameter);
        const bool spared = change.type == ParameterChange::PARAMETER_DELETED;
        const bool isOwn = choose().yes() && !spared && told < m_world->parameterCount;
        letGo(isOwn ? told : choose().below(m_world->parameterCount));
    }

    /// One call of any kind; within another, none that would touch the commands being done.
    void act() {
        ++m_depth;
        try {
            const int kind = choose().below(16);
            if (kind < 4)
                edit();
            else if (kind < 6)
                changeLists(choose().below(5));
            else if (kind == 6)
                takeOrGiveBack(chosenParameter(), m_ofParameter);
            else if (kind == 10)
                readText();
            else if (kind == 11)
                takeOrGiveBack(chosenSet(), m_ofSet);
            else if (kind > 11)
                changeLists(0);
            else if (m_depth == 1)
                kind == 7 ? travel() : command();
        } catch (const ObserverThrows&) {
        } catch (const std::exception&) {
            // What setting a value, reading a keyframe or restoring a set that has gained a member throws.
        }
        --m_depth;
    }

    void edit() {
        P* const own = chosenParameter();
        P* const other = chosenParameter();
        forget();
        if (!own || !other)
            return;
        Command none;
        const Act& act = chosen(edits, choose());
        ::run(act, none, *own, *other, A(choose()));
    }

    void readText() {
        ParameterSet* const set = chosenSet();
        QString line;
        for (int i = 0; i < 3; ++i)
            line += QLatin1String(names[choose().below(static_cast<int>(std::size(names)))]);
        line += QLatin1String(textLines[choose().below(static_cast<int>(std::size(textLines)))]);
        trace("reads ", line);
        forget();
        if (set)
            set->bStreamIn(line, version());
    }

    // Members, masters, life and death.

    void changeLists(int kind) {
        ++m_world->changesOfLists;
        forget();
        ParameterSet* const set = chosenSet();
        const int number = choose().below(setCount);
        const auto subset = m_world->sets[static_cast<std::size_t>(number)].lock();
        if (kind == 3)
            return letGo(choose().below(m_world->parameterCount));
        if (kind == 4)
            return letSetGo(number);
        if (set && kind == 0)
            addParameter(*set);
        else if (set && subset && kind == 1)
            addSubset(*set, subset);
        else if (set && kind == 2)
            choose().yes() ? static_cast<void>(set->removeParameterSet(subset)) : set->clearAllLists();
    }

    void addParameter(ParameterSet& set) {
        P* const added = chosenParameter();
        if (!added)
            return;
        trace("set ", set.scriptName(), " lists ", added->scriptName());
        const auto& owner = m_world->owner(m_world->numberOf(added));
        const int way = owner ? choose().below(3) : 0;
        if (way == 2)
            set.addSplittableParameter(*added, View(2));
        else if (way == 1)
            set.addParameter(owner);
        else
            set.addParameter(*added);
    }

    void addSubset(ParameterSet& set, const boost::shared_ptr<ParameterSet>& subset) {
        const int position = choose().below(4) - 1;
        trace("set ", set.scriptName(), " lists set ", subset->scriptName(), " at ", position);
        if (position >= 0)
            set.insertParameterSet(subset, position);
        else if (choose().yes())
            set.addParameterSet(subset);
        else
            set.addParameterSet(*subset);
    }

    /// Sets that own it may keep it alive.
    void letGo(int number) { std::exchange(m_world->slots[static_cast<std::size_t>(number)].owner, nullptr).reset(); }

    void letSetGo(int number) { std::exchange(m_world->owners[static_cast<std::size_t>(number)], nullptr).reset(); }

    // Snapshots and commands.

    struct Taken {
        boost::shared_ptr<Bsc::MementoBase> snapshot;
        const void* of = nullptr;
        QByteArray state;
        int changesOfLists = 0;
    };
    /// What was taken of one may be refused by another.
    template <class Kind> void takeOrGiveBack(Kind* own, Taken& taken) {
        if (!own)
            return;
        if (choose().yes()) {
            taken = {own->exportState(), own, stateOf(*own), m_world->changesOfLists};
        } else if (taken.snapshot) {
            forget();
            Bsc::importState(*own, taken.snapshot);
            if (!m_interfered && own == taken.of && taken.changesOfLists == m_world->changesOfLists)
                Fuzz::same("a snapshot gives back", taken.state, stateOf(*own));
        }
    }

    /// No command can be undone after this call.
    void forget() {
        if (m_depth > 1) {
            m_interfered = true;
        } else {
            m_commands.clear();
            m_states.clear();
            m_done = 0;
        }
    }

    void command() {
        ++m_world->changesOfLists;
        auto command = std::make_unique<Command>();
        bool more = true;
        while (more) {
            P* const own = chosenParameter();
            P* const other = chosenParameter();
            if (!own || !other)
                return;
            const Act& act = chosen(commands, choose());
            A a(choose());
            a.aim(*own, choose().below(16));
            ::run(act, *command, *own, *other, a);
            more = choose().below(4) == 3;
            if (more)
                choose() = nextStep();
        }
        if (m_commands.empty())
            look();
        m_commands.resize(m_done);
        m_states.resize(m_done + 1);
        m_commands.push_back(std::move(command));
        travelTo(m_done + 1);
    }

    void travel() {
        ++m_world->changesOfLists;
        travelTo(static_cast<std::size_t>(choose().below(static_cast<int>(m_commands.size()) + 1)));
    }

    void travelTo(std::size_t target) {
        while (m_done != target && go(m_done < target)) {
        }
    }

    /// Does or undoes one command. Where this throws, it has not happened.
    bool go(bool forwards) {
        trace(forwards ? "do" : "undo");
        bool arrived = true;
        try {
            forwards ? m_commands[m_done]->doIt() : m_commands[m_done - 1]->undoIt();
        } catch (const ObserverThrows&) {
            arrived = false;
        } catch (const std::exception&) {
            arrived = false;
            // Then it was the way back that the observer disturbed.
            m_interfered = m_interfered || m_threw;
        }
        if (m_interfered)
            return false;
        if (arrived)
            m_done = forwards ? m_done + 1 : m_done - 1;
        if (m_isWatched || m_done == 0)
            look();
        return arrived;
    }

    /// The state is as it was before the same command, if it was looked at then.
    void look() {
        m_states.resize(std::max(m_states.size(), m_done + 1));
        QByteArray& former = m_states[m_done];
        const QByteArray present = state();
        if (!former.isEmpty())
            Fuzz::same("done and undone", former, present);
        former = present;
    }

    void compareCompounds(const std::vector<View>& views) const {
        for (int i = m_world->options.plainCount; i < m_world->parameterCount; ++i) {
            const auto* const compound = dynamic_cast<const CompoundParameter*>(m_world->parameter(i));
            for (const View view : views)
                compound ? compareWithParts(*compound, view) : void();
        }
    }

    QByteArray state() const {
        Fuzz::intact(m_world->broken() + detail::verify(m_project.root));
        compareCompounds({asked, asked + std::size(asked)});
        // Sets the name prefixes, which are in the state of the world.
        const QByteArray text = m_project.file.text();
        return m_world->state() + text;
    }

    /// All of it is undone, done again, saved and loaded.
    void playHistory() {
        forget();
        m_project.enlist(*m_world);
        look();
        m_isWatched = nextStep().below(3) > 0;
        while (m_left > 0) {
            choose() = nextStep();
            choose().below(4) > 0 ? command() : travel();
        }
        travelTo(m_commands.size());
        look();
        travelTo(0);
        m_isWatched = true;
        travelTo(m_commands.size());
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
            if (m_world->set(i)->basicParameters().empty())
                world.set(i)->clearAllLists();
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

    // What must hold.

    void readAll() const {
        for (int i = 0; i < m_world->parameterCount; ++i) {
            if (const P* const parameter = m_world->parameter(i))
                read(*parameter);
        }
        for (int i = 0; i < setCount; ++i) {
            if (const ParameterSet* const set = m_world->set(i))
                Fuzz::intact(detail::verify(ParameterSet(*set)));
        }
    }

    void settle() {
        m_when = -1;
        Fuzz::intact(m_world->broken());
        knowsItsSets();
        // Of one view only, so that some changes are missed.
        compareCompounds({asked[m_left % 3]});
        for (int i = 0; i < m_world->parameterCount; ++i) {
            if (const P* const parameter = m_world->parameter(i))
                explainOne(*parameter);
        }
        if (m_world->makeMissing()) {
            m_interfered = true;
            ++m_world->changesOfLists;
        }
        if (m_interfered)
            forget();
        m_interfered = m_threw = false;
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

    const std::uint8_t* m_data;
    std::size_t m_left;
    std::unique_ptr<World> m_world;
    Project m_project;
    bool m_isDisturbed = false;
    int m_mischief = Nothing;
    /// How many changes are let pass before; none is disturbed below 0.
    int m_when = -1;
    int m_depth = 0;
    bool m_interfered = false;
    bool m_threw = false;
    std::vector<std::unique_ptr<Command>> m_commands;
    /// Before each command, and after the last; empty where it was not looked at.
    std::vector<QByteArray> m_states;
    /// Whether each state is looked at; compounds keep what they were asked last.
    bool m_isWatched = true;
    /// How many commands are done.
    std::size_t m_done = 0;
    Taken m_ofParameter;
    Taken m_ofSet;
    std::minstd_rand m_random;
};

/// Functions for the first custom kinds.
bool registerKinds() {
    return registerInterpolation(Interpolation::Custom0,
                                 [](const IType& shape, double x) { return x * x + shape.x1; }) &&
           registerExtrapolation(Extrapolation::Custom0, [](Time time, Time first, Time last) {
               return Time::fromDouble(std::fmod(time - first, last - first)) + first.toDouble();
           });
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool areRegistered = registerKinds();
    HOLD(areRegistered);
    Play(data, std::min<std::size_t>(size, 128 * stepSize)).run();
    return 0;
}
