#pragma once

// Calls in any order over parameters, compounds, sets, their text and commands, with an observer that reads, throws,
// deletes, or makes further calls, and by a host that does so when its tree changes or a text is read; after them, a
// history of commands alone.

#include "fuzz/Fuzz.h"
#include "fuzz/Kinds.h"
#include "tests/world/Acts.h"

#include <cstring>
#include <random>

namespace Worlds {

struct ObserverThrows {};

/// With PRM_FUZZ_TRACE in the environment, each act is printed.
template <class... Values> void trace(const Values&... values) {
    static const bool isWanted = qEnvironmentVariableIsSet("PRM_FUZZ_TRACE");
    if (isWanted)
        std::fprintf(stderr, "%s\n", debugText(values...).c_str());
}

/// What must hold is compared by classes of their own.
class Play {
public:
    static constexpr std::size_t stepSize = 24;

    Play(const std::uint8_t* data, std::size_t size, bool isObserved = false)
        : m_data(data), m_left(std::min<std::size_t>(size / stepSize, 128)), m_random(static_cast<unsigned>(size + 1)) {
        HOLD(kindsAreRegistered);
        Choices first = nextStep();
        World::Options options;
        options.plainCount = first.yes() ? 11 : 6;
        options.together = static_cast<unsigned>(first.below(8));
        options.isObserved = first.yes() || isObserved;
        m_isDisturbed = first.yes();
        m_world = std::make_unique<World>(first, options);
        m_world->observer.then = [this](const ParameterChange& change) { react(change); };
        m_world->host.then = [this] { hearAsHost(); };
    }
    virtual ~Play() {
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
            turn([this] { act(); });
        }
        readAll();
        forget();
        playHistory();
    }

protected:
    /// What happens outside notifications, one call or one command.
    virtual void turn(const std::function<void()>& happens) { happens(); }
    /// Called before the observer acts, and again after it has.
    virtual void receive(const ParameterChange&) {}
    /// Called before what has died is made again.
    virtual void check() {}
    virtual void madeMissing() {}
    /// What undo must give back.
    virtual QByteArray state() const { return {}; }

    virtual void playHistory() {
        while (m_left > 0) {
            choose() = nextStep();
            turn([this] { choose().below(4) > 0 ? command() : travel(); });
        }
    }

    /// Of the same size each, so that an input is a list of steps. Each step's choices are 0 after its end.
    Choices nextStep() {
        if (m_left == 0)
            return {nullptr, 0};
        --m_left;
        return {std::exchange(m_data, m_data + stepSize), stepSize};
    }
    void travelTo(std::size_t target) {
        while (m_done != target && go(m_done < target)) {
        }
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

    std::size_t commandCount() const { return m_commands.size(); }
    bool isUndisturbed() const { return m_when < 0 && !m_interfered && !m_threw; }

    const std::uint8_t* m_data;
    std::size_t m_left;
    std::minstd_rand m_random;
    std::unique_ptr<World> m_world;
    /// Whether each state is looked at; compounds keep what they were asked last.
    bool m_isWatched = true;
    /// Whether something has happened in this turn that is not emitted, or not as a whole.
    bool m_isSilent = false;

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
        receive(change);
        if (m_mischief < HostDeletes && m_when-- == 0 && !(isDeath && m_mischief == Throw)) {
            const QPointer<P> guard = change.parameter;
            interfere(change);
            guard ? receive(change) : void();
        }
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
        // First: commands may own parameters.
        forget();
        P* const own = chosenParameter();
        P* const other = chosenParameter();
        if (!own || !other)
            return;
        Command none;
        const Act& act = chosen(edits, choose());
        // It copies the name, which snapshots do not hold.
        m_world->changesOfLists += std::strstr(act.name, "assignFrom") ? 1 : 0;
        run(act, none, *own, *other, A(choose()));
    }

    void run(const Act& act, Command& command, P& own, P& other, const A& a) {
        trace(act.name, own.scriptName(), other.scriptName(), a.at, a.to, a.value, a.number, a.kind, a.yes);
        for (const char* const silent : {"adjustKeyframesTime", "readLine", "vSetDefault(", "setViewInterpolation",
                                         "setSplittable", "AddConstrained"})
            m_isSilent = m_isSilent || std::strstr(act.name, silent);
        m_changesMembers = m_changesMembers || std::strstr(act.name, "changeMembers");
        act.run(command, own, other, a);
    }

    void readText() {
        static const char* const names[] = {"",    "set.", "set_2.", "set_3.", "p0.", "p1.",
                                            "p2.", "p3.",  "p6.",    "p7.",    "p8."};
        forget();
        ParameterSet* const set = chosenSet();
        QString line;
        for (int i = 0; i < 3; ++i)
            line += QLatin1String(names[choose().below(static_cast<int>(std::size(names)))]);
        line += QLatin1String(textLines[choose().below(static_cast<int>(std::size(textLines)))]);
        trace("reads", line);
        m_isSilent = true;
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
        m_isSilent = true;
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
        trace("set", set.scriptName(), "lists", added->scriptName());
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
        trace("set", set.scriptName(), "lists set", subset->scriptName(), "at", position);
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
            const std::size_t alive = m_world->aliveCount();
            forget();
            if (m_world->aliveCount() != alive)
                return;
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

    struct Made {
        std::unique_ptr<Command> command;
        bool isSilent;
        bool changesMembers;
    };

    void command() {
        ++m_world->changesOfLists;
        auto command = std::make_unique<Command>();
        std::vector<std::function<void(Command&, double)>> calls;
        bool more = true;
        while (more) {
            P* const own = chosenParameter();
            P* const other = chosenParameter();
            if (!own || !other)
                return;
            const Act& act = chosen(commands, choose());
            A a(choose());
            a.aim(*own, choose().below(16));
            run(act, *command, *own, *other, a);
            calls.emplace_back(
                [=, &act, own = QPointer<P>(own), other = QPointer<P>(other)](Command& again, double by) {
                    A changed = a;
                    changed.value += by;
                    if (own && other)
                        run(act, again, *own, *other, changed);
                });
            more = choose().below(4) == 3;
            if (more)
                choose() = nextStep();
        }
        if (m_commands.empty())
            look();
        finish(std::move(command));
        for (int i = choose().below(6); i > 3 && m_depth <= 1 && isUndisturbed(); --i) {
            auto again = std::make_unique<Command>();
            for (const auto& call : calls)
                call(*again, i);
            finish(std::move(again));
            merge();
        }
    }

    void finish(std::unique_ptr<Command> command) {
        m_commands.resize(m_done);
        m_states.resize(m_done + 1);
        m_commands.push_back({std::move(command), m_isSilent, std::exchange(m_changesMembers, false)});
        travelTo(m_done + 1);
    }

    /// The last two, if they are alike, into one.
    void merge() {
        const std::size_t last = m_commands.size() - 1;
        if (m_commands.size() < 2 || m_done <= last || m_interfered)
            return;
        if (!mergeEdits(*m_commands[last - 1].command, *m_commands[last].command))
            return;
        trace("merged");
        m_commands[last - 1].isSilent |= m_commands[last].isSilent;
        m_commands.pop_back();
        m_states.erase(m_states.begin() + static_cast<std::ptrdiff_t>(last));
        --m_done;
        for (const std::size_t step : {last - 1, last})
            travelTo(step);
    }

    static bool isCounted(const Command& command) {
        const auto& all = command.commands();
        return std::any_of(all.begin(), all.end(), [](const auto& edit) {
            const auto* const several = dynamic_cast<const Command*>(edit.get());
            return several ? isCounted(*several) : dynamic_cast<const UndoableEdit&>(*edit).summary().count > 0;
        });
    }

    void travel() {
        ++m_world->changesOfLists;
        travelTo(static_cast<std::size_t>(choose().below(static_cast<int>(m_commands.size()) + 1)));
    }

    /// Does or undoes one command. Where this throws, it has not happened.
    bool go(bool forwards) {
        trace(forwards ? "do" : "undo");
        const Made& made = m_commands[forwards ? m_done : m_done - 1];
        m_isSilent = m_isSilent || (forwards && made.isSilent) || made.changesMembers;
        bool arrived = true;
        try {
            forwards ? made.command->doIt() : made.command->undoIt();
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
        if (m_isWatched && arrived && forwards && m_states[m_done - 1] != m_states[m_done])
            HOLD(isCounted(*made.command));
        return arrived;
    }

    void readAll() const {
        for (const P* const parameter : m_world->parameters())
            read(*parameter);
        for (int i = 0; i < setCount; ++i) {
            if (const ParameterSet* const set = m_world->set(i))
                Fuzz::intact(detail::verify(ParameterSet(*set)));
        }
    }

    void settle() {
        m_when = -1;
        Fuzz::intact(m_world->broken());
        check();
        if (m_world->makeMissing()) {
            m_interfered = true;
            ++m_world->changesOfLists;
            madeMissing();
        }
        if (m_interfered)
            forget();
        m_interfered = m_threw = false;
    }

    bool m_isDisturbed = false;
    int m_mischief = Nothing;
    /// How many changes are let pass before; none is disturbed below 0.
    int m_when = -1;
    int m_depth = 0;
    bool m_interfered = false;
    bool m_threw = false;
    bool m_changesMembers = false;
    std::vector<Made> m_commands;
    /// Before each command, and after the last; empty where it was not looked at.
    std::vector<QByteArray> m_states;
    /// How many commands are done.
    std::size_t m_done = 0;
    Taken m_ofParameter;
    Taken m_ofSet;
};

} // namespace Worlds
