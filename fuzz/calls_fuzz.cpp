// Sequences of calls over parameters, compounds, sets, their text and commands, with an observer that reads,
// throws, deletes, or makes further calls, and by a host that does so when its tree changes or a text is read. After
// each call all invariants hold, values follow from the steps that explain them, and the host knows the sets of its
// tree; if nothing interfered, membership and masters are as in plain lists, what was undone or restored is as it was,
// and what threw has not happened.

#include "fuzz/Fuzz.h"
#include "prm/CurveKinds.h"
#include "tests/world/Acts.h"
#include "tests/world/Replay.h"

#include <random>
#include <stdexcept>

using namespace Worlds;

namespace {

const char* const names[] = {"", "set.", "set_2.", "set_3.", "p0.", "p1.", "p2.", "p3.", "p6.", "p7.", "p8."};

struct ObserverThrows {};

P* parameterFrom(World& world) {
    return world.parameter(world.choose.below(world.parameterCount));
}

/// A host's own kind, which animates nothing, takes every call as well.
bool callBare() {
    ParameterWithoutTypeBase bare(false, false, nullptr);
    Choices none(nullptr, 0);
    const A a(none);
    Command all;
    for (const auto* rows : {&allEdits(), &allCommands()})
        for (const Act* act : *rows)
            act->run(all, bare, bare, a);
    all.doIt();
    all.undoIt();
    read(bare);
    Fuzz::intact(detail::verify(bare));
    return true;
}

class Play {
public:
    explicit Play(const Choices& choices) : m_world(choices) {
        m_world.observer.then = [this](const ParameterChange& change) { hear(change); };
        m_world.host.then = [this] { hearAsHost(); };
    }
    ~Play() {
        m_world.observer.then = nullptr;
        m_world.host.then = [] {};
    }

    void run() {
        for (int left = 200; left > 0 && !m_world.choose.atEnd(); --left) {
            m_mischief = m_world.choose.below(12);
            const bool isQuiet = m_mischief > Read && m_mischief < HostDeletes;
            m_when = isQuiet ? -1 : m_world.choose.below(4);
            m_interfered = m_threw = false;
            act();
            settle();
        }
        readAll();
    }

private:
    enum Mischief { Throw, Delete, CallAgain, Read, HostDeletes = 8, HostDeletesSet, HostCallsAgain, HostReads };

    void hearAsHost() {
        if (m_mischief < HostDeletes || m_when-- != 0)
            return;
        if (m_mischief == HostReads)
            return readAll();
        m_interfered = true;
        if (m_mischief == HostCallsAgain)
            act();
        else if (m_mischief == HostDeletes)
            letGo(m_world.choose.below(m_world.parameterCount));
        else
            replaceSet(static_cast<std::size_t>(m_world.choose.below(setCount)));
    }

    void hear(const ParameterChange& change) {
        const bool isDeath = change.type == ParameterChange::PARAMETER_DELETED;
        if (m_mischief < HostDeletes && m_when-- == 0 && !(isDeath && m_mischief == Throw))
            interfere(change);
        const int number = m_world.numberOf(change.parameter);
        if (isDeath && number < m_world.parameterCount)
            m_world.slots[static_cast<std::size_t>(number)].dying = true;
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
        const int told = m_world.numberOf(change.parameter);
        const bool spared = change.type == ParameterChange::PARAMETER_DELETED;
        letGo(m_world.choose.yes() && !spared && told < m_world.parameterCount
                  ? told
                  : m_world.choose.below(m_world.parameterCount));
    }

    /// One call of any kind; within another, none that would touch the commands being done.
    void act() {
        ++m_depth;
        try {
            const int kind = m_world.choose.below(12);
            if (kind < 4)
                edit();
            else if (kind < 6)
                changeLists();
            else if (kind == 6)
                takeOrGiveBack(parameterFrom(m_world), m_ofParameter);
            else if (kind == 10)
                readText();
            else if (kind == 11)
                takeOrGiveBack(m_world.set(m_world.choose.below(setCount + compoundCount)), m_ofSet);
            else if (m_depth == 1)
                kind == 7 ? travel() : command();
        } catch (const ObserverThrows&) {
        } catch (const std::exception&) {
            // What setting a value, reading a keyframe or restoring a set that has gained a member throws.
        }
        --m_depth;
    }

    void edit() {
        P* const own = parameterFrom(m_world);
        P* const other = parameterFrom(m_world);
        forget();
        if (!own || !other)
            return;
        Command none;
        const Act& edit = chosen(allEdits(), m_world.choose);
        edit.run(none, *own, *other, A(m_world.choose));
    }

    void readText() {
        Choices& choose = m_world.choose;
        ParameterSet* const set = m_world.set(choose.below(setCount + compoundCount));
        QString line;
        for (int i = 0; i < 3; ++i)
            line += QLatin1String(names[choose.below(static_cast<int>(std::size(names)))]);
        line += QLatin1String(textLines[choose.below(static_cast<int>(std::size(textLines)))]);
        forget();
        if (set)
            set->bStreamIn(line, version());
    }

    // Members, masters, life and death.

    void changeLists() {
        ++m_world.changesOfLists;
        forget();
        Choices& choose = m_world.choose;
        const int kind = choose.below(6);
        const int listing = choose.below(setCount + compoundCount);
        const int number = choose.below(setCount);
        switch (kind) {
        case 0:
            return addParameter(listing);
        case 1:
            return addSubset(listing, number);
        case 2:
            return removeMembers(listing, number);
        case 3:
            return tie();
        case 4:
            return letGo(choose.below(m_world.parameterCount));
        default:
            return replaceSet(static_cast<std::size_t>(number));
        }
    }

    void addParameter(int listing) {
        ParameterSet* const set = m_world.set(listing);
        P* const added = parameterFrom(m_world);
        if (!set || !added)
            return;
        const int number = m_world.numberOf(added);
        const int asSet = setCount + number - m_world.options.plainCount;
        if (!(m_world.isCompound(number) && leads(asSet, listing)) &&
            !Lists::has(m_world.plain.members[listing], number))
            m_world.plain.members[listing].push_back(number);
        const auto& owner = m_world.owner(number);
        const int way = owner ? m_world.choose.below(3) : 0;
        if (way == 2)
            set->addSplittableParameter(*added, View(2));
        else if (way == 1)
            set->addParameter(owner);
        else
            set->addParameter(*added);
    }
    /// By way of subsets and of compounds among the members.
    bool leads(int from, int to) const {
        auto below = m_world.plain.subsets;
        for (const auto& [set, members] : m_world.plain.members) {
            for (const int member : members)
                if (m_world.isCompound(member))
                    below[set].push_back(setCount + member - m_world.options.plainCount);
        }
        return Lists::leads(below, from, to);
    }

    void addSubset(int listing, int number) {
        ParameterSet* const set = m_world.set(listing);
        const auto subset = m_world.sets[static_cast<std::size_t>(number)].lock();
        if (!set || !subset)
            return;
        auto& list = m_world.plain.subsets[listing];
        const int position = m_world.choose.below(4) - 1;
        const int place = std::min(std::max(position, 0), static_cast<int>(list.size()));
        if (!Lists::has(list, number) && !leads(number, listing))
            list.insert(position < 0 ? list.end() : list.begin() + place, number);
        if (position >= 0)
            set->insertParameterSet(subset, position);
        else if (m_world.choose.yes())
            set->addParameterSet(subset);
        else
            set->addParameterSet(*subset);
    }

    void removeMembers(int listing, int number) {
        ParameterSet* const set = m_world.set(listing);
        if (!set)
            return;
        auto& list = m_world.plain.subsets[listing];
        if (m_world.choose.yes()) {
            list.erase(std::remove(list.begin(), list.end(), number), list.end());
            set->removeParameterSet(m_world.sets[static_cast<std::size_t>(number)].lock());
        } else {
            list.clear();
            m_world.plain.members[listing].clear();
            set->clearAllLists();
        }
    }

    void tie() {
        P* const master = parameterFrom(m_world);
        P* const tied = parameterFrom(m_world);
        if (!master || !tied)
            return;
        Lists& plain = m_world.plain;
        const int from = m_world.numberOf(master);
        const int to = m_world.numberOf(tied);
        if (m_world.choose.yes()) {
            if (!Lists::leads(plain.constrained, to, from) && !Lists::has(plain.constrained[from], to)) {
                plain.untie(to);
                plain.constrained[from].push_back(to);
            }
            master->bAddConstrainedParameter(tied);
        } else {
            plain.untie(to);
            tied->bUnconstrain();
        }
    }

    /// Sets that own it may keep it alive.
    void letGo(int number) { std::exchange(m_world.slots[static_cast<std::size_t>(number)].owner, nullptr).reset(); }

    void replaceSet(std::size_t number) {
        std::exchange(m_world.owners[number], nullptr).reset();
        if (!m_world.sets[number].expired())
            return;
        // Its number is another one's now.
        m_interfered = true;
        m_world.makeSet(number);
    }

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
        if (m_world.choose.yes()) {
            taken = {own->exportState(), own, stateOf(*own), m_world.changesOfLists};
        } else if (taken.snapshot) {
            forget();
            Bsc::importState(*own, taken.snapshot);
            if (!m_interfered && own == taken.of && taken.changesOfLists == m_world.changesOfLists)
                Fuzz::same("a snapshot gives back", taken.state, stateOf(*own));
        }
    }

    void forget() {
        if (m_depth > 1)
            m_interfered = true;
        else
            m_commands.clear(), m_states.clear(), m_done = 0;
    }

    void command() {
        P* const own = parameterFrom(m_world);
        P* const other = parameterFrom(m_world);
        if (!own || !other)
            return;
        ++m_world.changesOfLists;
        auto command = std::make_unique<Command>();
        for (int count = 1 + m_world.choose.below(3); count > 0; --count) {
            const Act& edit = commands[m_world.choose.below(static_cast<int>(std::size(commands)))];
            edit.run(*command, *own, *other, A(m_world.choose));
        }
        m_commands.resize(m_done);
        m_states.resize(m_done);
        m_states.push_back(m_world.state());
        m_commands.push_back(std::move(command));
        go([this] { m_commands[m_done]->doIt(); }, m_done + 1);
    }
    void travel() {
        ++m_world.changesOfLists;
        const bool back = m_world.choose.yes();
        if (back && m_done > 0)
            go([this] { m_commands[m_done - 1]->undoIt(); }, m_done - 1);
        else if (!back && m_done < m_commands.size())
            go([this] { m_commands[m_done]->doIt(); }, m_done + 1);
    }
    /// Does or undoes, and expects the state that was there then; the present one after an exception.
    template <class Go> void go(const Go& go, std::size_t arrival) {
        bool arrived = true;
        try {
            go();
        } catch (const ObserverThrows&) {
            arrived = false;
        } catch (const std::exception&) {
            arrived = false;
            // Then it was the way back that the observer disturbed.
            m_interfered = m_interfered || m_threw;
        }
        m_world.plain.constrained = m_world.lists().constrained;
        if (m_interfered)
            return;
        m_done = arrived ? arrival : m_done;
        if (m_states.size() == m_done)
            m_states.push_back(m_world.state());
        Fuzz::same(arrived ? "done and undone" : "what threw has not happened", m_states[m_done], m_world.state());
    }

    // What must hold.

    void readAll() const {
        for (int i = 0; i < m_world.parameterCount; ++i) {
            if (const P* const parameter = m_world.parameter(i))
                read(*parameter);
        }
        for (int i = 0; i < setCount; ++i) {
            if (const ParameterSet* const set = m_world.set(i))
                Fuzz::intact(detail::verify(ParameterSet(*set)));
        }
    }

    void settle() {
        m_when = -1;
        Fuzz::intact(m_world.broken());
        compareLists();
        knowsItsSets();
        for (int i = 0; i < m_world.parameterCount; ++i) {
            if (m_world.slots[static_cast<std::size_t>(i)].parameter)
                continue;
            m_world.make(i);
            m_interfered = true;
            ++m_world.changesOfLists;
        }
        if (m_interfered)
            forget();
        for (int i = 0; i < m_world.parameterCount; ++i)
            explainOne(*m_world.parameter(i));
    }

    /// At times between keyframes and, half of them, where keyframes often are.
    void explainOne(const P& parameter) {
        const double time = static_cast<double>(m_random() % 12000) / 1000 - 3;
        const Time rounded = Time::fromDouble(std::floor(4 * time) / 4);
        const Context at(m_random() % 2 ? rounded : Time::fromDouble(time), asked[m_random() % std::size(asked)]);
        HOLD(isExplained(parameter, explain(parameter, at)));
    }

    void compareLists() {
        Lists seen = m_world.lists();
        Lists& plain = m_world.plain;
        const auto tidy = [&](auto& lists, const auto& isAlive, const auto& isAliveAbove) {
            for (auto entry = lists.begin(); entry != lists.end();) {
                auto& list = entry->second;
                list.erase(std::remove_if(list.begin(), list.end(), [&](int i) { return !isAlive(i); }), list.end());
                entry = list.empty() || !isAliveAbove(entry->first) ? lists.erase(entry) : std::next(entry);
            }
        };
        const auto parameter = [&](int i) { return m_world.parameter(i) != nullptr; };
        const auto set = [&](int i) { return m_world.set(i) != nullptr; };
        tidy(plain.members, parameter, set);
        tidy(plain.subsets, set, set);
        tidy(plain.constrained, parameter, parameter);
        if (!m_interfered && !m_threw)
            Fuzz::same("members, subsets and masters", plain.text(), seen.text());
        plain = std::move(seen);
    }

    void knowsItsSets() const {
        std::set<const ParameterSet*> listed;
        for (int i = 0; i < setCount; ++i) {
            const ParameterSet* const set = m_world.set(i);
            if (set && set->parameterTree())
                listed.insert(set);
        }
        HOLD(m_world.host.known == listed);
    }

    World m_world;
    int m_mischief = Read;
    /// How many changes are let pass before; none is disturbed below 0.
    int m_when = -1;
    int m_depth = 0;
    bool m_interfered = false;
    bool m_threw = false;
    std::vector<std::unique_ptr<Bsc::Command>> m_commands;
    /// Before each command, and after the last.
    std::vector<QByteArray> m_states;
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
    static const bool isPrepared = callBare() && registerKinds();
    HOLD(isPrepared);
    Play(Choices(data, size)).run();
    return 0;
}
