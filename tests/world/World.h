#pragma once

// The world of the acts: parameters of every kind, compounds and sets that come and go, an observer of all of them, a
// host that is notified of sets, and the exact state of it all.

#include "tests/support/ChangeRecorder.h"
#include "tests/support/Library.h"
#include "tests/world/Arguments.h"

#include <QPointer>
#include <boost/weak_ptr.hpp>

#include <array>
#include <set>

namespace Worlds {

using P = ParameterWithoutType;

constexpr int compoundCount = 3;
constexpr int setCount = 4;

// What a parameter is, exactly.

/// With the values of its parts for a compound.
inline QString exact(const QVariant& value) {
    const QPointF point = value.toPointF();
    QString all = value.type() == QVariant::PointF ? exact(point.x()) + '/' + exact(point.y()) : value.toString();
    for (const QVariant& part : value.value<QVector<QVariant>>())
        all += ' ' + exact(part);
    return all;
}

/// Returns what the function returns of the parameter as what it is; false for compounds and a kind of a host's.
template <class Any, class Do> bool asTyped(Any& parameter, const Do& act) {
    const auto as = [&](auto value) {
        using Typed = Parameter<decltype(value)>;
        using Kept = std::conditional_t<std::is_const_v<Any>, const Typed, Typed>;
        auto* const typed = dynamic_cast<Kept*>(&parameter);
        return typed && act(*typed);
    };
    return as(0.) || as(0) || as(false) || as(QString()) || as(QPointF());
}

template <class T> bool addStorage(QTextStream& out, const Parameter<T>& parameter) {
    out << " default kind " << static_cast<quint32>(parameter.defaultInterpolation()) << " blends views "
        << parameter.viewInterpolation().mode << '\n';
    for (const View view : std::vector<View>(parameter.viewList())) {
        out << "view " << view.id() << " static " << exact(parameter.staticValue(view)) << '\n';
        for (unsigned i = 0; i < parameter.keyframeCount(view); ++i) {
            const KeyframeData<T> key = parameter.keyframe(i, view);
            const IType& curve = key.interpolationData;
            out << "view " << view.id() << " key " << exact(key.time.toDouble()) << " = " << exact(key.value) << ' '
                << static_cast<quint32>(curve.interpolation);
            for (const double number : {curve.x1, curve.y1, curve.x2, curve.y2})
                out << ' ' << exact(number);
            out << '\n';
        }
    }
    return true;
}

inline void addSettings(QTextStream& out, const P& parameter) {
    out << parameter.scriptName() << " hidden " << parameter.isHidden() << " locked " << parameter.isLocked()
        << " keyed " << parameter.isKeyframed() << " splittable " << parameter.splittable() << " split "
        << parameter.isSplit() << " views";
    for (const View view : std::vector<View>(parameter.viewList()))
        out << ' ' << view.id();
    out << " of " << parameter.numViews();
}

inline const View asked[] = {View(0), View(1), View(2), View(3), View(5), View(2147483646)};
inline const double askedTimes[] = {-1.5, 0, 1.25, 3, 20};

inline void addTiesAndValues(QTextStream& out, const P& parameter) {
    out << "before " << static_cast<quint32>(parameter.extrapolationBefore()) << " after "
        << static_cast<quint32>(parameter.extrapolationAfter()) << " pending " << parameter.pendingMasterParameterId()
        << " ties";
    for (const P* tied : parameter.constrainedParameters())
        out << ' ' << tied->scriptName();
    for (const View view : asked) {
        out << "\nshows in " << view.id();
        for (const double time : askedTimes)
            out << ' ' << exact(parameter.variantValue(at(time, view.id()), std::nothrow));
    }
    out << '\n';
}

/// All that a snapshot gives back.
inline QByteArray stateOf(const P& parameter) {
    QString text;
    QTextStream out(&text);
    // What is remembered of the parts' union is asked for with care: a compound is its parts.
    if (!dynamic_cast<const CompoundParameter*>(&parameter)) {
        parameter.bStreamOut(out, {}, false);
        addSettings(out, parameter);
        asTyped(parameter, [&](const auto& typed) { return addStorage(out, typed); });
    }
    out.flush();
    return text.toUtf8();
}

inline QByteArray stateOf(ParameterSet& set) {
    QByteArray all = QByteArray::fromStdString(lines(set));
    set.forEachParameterAndPart([&](const P* parameter) { all += stateOf(*parameter); });
    return all;
}

/// A parameter, until PARAMETER_DELETED.
struct Slot {
    boost::shared_ptr<P> owner;
    QPointer<P> parameter;
    bool dying = false;

    P* get() const { return dying ? nullptr : parameter.data(); }
};

/// Records the sets that it was notified of, as hosts do.
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
    /// Called whenever the host is notified.
    std::function<void()> then = [] {};
};

/// A host's own class, which is evaluated and edited by way of its virtual operations.
/// It does not say when its keyframes change.
struct HostNumber : Number {
    using NumericParameter::NumericParameter;
    ~HostNumber() override { announceDeletion(); }
    quint64 keyframeRevision() const override { return 0; }
};

/// A host's own kind, which animates nothing and takes every call.
struct Bare : ParameterWithoutTypeBase {
    explicit Bare(const QString& name) { setScriptName(name); }
    ~Bare() override { announceDeletion(); }
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
        makeMissing();
    }
    ~World() {
        observer.then = nullptr;
        host.then = [] {};
    }
    Q_DISABLE_COPY(World)

    /// The first one is the top of the host's tree. Each has a member that notifies the host when it is read.
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

    boost::shared_ptr<P> made(int number) const {
        const QString name = QStringLiteral("p%1").arg(number);
        if (isCompound(number))
            return boost::make_shared<CompoundParameter>(name, (options.together >> (number - options.plainCount)) % 2);
        using Name = const QString&;
        static const std::function<boost::shared_ptr<P>(Name)> makers[] = {
            [](Name of) { return boost::make_shared<Parameter<QString>>(of); },
            [](Name of) { return boost::make_shared<NumericParameter<int>>(of, 7, Splittable); },
            [](Name of) { return boost::make_shared<Number>(of, 1, Keyframed); },
            [](Name of) { return boost::make_shared<Number>(of, 1); },
            [](Name of) { return boost::make_shared<Number>(of, 1); },
            [](Name of) { return boost::make_shared<Number>(of, 1); },
            [](Name of) { return boost::make_shared<Parameter<bool>>(of); },
            [](Name of) { return boost::make_shared<PointParameter>(of); },
            [](Name of) { return boost::make_shared<NumericParameter<int>>(of, 3, Keyframed); },
            [](Name of) { return boost::make_shared<HostNumber>(of, 2); },
            [](Name of) { return boost::make_shared<Bare>(of); },
        };
        return makers[number](name);
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

    /// Anew in the place of each that has died; whether one has.
    bool makeMissing() {
        bool misses = false;
        for (int i = 0; i < parameterCount; ++i) {
            if (slots[static_cast<std::size_t>(i)].parameter)
                continue;
            make(i);
            misses = true;
        }
        for (std::size_t i = 0; i < setCount; ++i) {
            if (!sets[i].expired())
                continue;
            makeSet(i);
            misses = true;
        }
        return misses;
    }

    int numberOf(const void* parameter) const {
        const auto is = [=](const Slot& slot) { return slot.parameter == parameter; };
        return static_cast<int>(std::find_if(slots.begin(), slots.end(), is) - slots.begin());
    }
    /// Null while there is none.
    P* parameter(int number) const { return slots[static_cast<std::size_t>(number)].get(); }
    /// Those that there are, the first ones in the order of their numbers.
    std::vector<P*> parameters(int count = std::numeric_limits<int>::max()) const {
        std::vector<P*> all;
        for (int i = 0; i < std::min(count, parameterCount); ++i)
            if (P* const one = parameter(i))
                all.push_back(one);
        return all;
    }
    /// Parameters and sets.
    std::size_t aliveCount() const {
        const auto isAlive = [](const auto& set) { return !set.expired(); };
        return parameters().size() + static_cast<std::size_t>(std::count_if(sets.begin(), sets.end(), isAlive));
    }
    const boost::shared_ptr<P>& owner(int number) const { return slots[static_cast<std::size_t>(number)].owner; }
    /// Plain sets and compounds; null while there is none.
    ParameterSet* set(int number) const {
        if (number < setCount)
            return sets[static_cast<std::size_t>(number)].lock().get();
        return dynamic_cast<ParameterSet*>(parameter(options.plainCount + number - setCount));
    }

    int numberOfSet(const ParameterSet* listed) const {
        int number = 0;
        while (set(number) != listed)
            ++number;
        return number;
    }

    /// All that undo gives back.
    QByteArray state() const {
        QString text;
        QTextStream out(&text);
        for (const P* const one : parameters()) {
            out << stateOf(*one);
            addTiesAndValues(out, *one);
        }
        out.flush();
        return text.toUtf8();
    }

    /// The invariants that are broken.
    QString broken() const {
        QString all;
        for (const P* const one : parameters())
            all += one->isImporting() ? QStringLiteral("it is importing still") : detail::verify(*one);
        for (int i = 0; i < setCount; ++i)
            all += set(i) ? detail::verify(*set(i)) : QString();
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
    /// Counts what snapshots do not hold.
    int changesOfLists = 0;
};

/// The parameters of a world of ten, by what `Exhibits` makes of them.
enum Who { Text, Plain, Master, Keyed, X, Y, Far, Joined, Second, Tied, Position, Pair, Outer };

/// A small project to edit: a keyed number with a split view, one without keyframes, a master with two parameters
/// constrained to it, a compound, a compound in one that is keyed together, a point for which all views are one.
struct Exhibits : World {
    /// With so many more keyframes after the others.
    explicit Exhibits(int more = 0) : World(Choices(nullptr, 0), {10, 5, false}) {
        Number& keyed = number(Keyed);
        key(keyed, {{0, 1.}, {10, 2.}, {20, 4.}});
        keyed.vSetInterpolationData({Interpolation::Bezier, 0.2, 0.3, 0.7, 1.5}, 0, View(0));
        // A shape that is a straight line, and must stay one.
        keyed.vSetInterpolationData({Interpolation::Bezier, 0, 0, 0, 0}, 1, View(0));
        keyed.setVariantValue(9., still());
        key(keyed, {{5, 7.}}, 1);
        as<int>(Plain).vSetValue(3, still());
        key(number(Master), {{0, 5.}, {8, 6.}});
        key(number(Tied), {{2, -1.}, {4, -2.}});
        for (const Who child : {Tied, Second})
            parameter(Master)->bAddConstrainedParameter(parameter(child));
        for (const Who part : {X, Y})
            list(Position, part);
        key(number(X), {{0, 1.}, {6, 2.}});
        key(number(Y), {{6, 3.}, {9, 4.}});
        key(as<QPointF>(Joined), {{0, {1, 2}}, {10, {2, 4}}});
        key(as<QPointF>(Joined), {{10, {3, 6}}, {50, {7, 8}}}, 1);
        parameter(Joined)->setSplittable(false);
        list(Pair, Joined);
        list(Outer, Pair);
        list(Outer, Far);
        key(as<bool>(Far), {{15, true}}, 2);
        for (int i = 0; i < more; ++i) {
            for (const Who who : {Keyed, Tied, X, Y})
                key(number(who), {{1000 + i, i * 1.}});
            key(keyed, {{1000 + i, i * 2.}}, 1);
        }
        for (const Who member : {Keyed, Plain, Master, Tied, Second, Position, Outer, Text})
            owners[0]->addParameter(owner(member));
        owners[0]->assignNamePrefixes();
        root.addParameterSet(*owners[0]);
        file.setTimeOfWriting(QDateTime(QDate(2021, 3, 1), QTime(), Qt::UTC));
    }

    template <class T> Parameter<T>& as(Who who) const { return dynamic_cast<Parameter<T>&>(*parameter(who)); }
    Number& number(Who who) const { return dynamic_cast<Number&>(*parameter(who)); }
    void list(Who compound, Who part) const {
        dynamic_cast<CompoundParameter&>(*parameter(compound)).addParameter(owner(part));
    }
    std::string state() {
        return (broken() + detail::verify(root)).toStdString() + (World::state() + file.text()).data();
    }

    ParameterSet root;
    ProjectFile file{root};
};

} // namespace Worlds
