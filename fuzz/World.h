#pragma once

// The world of the fuzzed calls: parameters, compounds and sets that come and go, an observer of all of them, and plain
// lists of who is where.

#include "fuzz/Fuzz.h"
#include "prm/CompoundParameter.h"
#include "prm/MovedParameter.h"
#include "prm/NumericParameter.h"
#include "prm/StaticParameter.h"
#include "tests/support/ChangeRecorder.h"

#include <QPointer>
#include <QTextStream>
#include <boost/make_shared.hpp>
#include <boost/weak_ptr.hpp>

#include <algorithm>
#include <array>
#include <functional>
#include <map>
#include <set>

namespace Fuzz {

using namespace Prm;

constexpr int compoundCount = 3;
constexpr int setCount = 4;

/// A parameter, until it says that it dies.
struct Slot {
    boost::shared_ptr<ParameterWithoutType> owner;
    QPointer<ParameterWithoutType> parameter;
    bool dying = false;

    ParameterWithoutType* get() const { return dying ? nullptr : parameter.data(); }
};

/// Who is where, by the numbers of parameters and sets; compounds are sets too, behind the others.
struct Lists {
    std::map<int, std::vector<int>> members;
    std::map<int, std::vector<int>> subsets;
    std::map<int, std::vector<int>> constrained;

    QByteArray text() const {
        QByteArray all;
        for (const auto* lists : {&members, &subsets, &constrained}) {
            for (const auto& [above, list] : *lists) {
                all += '\n' + QByteArray::number(above) + ':';
                for (const int number : list)
                    all += ' ' + QByteArray::number(number);
            }
            all += '\n';
        }
        return all;
    }
    static bool has(const std::vector<int>& list, int number) {
        return std::find(list.begin(), list.end(), number) != list.end();
    }
    /// Whether a way leads down from one to the other, or they are the same.
    static bool leads(std::map<int, std::vector<int>> lists, int from, int to) {
        const std::vector<int> below = lists[from];
        return from == to || std::any_of(below.begin(), below.end(), [&](int next) { return leads(lists, next, to); });
    }
    void untie(int number) {
        for (auto& [master, list] : constrained)
            list.erase(std::remove(list.begin(), list.end(), number), list.end());
    }
};

/// Knows the sets that it was told of, as hosts do.
struct Host : ParameterTree {
    void subtreeAdded(ParameterSet* subtree) override {
        learn(*subtree, [this](ParameterSet* set) { known.insert(set); });
    }
    void subtreeRemoved(ParameterSet* subtree) override {
        learn(*subtree, [this](ParameterSet* set) { known.erase(set); });
    }
    template <class Learn> void learn(ParameterSet& subtree, const Learn& one) {
        const auto oneOfMine = [&](ParameterSet* set) {
            if (set->parameterTree() == this)
                one(set);
        };
        oneOfMine(&subtree);
        subtree.forEachSubset(oneOfMine, true);
        then();
    }

    std::set<const ParameterSet*> known;
    /// Called whenever the host is told of something.
    std::function<void()> then = [] {};
};

/// A host's own class, which is evaluated and edited by way of its virtual operations.
struct HostNumber : NumericParameter<double> {
    explicit HostNumber(const QString& name)
        : ParameterWithoutType(false, false, nullptr), NumericParameter<double>(name, 2) {}
    ~HostNumber() override { announceDeletion(); }
};

class World {
public:
    /// `together` has a bit for each compound, set where its parts are keyed together.
    struct Options {
        int plainCount = 6;
        unsigned int together = 5;
        bool isObserved = true;
    };

    explicit World(const Choices& choices, const Options& with = {6, 5, true})
        : parameterCount(with.plainCount + compoundCount), options(with), choose(choices),
          slots(static_cast<std::size_t>(parameterCount)) {
        for (int i = 0; i < parameterCount; ++i)
            make(i);
        for (std::size_t i = 0; i < setCount; ++i)
            makeSet(i);
    }
    ~World() {
        observer.then = nullptr;
        host.then = [] {};
    }

    /// The first one is the top of the host's tree. Each has a member that tells the host when it is read.
    void makeSet(std::size_t number) {
        owners[number] = boost::make_shared<ParameterSet>(QStringLiteral("set"), number == 0 ? &host : nullptr);
        sets[number] = owners[number];
        auto count = std::make_unique<OwnedStaticParameter<unsigned int>>(QStringLiteral("count"));
        QObject::connect(count.get(), &BasicParameter::valueChanged, [this] { host.then(); });
        auto former = std::make_unique<MovedParameter>(QStringLiteral("former"));
        former->setTargetParam(*count);
        owners[number]->adoptBasicParameter(std::move(former));
        owners[number]->adoptBasicParameter(std::move(count));
        if (number == 0)
            host.known.insert(owners[number].get());
    }

    bool isCompound(int number) const { return number >= options.plainCount; }

    boost::shared_ptr<ParameterWithoutType> made(int number) const {
        static const ParameterOptions animated = Keyframed | Splittable;
        const QString name = QStringLiteral("p%1").arg(number);
        if (isCompound(number))
            return boost::make_shared<CompoundParameter>(name, (options.together >> (number - options.plainCount)) % 2);
        switch (number) {
        case 0:
            return boost::make_shared<Parameter<QString>>(name);
        case 1:
            return boost::make_shared<NumericParameter<int>>(name, 7, Splittable);
        case 6:
            return boost::make_shared<Parameter<bool>>(name);
        case 7:
            return boost::make_shared<PointParameter>(name);
        case 8:
            return boost::make_shared<NumericParameter<int>>(name, 3, Keyframed);
        case 9:
            return boost::make_shared<HostNumber>(name);
        default:
            return boost::make_shared<NumericParameter<double>>(name, 1, number == 2 ? Keyframed : animated);
        }
    }

    void make(int number) {
        Slot& slot = slots[static_cast<std::size_t>(number)];
        slot = {};
        slot.owner = made(number);
        slot.parameter = slot.owner.get();
        if (!options.isObserved)
            return;
        // Not by the compounds' own way, which would attach to their parts once more.
        QObject::connect(slot.parameter, SIGNAL(changed(Prm::ParameterChange&)), &observer,
                         SLOT(onChanged(Prm::ParameterChange&)));
    }

    int numberOf(const void* parameter) const {
        const auto is = [=](const Slot& slot) { return slot.parameter == parameter; };
        return static_cast<int>(std::find_if(slots.begin(), slots.end(), is) - slots.begin());
    }
    /// Null while there is none.
    ParameterWithoutType* parameter(int number) const { return slots[static_cast<std::size_t>(number)].get(); }
    /// Plain sets and compounds; null while there is none.
    ParameterSet* set(int number) const {
        if (number < setCount)
            return sets[static_cast<std::size_t>(number)].lock().get();
        return dynamic_cast<ParameterSet*>(parameter(options.plainCount + number - setCount));
    }

    Lists lists() const {
        Lists seen;
        for (int i = 0; i < parameterCount; ++i) {
            if (const ParameterWithoutType* const master = parameter(i))
                for (const ParameterWithoutType* tied : master->constrainedParameters())
                    seen.constrained[i].push_back(numberOf(tied));
        }
        for (int i = 0; i < setCount + compoundCount; ++i) {
            const ParameterSet* const listing = set(i);
            if (!listing)
                continue;
            for (const auto& member : listing->parameters())
                seen.members[i].push_back(numberOf(member.get()));
            for (const ParameterSet* subset : listing->subsets())
                for (int j = 0; j < setCount; ++j)
                    if (set(j) == subset)
                        seen.subsets[i].push_back(j);
        }
        return seen;
    }

    /// All that undo gives back, of one parameter, or of all.
    static QByteArray stateOf(const ParameterWithoutType& parameter) {
        QString text;
        QTextStream stream(&text);
        if (!dynamic_cast<const CompoundParameter*>(&parameter)) {
            parameter.bStreamOut(stream, {}, false);
            stream << parameter.isLocked() << parameter.splittable() << parameter.isSplit();
        }
        return text.toUtf8();
    }
    QByteArray state() const {
        QByteArray text;
        for (int i = 0; i < parameterCount; ++i) {
            if (const ParameterWithoutType* const one = parameter(i)) {
                text += "p" + QByteArray::number(i) + "\n" + stateOf(*one);
                for (const ParameterWithoutType* tied : one->constrainedParameters())
                    text += QByteArray::number(numberOf(tied));
            }
        }
        return text;
    }

    static QByteArray stateOf(ParameterSet& set) {
        QString text;
        QTextStream stream(&text);
        set.bStreamOut(stream, {}, true);
        QByteArray all = text.toUtf8();
        set.forEachParameterAndPart([&](const ParameterWithoutType* parameter) { all += stateOf(*parameter); });
        return all;
    }

    const int parameterCount;
    const Options options;
    /// Destroyed after the sets, which notify it.
    Host host;
    Choices choose;
    ChangeRecorder observer;
    std::vector<Slot> slots;
    std::array<boost::shared_ptr<ParameterSet>, setCount> owners;
    std::array<boost::weak_ptr<ParameterSet>, setCount> sets;
    /// As they should be.
    Lists plain;
    /// Counts what snapshots do not hold.
    int changesOfLists = 0;
};

} // namespace Fuzz
