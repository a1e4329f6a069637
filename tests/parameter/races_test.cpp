#include "prm/Answers.h"
#include "prm/RangeHash.h"
#include "tests/world/Acts.h"
#include "tests/world/Replay.h"

#include <QSet>
#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <random>
#include <thread>
#include <unistd.h>

using namespace Worlds;

namespace {

/// More of them in a run that has the time.
int rounds(int few) {
    return few * std::max(1, qEnvironmentVariableIntValue("PRM_RACE_FACTOR"));
}

/// Does the same over and over on several threads, until it is destroyed. Ends the process when the test does not:
/// threads that wait for each other cannot be joined.
class Crowd {
public:
    explicit Crowd(const std::function<void()>& act) {
        alarm(static_cast<unsigned>(rounds(60)));
        for (std::atomic<int>& passes : m_passes) {
            m_threads.emplace_back([this, act, &passes] {
                for (; !m_over.load(); ++passes)
                    act();
            });
        }
        untilAllPass();
    }
    ~Crowd() {
        untilAllPass();
        m_over = true;
        for (std::thread& thread : m_threads)
            thread.join();
        alarm(0);
    }
    Q_DISABLE_COPY(Crowd)

    /// Until each thread has done it once from beginning to end. Nothing is thereby put in order between the threads.
    void untilAllPass() const {
        for (const std::atomic<int>& passes : m_passes) {
            const int before = passes.load(std::memory_order_relaxed);
            while (passes.load(std::memory_order_relaxed) < before + 2)
                std::this_thread::yield();
        }
    }

private:
    std::array<std::atomic<int>, 4> m_passes{};
    std::atomic<bool> m_over{false};
    std::vector<std::thread> m_threads;
};

// --- every value that a reader gets was the value at some time -------------------------------------------------------

template <class... Values> QString text(const Values&... values) {
    return QString::fromStdString(debugText(values...));
}
template <class T> QString text(const KeyframeData<T>& keyframe) {
    return text(keyframe.time, keyframe.value, keyframe.interpolationData.x1);
}
template <class Row> QString text(const QVector<Row>& rows) {
    QString all;
    for (const Row& row : rows)
        all += text(row) + ' ';
    return all;
}
template <class T> QString explained(const Parameter<T>& asked, const Context& context) {
    const Explanation explanation = explain(asked, context);
    return text(Replay<T>(explanation.context.time).value(explanation.steps));
}
template <class T> QString next(const Parameter<T>& asked, const Context& context) {
    Context found = at(-1);
    return text(asked.bNextKeyframe(context, found), found);
}
template <class T> QString nearest(const Parameter<T>& asked, const Context& context) {
    Time found;
    return text(asked.bNearestKeyframeTime(context, found), found);
}

/// Each is one question about a parameter in a view.
template <class T> auto questions() {
#define ASK(...) [](const Parameter<T>& asked, [[maybe_unused]] quint32 view) { return text(__VA_ARGS__); }
    constexpr static TimeSpan window{11, 34, true, false};
    std::vector<QString (*)(const Parameter<T>&, quint32)> all{
        ASK(asked.value(at(-4, view))),
        ASK(asked.value(at(11, view))),
        ASK(asked.value(at(20, view))),
        ASK(asked.value(at(90, view))),
        ASK(asked.sampleValues(Frame::fromUInt(19), Frame::fromUInt(34), View(view))),
        ASK(sampleValues(asked, View(view), Time::fromDouble(-3.5), 7.25, 6)),
        ASK(explained(asked, at(25, view))),
        ASK(explained(asked, at(-3, view))),
        ASK(constantAround(asked, at(25, view))),
        ASK(isConstant(asked, View(view), window)),
        ASK(keyframes(asked, View(view), window)),
        ASK(hashOf([&](Bsc::Hash& hash) { hashRange(hash, asked, View(view), window); })),
        ASK(hashOf([&](Bsc::Hash& hash) { hashAt(hash, asked, at(-2.5, view)); })),
        ASK(asked.keyframe(1, View(view))),
        ASK(asked.keyframeValue(2, View(view))),
        ASK(asked.keyframeCount(View(view))),
        ASK(asked.keyframeTime(1, View(view))),
        ASK(asked.interpolationData({&asked, View(view), 1}).x1),
        ASK(static_cast<uint>(asked.interpolation(at(25, view)))),
        ASK(next(asked, at(12, view))),
        ASK(nearest(asked, at(22, view))),
        ASK(asked.defaultValue()),
        ASK(static_cast<uint>(asked.extrapolationAfter())),
    };
    if constexpr (blends<T> && detail::hasOrder<T>) {
        all.push_back(ASK(bounds(asked, View(view), window)));
        all.push_back(ASK(slope(asked, at(25, view))));
        all.push_back(ASK(polyline(asked, View(view), window, 0.5)));
    }
#undef ASK
    return all;
}

/// Each calls the function in a state that may not be announced.
using Steps = std::vector<std::function<void(const std::function<void()>& silently)>>;

/// All acts, on parameters that are tied to and take over each other, in an order that is random and fixed.
template <class Kind> Steps stepsOn(Kind& asked, Kind& first, Kind& second) {
    Steps steps;
    std::minstd_rand random(14);
    for (int i = 0; i < 90; ++i) {
        std::array<std::uint8_t, 16> bytes;
        std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<std::uint8_t>(random() >> 8); });
        Choices choose(bytes.data(), bytes.size());
        const Act& act = chosen(i % 3 ? edits : commands, choose);
        A a(choose);
        // The views that make a blended value are read one after another.
        if (QByteArray(act.name).contains("setViewInterpolation"))
            a.kind = 1 + a.kind % 2;
        Kind& own = choose.below(4) > 0 ? asked : first;
        Kind& other = choose.yes() && &own != &first ? first : second;
        steps.push_back([&act, a, &own, &other, byHand = i % 2 > 0](const auto& silently) mutable {
            a.aim(own, a.number + a.kind);
            Command command;
            try {
                act.run(command, own, other, a);
                command.doIt();
                silently();
                if (byHand)
                    command.undoIt();
            } catch (const std::runtime_error&) {
            }
        });
    }
    return steps;
}

/// Calls the function after each change that is not announced.
template <class Kind>
void assignAnew(Kind& begin, std::initializer_list<Kind*> others, const std::function<void()>& silently) {
    for (const quint32 view : {0u, 1u, 5u}) {
        for (const auto& [time, value] : {std::pair(10, view), {20, 5u}, {30, 6u}, {40, 2u}})
            begin.setVariantValue(fitting(begin, value), at(time, view));
    }
    begin.vSetExtrapolationAfter(Extrapolation::Linear);
    for (Kind* one : others) {
        one->bUnconstrain();
        silently();
        one->setSplittable(true);
        silently();
        one->vSetDefault({});
        silently();
        one->setViewInterpolation({});
        silently();
        one->assignFrom(begin);
    }
}

template <class Kind, class T> void seeOnlyWhatWas() {
    const Warnings quiet;
    Kind begin, asked, first, second;
    const auto beginAnew = [&](const auto& silently) { assignAnew(begin, {&asked, &first, &second}, silently); };
    const Steps steps = stepsOn(asked, first, second);
    const auto all = questions<T>();
    std::vector<QSet<QString>> answers(all.size() * 8);
    const auto askAll = [&](const auto& take) {
        for (const quint32 view : {0u, 1u, 4u, 5u}) {
            for (std::size_t i = 0; i < all.size(); ++i)
                take(i * 8 + view, all[i](asked, view));
        }
    };
    const auto note = [&] {
        askAll([&](std::size_t question, const QString& answer) { answers[question].insert(answer); });
    };
    // What observers see on the way counts as well.
    for (const Kind* one : {&asked, &first, &second})
        QObject::connect(one, &P::changed, note);
    for (int round = 0; round < 2; ++round) {
        beginAnew(note);
        for (const auto& step : steps)
            step(note), note();
    }
    for (const Kind* one : {&asked, &first, &second})
        one->detachAllObservers();
    std::mutex mutex;
    std::set<std::size_t> wrong;
    const Crowd crowd([&] {
        askAll([&](std::size_t question, const QString& answer) {
            if (answers[question].contains(answer))
                return;
            const std::lock_guard<std::mutex> lock(mutex);
            if (wrong.insert(question).second)
                ADD_FAILURE() << "question " << question / 8 << " about view " << question % 8 << " was never answered "
                              << answer.toStdString();
        });
    });
    for (int round = rounds(16); round > 0; --round) {
        beginAnew([] {});
        for (std::size_t i = 0; i < steps.size(); ++i) {
            steps[i]([] {});
            // Now one, now another state stays for a while.
            if (i % 16 == static_cast<std::size_t>(round) % 16)
                crowd.untilAllPass();
        }
    }
}

TEST(Races, ReadersSeeOnlyWhatWas) {
    seeOnlyWhatWas<PointParameter, QPointF>();
    seeOnlyWhatWas<Parameter<QString>, QString>();
}

TEST(Races, TheRegistryIsAskedBesideEvaluation) {
    NumericParameter<double> parameter;
    for (const quint32 view : {0u, 1u})
        key(parameter, {{0, 1.}, {100, 1.}}, view);
    Views views;
    Views other;
    const Crowd crowd([&] {
        for (const View view : views.allViews()) {
            EXPECT_EQ(parameter.value(Context(Time::fromInt(50), view)), 1);
            const QString name = views.viewName(view);
            EXPECT_TRUE(name.isEmpty() || name == "Mono" || name == "Left" || name == "Right") << name.toStdString();
            EXPECT_LE(views.lookupView(name).id(), 1u);
        }
        other = views;
        EXPECT_LE(views.heroView().id(), 1u);
    });
    for (int round = 0; round < rounds(300); ++round) {
        views.setViewNames({{"Left", "L"}, {"Right", "R"}});
        views.setHeroView(View(1));
        parameter.iAddKeyframe(Frame::fromInt(round % 90), AnimationState(AnimationFlags(4), &views));
        views = other;
        views.setViewNames({{"Mono", "M"}});
        parameter.uniquifyView(View(1));
    }
}

// --- hooks that read, write and wait ---------------------------------------------------------------------------------

/// Between its two keyframes it does what a test wants, and adds what comes of it.
struct Hooked : Parameter<double> {
    Hooked() : Parameter<double>(QStringLiteral("hooked"), 1) { key(*this, {{0, 1.}, {100, 1.}}); }

    double interpolateValue(const BoundingKeyframes& around, const Context& context, Cache*) const override {
        const double more = inside ? inside(context) : 0;
        return more + keyframe(around.before.index, around.before.view).value;
    }

    std::function<double(const Context&)> inside;
};

TEST(Races, AHookThatTakesItsTimeHoldsUpOnlyTheEditsOfItsView) {
    alarm(60);
    std::atomic<bool> isInside{false};
    std::atomic<bool> edited{false};
    Hooked parameter;
    key(parameter, {{0, 2.}, {100, 2.}}, 1);
    parameter.inside = [&](const Context&) {
        for (isInside = true; !edited;)
            std::this_thread::yield();
        return parameter.keyframeCount(View(0));
    };
    std::thread reader([&] { EXPECT_EQ(parameter.value(at(50, 1)), 4 + 2); });
    while (!isInside)
        std::this_thread::yield();
    key(parameter, {{20, 3.}, {40, 3.}, {60, 3.}});
    parameter.vDeleteKeyframe(Context::Explicit(at(40)));
    key(parameter, {{0, 5.}}, 3);
    EXPECT_TRUE(parameter.deleteView(View(3)));
    parameter.vSetDefault(6);
    edited = true;
    reader.join();
    alarm(0);
}

TEST(Races, ReadersAndWritersOfEachOthersParametersAllGetOn) {
    Hooked first;
    Hooked second;
    thread_local int depth = 0;
    thread_local const Hooked* owned = nullptr;
    const auto evaluating = [](Hooked& own, const Hooked& other) {
        return [&](const Context& context) {
            if (++depth == 1 && owned == &own)
                own.vSetValue(1, at(60, context.view.id()));
            const double more = depth < 4 ? other.value(context) : 0;
            --depth;
            return more;
        };
    };
    first.inside = evaluating(first, second);
    second.inside = evaluating(second, first);
    const auto edit = [](Hooked& own, const Hooked& other) {
        owned = &own;
        for (int round = 0; round < rounds(300); ++round) {
            own.vSetValue(1, at(round % 90 + 1));
            own.vSetValue(1, at(50, 1));
            own.deleteView(View(1));
            own.adjustKeyframesTime([&](Time time) {
                EXPECT_GE(other.value(at(50.5)), 1);
                own.vSetValue(1, at(50, 2));
                return time;
            });
            own.clearViewData();
            key(own, {{0, 1.}, {100, 1.}});
            EXPECT_GE(own.value(at(50.5, 1)), 1) << "whose hook edits it";
        }
    };
    const Crowd crowd([&] {
        for (const quint32 view : {0u, 1u, 2u})
            EXPECT_GE(first.value(at(50.5, view)) + second.value(at(50.5, view)), 2);
    });
    std::thread another(edit, std::ref(second), std::cref(first));
    edit(first, second);
    another.join();
}

} // namespace
