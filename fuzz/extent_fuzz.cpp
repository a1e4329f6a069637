// Edits and undo over parameters of all kinds, compounds, masters and views: no value differs outside the extents that
// are told of them. Beside that, the extent of one edited keyframe is what a plain look at its neighbours gives.

#include "fuzz/Fuzz.h"
#include "prm/ChangedSince.h"
#include "prm/CurveKinds.h"
#include "tests/world/Acts.h"

#include <QDebug>

#include <array>
#include <cstring>
#include <map>
#include <optional>
#include <random>

using namespace Worlds;

namespace {

constexpr int stepSize = 16;
using SomeViews = std::array<View, 3>;
const View allSampled[] = {View(0), View(1), View(2), View(3), View(4), View(5), View(2147483646), View(4294967295)};

struct Count {
    void print() const {
        std::printf("%llu edits, %llu values compared, %llu of them differ; %llu single keyframes, %llu exactly\n",
                    edits, values, differences, single, exactly);
        std::fflush(stdout);
    }

    unsigned long long edits = 0;
    unsigned long long values = 0;
    unsigned long long differences = 0;
    unsigned long long single = 0;
    unsigned long long exactly = 0;
} count;

const bool kindsAreThere =
    registerInterpolation(Interpolation::Custom0, [](const IType& shape, double x) { return x * x + shape.y1; }) &&
    registerExtrapolation(Extrapolation::Custom0, [](Time time, Time first, Time last) {
        return last + -std::fmod(last - time, std::max(1.0, last - first));
    });

template <class T> void append(std::vector<double>& numbers, const T& value) {
    if constexpr (std::is_same_v<T, QPointF>)
        numbers.insert(numbers.end(), {value.x(), value.y()});
    else if constexpr (std::is_same_v<T, QString>)
        numbers.push_back(qHash(value));
    else
        numbers.push_back(static_cast<double>(value));
}

template <class T>
bool sample(const P& parameter, const std::vector<Time>& times, const View& view, std::vector<double>& numbers) {
    const auto* const typed = dynamic_cast<const Parameter<T>*>(&parameter);
    if (!typed)
        return false;
    QVector<T> values(static_cast<int>(times.size()));
    typed->sampleValues(times.data(), values.size(), view, values.data());
    for (const T& value : qAsConst(values))
        append(numbers, value);
    return true;
}

using Keyframes = QVector<KeyframeData<double>>;

struct Single {
    enum What { Came, Gone, Value, Kind };

    View view;
    Time time;
    What what;
};

/// The keyframes of each view of a number, and what else decides about its values.
struct Lists {
    explicit Lists(const Number& number)
        : before(number.extrapolationBefore()), after(number.extrapolationAfter()), isSplittable(number.splittable()),
          mode(number.viewInterpolation().mode) {
        for (const View view : std::vector<View>(number.viewList()))
            for (unsigned i = 0; i <= number.keyframeCount(view); ++i)
                if (Keyframes& list = views[view.id()]; i < number.keyframeCount(view))
                    list.append(number.keyframe(i, view));
    }

    std::optional<Single> singleChangeTo(const Lists& now) const {
        std::vector<Single> all;
        if (before != now.before || after != now.after || isSplittable != now.isSplittable || mode != now.mode ||
            views.size() != now.views.size())
            return {};
        for (const auto& [id, list] : views) {
            const auto found = now.views.find(id);
            if (found == now.views.end())
                return {};
            addChanges(View(id), list, found->second, all);
        }
        // What is appended shapes the keyframe before it.
        if (all.size() == 2 && all[0].what == Single::Kind && all[1].what == Single::Came &&
            all[0].view == all[1].view && now.views.at(all[1].view.id()).last().time == all[1].time)
            all.erase(all.begin());
        return all.size() == 1 ? std::optional(all.front()) : std::nullopt;
    }

    TimeSpans expected(const Single& change) const {
        const Keyframes& list = views.at(change.view.id());
        const KeyframeData<double>* prev = nullptr;
        const KeyframeData<double>* next = nullptr;
        for (const KeyframeData<double>& one : list) {
            if (one.time < change.time)
                prev = &one;
            if (change.time < one.time && !next)
                next = &one;
        }
        const bool isKind = change.what == Single::Kind;
        if (list.isEmpty() || (!isKind && !prev && !next))
            return TimeSpan::all();
        if (isKind && !next)
            return {};
        const bool holds = prev && prev->interpolationData.interpolation <= Interpolation::Constant &&
                           (next || change.what == Single::Value || after <= Extrapolation::Constant);
        TimeSpan span = TimeSpan::all();
        if (isKind || holds)
            span = {change.time.toDouble(), span.to, !isKind, false};
        else if (prev)
            span = {prev->time.toDouble(), span.to, false, false};
        if (next)
            span.to = next->time.toDouble();
        TimeSpans all(span);
        const bool isFirst =
            isKind ? !prev : prev == &list.first() && prev->interpolationData.interpolation > Interpolation::Constant;
        const double first = list.first().time.toDouble();
        const double last = list.last().time.toDouble();
        if ((prev || isKind) && ((before == Extrapolation::Linear && isFirst) || before >= Extrapolation::Custom0))
            all.add({TimeSpan::all().from, first, true, false});
        if (next && ((after == Extrapolation::Linear && next == &list.last()) || after >= Extrapolation::Custom0))
            all.add({last, TimeSpan::all().to, false, false});
        return all;
    }

    Extrapolation before;
    Extrapolation after;
    bool isSplittable;
    Mode mode;
    std::map<quint32, Keyframes> views;

private:
    static void addChanges(View view, const Keyframes& a, const Keyframes& b, std::vector<Single>& all) {
        int i = 0;
        int j = 0;
        while (i < a.size() || j < b.size()) {
            if (j == b.size() || (i < a.size() && a.at(i).time < b.at(j).time)) {
                all.push_back({view, a.at(i++).time, Single::Gone});
            } else if (i == a.size() || b.at(j).time < a.at(i).time) {
                all.push_back({view, b.at(j++).time, Single::Came});
            } else {
                if (a.at(i).value != b.at(j).value)
                    all.push_back({view, a.at(i).time, Single::Value});
                if (a.at(i).interpolationData != b.at(j).interpolationData)
                    all.push_back({view, a.at(i).time, Single::Kind});
                ++i, ++j;
            }
        }
    }
};

class Session {
public:
    Session(const std::uint8_t* data, std::size_t size)
        : m_data(data), m_left(size / stepSize), m_random(1 + (size > 0 ? data[0] : 0) + size) {}

    void run() {
        Choices first = nextStep();
        const auto together = static_cast<unsigned>(first.below(8));
        m_interferes = first.below(4) == 0;
        m_world = std::make_unique<World>(first, World::Options{10, together, false});
        for (int i = 0; i < m_world->parameterCount; ++i)
            enlist(i);
        for (int i = 0; i < setCount; ++i)
            m_root.addParameterSet(*m_world->set(i));
        ChangedSince since(m_root);
        ChangedSince slow(m_root);
        m_since = &since;
        const std::vector<Time> times = drawTimes();
        const SomeViews views = drawViews();
        const Samples former = samples(times, views);
        while (m_left > 0)
            step(nextStep());
        m_ignoresOutside = true;
        compare("asked late", former, samples(times, views), times, views, slow.take());
    }

private:
    using Samples = std::map<const P*, std::vector<double>>;

    Choices nextStep() {
        if (m_left == 0)
            return {nullptr, 0};
        --m_left;
        return {std::exchange(m_data, m_data + stepSize), stepSize};
    }

    P* parameter(int number) const { return m_world->parameter(number); }

    /// One is outside the sets, if only as somebody's master.
    void enlist(int number) {
        constexpr int outside = 4;
        P* const own = parameter(number);
        if (number != outside)
            m_root.addParameter(*own);
        QObject::connect(
            own, &P::changed, &m_receiver, [this](ParameterChange& change) { interfere(change); },
            Qt::DirectConnection);
        QObject::connect(
            own, &P::changed, &m_receiver, [this](ParameterChange& change) { m_told |= extentOf(change); },
            Qt::DirectConnection);
    }

    void interfere(ParameterChange& change) {
        if (!m_interferes || m_interferences == 0 || change.type == ParameterChange::PARAMETER_DELETED)
            return;
        --m_interferences;
        if (m_interferences % 2 == 0)
            change.parameter->setVariantValue(fitting(*change.parameter, 5), at(m_interferences / 4. - 1),
                                              std::nothrow);
        else
            change.parameter->vReset(at(change.affectedIndex / 4., change.context.view.id()));
    }

    std::vector<Time> drawTimes() const {
        constexpr int few = 24;
        std::vector<Time> times{Time::fromDouble(-1e6), Time::INVALID};
        for (int i = 0; i < few; ++i) {
            // Keyframes are at quarters, and between.
            times.push_back(Time::fromDouble(static_cast<int>(m_random() % 80) / 4. - 6));
            times.push_back(Time::fromDouble(static_cast<double>(m_random() % 10007) / 500. - 6));
        }
        return times;
    }
    SomeViews drawViews() const {
        SomeViews views;
        for (View& view : views)
            view = allSampled[m_random() % std::size(allSampled)];
        return views;
    }
    Samples samples(const std::vector<Time>& times, const SomeViews& sampled) const {
        Samples all;
        for (int i = 0; i < m_world->options.plainCount; ++i) {
            const P* const own = parameter(i);
            if (!own)
                continue;
            std::vector<double>& numbers = all[own];
            for (const View view : sampled)
                static_cast<void>(sample<double>(*own, times, view, numbers) ||
                                  sample<int>(*own, times, view, numbers) || sample<bool>(*own, times, view, numbers) ||
                                  sample<QString>(*own, times, view, numbers) ||
                                  sample<QPointF>(*own, times, view, numbers));
        }
        return all;
    }

    void compare(const char* what, const Samples& before, const Samples& after, const std::vector<Time>& times,
                 const SomeViews& sampled, const Extent& extent) const {
        for (const auto& [own, numbers] : after) {
            const auto former = before.find(own);
            if (former == before.end() || (own == parameter(4) && m_ignoresOutside))
                continue;
            const std::size_t each = numbers.size() / std::size(sampled) / times.size();
            for (std::size_t i = 0; i < numbers.size(); ++i) {
                const double a = former->second[i];
                const double b = numbers[i];
                if (a == b || (std::isnan(a) && std::isnan(b)))
                    continue;
                ++count.differences;
                const std::size_t place = i / each;
                expectTouched(what, *own, Context(times[place % times.size()], sampled[place / times.size()]), extent);
            }
            count.values += numbers.size();
        }
    }
    void expectTouched(const char* what, const P& own, const Context& at, const Extent& extent) const {
        if (!extent.touches(&own, at) || !extent.touches(at) || !extent.in(&own, at.view).contains(at.time)) {
            QString spans;
            QDebug(&spans) << extent.in(&own, at.view);
            Fuzz::fail(what, QString("%1 differs at %2 in view %3, outside %4; %5")
                                 .arg(own.scriptName())
                                 .arg(at.time.toDouble())
                                 .arg(at.view.id())
                                 .arg(spans, QString::fromLatin1(m_doing)));
        }
        for (int i = m_world->options.plainCount; i < m_world->parameterCount; ++i) {
            const auto* const compound = dynamic_cast<const CompoundParameter*>(parameter(i));
            if (compound && compound->subparameters().contains(const_cast<P*>(&own)))
                expectTouched(what, *compound, at, extent);
        }
    }

    enum Told { Announced, Silent };

    template <class Do> void watch(const char* doing, Told told, const Do& act) {
        m_doing = doing;
        ++count.edits;
        const std::vector<Time> times = drawTimes();
        const SomeViews views = drawViews();
        const Samples before = samples(times, views);
        const bool isAnnounced = told == Announced && !gainsViewsSilently();
        m_told = {};
        m_interferences = 3;
        try {
            act();
        } catch (const std::exception&) {
            // What setting a value or reading a keyframe throws.
        }
        const Samples after = samples(times, views);
        if (isAnnounced)
            compare("announced", before, after, times, views, m_told);
        m_ignoresOutside = true;
        compare("asked", before, after, times, views, m_since->take());
        m_ignoresOutside = false;
        Fuzz::intact(m_world->broken());
    }

    /// Edits of an unsplittable parameter with data, but none in view 0, give that view data, and emit nothing for it.
    bool gainsViewsSilently() const {
        for (int i = 0; i < m_world->options.plainCount; ++i)
            if (const P* const own = parameter(i);
                own && !own->splittable() && own->numViews() > 0 && own->viewList().front() != View(0))
                return true;
        return false;
    }

    void step(Choices step) {
        const int kind = step.below(16);
        if (kind < 7)
            edit(step);
        else if (kind < 11)
            command(step);
        else if (kind < 13)
            undo();
        else if (kind < 14)
            redo();
        else
            rearrange(step);
    }

    struct Turn {
        explicit Turn(Session& session, const std::vector<Act>& rows, Choices& step)
            : act(chosen(rows, step)), own(session.any(step)), other(session.any(step)), a(step) {
            a.aim(own, step.below(16));
        }
        /// What is not emitted, but nothing that emits in part.
        Told told() const {
            for (const char* const silent : {"adjustKeyframesTime", "readLine", "vSetDefault(", "setViewInterpolation",
                                             "setSplittable", "AddConstrained"})
                if (std::strstr(act.name, silent))
                    return Silent;
            return Announced;
        }

        const Act& act;
        P& own;
        P& other;
        A a;
    };
    P& any(Choices& step) const { return *parameter(step.below(m_world->parameterCount)); }

    void edit(Choices& step) {
        Turn turn(*this, edits, step);
        const auto* const number = dynamic_cast<const Number*>(&turn.own);
        const bool counts = number && !number->masterParameter() && turn.told() == Announced && !m_interferes;
        const auto former = counts ? std::optional<Lists>(*number) : std::nullopt;
        Command none;
        watch(turn.act.name, turn.told(), [&] { turn.act.run(none, turn.own, turn.other, turn.a); });
        if (counts)
            countSingle(*number, *former);
    }
    void countSingle(const Number& number, const Lists& former) const {
        const Lists now(number);
        const std::optional<Single> single = former.singleChangeTo(now);
        if (!single)
            return;
        ++count.single;
        count.exactly += m_told.in(&number, single->view) == now.expected(*single) ? 1 : 0;
        if (count.single % 1000 == 0)
            HOLD(count.exactly * 100 >= count.single * 95);
    }

    void command(Choices& step) {
        Turn turn(*this, commands, step);
        auto made = std::make_unique<Command>();
        turn.act.run(*made, turn.own, turn.other, turn.a);
        bool isDone = false;
        watch(turn.act.name, turn.told(), [&] {
            made->doIt();
            isDone = true;
        });
        m_commands.resize(m_done);
        if (isDone)
            m_commands.push_back({std::move(made), turn.told()});
        m_done = m_commands.size();
    }
    void undo() {
        if (m_done == 0)
            return;
        --m_done;
        watch("undo", Announced, [&] { m_commands[m_done].command->undoIt(); });
    }
    void redo() {
        if (m_done == m_commands.size())
            return;
        watch("redo", m_commands[m_done].told, [&] { m_commands[m_done].command->doIt(); });
        ++m_done;
    }

    void rearrange(Choices& step) {
        P& own = any(step);
        const int number = m_world->numberOf(&own);
        const int listing = step.below(setCount + compoundCount);
        const int kind = step.below(6);
        if (kind < 2)
            watch("list", Silent, [&] { m_world->set(listing)->addParameter(m_world->owner(number)); });
        else if (kind == 2)
            watch("view interpolation", Silent, [&] {
                onNumber(own, [&](auto& one) { one.setViewInterpolation({static_cast<Mode>(step.below(4))}); });
            });
        else if (kind == 3)
            watch("tie", Silent, [&] { any(step).bAddConstrainedParameter(&own); });
        else if (kind == 4 && step.below(8) == 0)
            remake(number);
        else
            rename(own);
    }
    void remake(int number) {
        watch("delete", Announced, [&] {
            for (int i = 0; i < m_world->parameterCount; ++i) {
                auto* const compound = dynamic_cast<CompoundParameter*>(parameter(i));
                if (i != number && compound && compound->subparameters().contains(parameter(number)))
                    return;
            }
            m_world->slots[static_cast<std::size_t>(number)].owner.reset();
            if (!parameter(number)) {
                m_world->make(number);
                enlist(number);
            }
        });
        if (!m_world->slots[static_cast<std::size_t>(number)].owner)
            m_world->slots[static_cast<std::size_t>(number)].owner = ownerOf(number);
    }
    boost::shared_ptr<P> ownerOf(int number) const {
        for (int i = 0; i < setCount + compoundCount; ++i)
            for (const auto& one : m_world->set(i)->parameters())
                if (one.get() == parameter(number))
                    return one;
        return {};
    }
    void rename(P& own) {
        const QString former = own.scriptName();
        own.setScriptName(former + "x");
        const Extent extent = m_since->take();
        const bool isThere = std::any_of(extent.renamed().begin(), extent.renamed().end(),
                                         [&](const Extent::Member& member) { return member.parameter == &own; });
        HOLD(isThere || &own == parameter(4));
        own.setScriptName(former);
        static_cast<void>(m_since->take());
    }

    struct Done {
        std::unique_ptr<Command> command;
        Told told;
    };

    const std::uint8_t* m_data;
    std::size_t m_left;
    std::unique_ptr<World> m_world;
    ParameterSet m_root;
    ChangedSince* m_since = nullptr;
    bool m_interferes = false;
    int m_interferences = 0;
    bool m_ignoresOutside = false;
    Extent m_told;
    const char* m_doing = "";
    std::vector<Done> m_commands;
    std::size_t m_done = 0;
    mutable std::minstd_rand m_random;
    /// The last one, so that the end of the world is not received.
    QObject m_receiver;
};

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    HOLD(kindsAreThere);
    const unsigned long long former = count.edits;
    Session(data, std::min<std::size_t>(size, 128 * stepSize)).run();
    constexpr unsigned long long often = 10000;
    if (count.edits / often != former / often)
        count.print();
    return 0;
}
