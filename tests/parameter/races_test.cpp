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

constexpr int readers = 4;

/// More of them in a run that has the time.
int rounds(int few) {
    return few * std::max(1, qEnvironmentVariableIntValue("PRM_RACE_FACTOR"));
}

/// Ends the process when the test does not: threads that wait for each other cannot be joined.
struct Watchdog {
    Watchdog() { alarm(static_cast<unsigned>(rounds(60))); }
    ~Watchdog() { alarm(0); }
    Q_DISABLE_COPY(Watchdog)
};

/// Does the same over and over on several threads, until it is destroyed.
class Crowd {
public:
    Crowd(int count, const std::function<void()>& act) : m_passes(static_cast<std::size_t>(count)) {
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
    Watchdog m_watchdog;
    std::vector<std::atomic<int>> m_passes;
    std::atomic<bool> m_over{false};
    std::vector<std::thread> m_threads;
};

// --- every value that a reader gets was the value at some time -------------------------------------------------------

template <class T> QString text(const T& value) {
    QString text;
    ValueType<T>::write(text, value);
    return text;
}
QString text(const Time& time) {
    return QString::number(time.toDouble());
}
QString text(const IType& shape) {
    return QStringLiteral("%1: %2").arg(static_cast<uint>(shape.interpolation)).arg(shape.x1);
}
template <class T> QString text(const KeyframeData<T>& keyframe) {
    return text(keyframe.time) + text(keyframe.value) + text(keyframe.interpolationData);
}

/// Each is one question.
template <class T> std::vector<QString (*)(const Parameter<T>&, quint32)> questions() {
    using Asked = Parameter<T>;
    return {
        [](const Asked& asked, quint32 view) { return text(asked.value(at(-4, view))); },
        [](const Asked& asked, quint32 view) { return text(asked.value(at(11, view))); },
        [](const Asked& asked, quint32 view) { return text(asked.value(at(20, view))); },
        [](const Asked& asked, quint32 view) { return text(asked.value(at(90, view))); },
        [](const Asked& asked, quint32 view) {
            const QVector<T> sampled = asked.sampleValues(Frame::fromUInt(19), Frame::fromUInt(34), View(view));
            return text(sampled.first()) + text(sampled.at(3)) + text(sampled.last());
        },
        [](const Asked& asked, quint32 view) {
            const Explanation explanation = explain(asked, at(25, view));
            return text(Replay<T>(explanation.context.time).value(explanation.steps));
        },
        [](const Asked& asked, quint32 view) { return text(asked.keyframe(1, View(view))); },
        [](const Asked& asked, quint32 view) { return text(asked.keyframeValue(2, View(view))); },
        [](const Asked& asked, quint32 view) { return QString::number(asked.keyframeCount(View(view))); },
        [](const Asked& asked, quint32 view) { return text(asked.keyframeTime(1, View(view)).time); },
        [](const Asked& asked, quint32 view) {
            return text(asked.interpolationData({&asked, View(view), 1}));
        },
        [](const Asked& asked, quint32 view) { return text(IType(asked.interpolation(at(25, view)))); },
        [](const Asked& asked, quint32 view) {
            Context next = at(-1);
            asked.bNextKeyframe(at(12, view), next);
            return text(next.time);
        },
        [](const Asked& asked, quint32 view) {
            Time nearest;
            asked.bNearestKeyframeTime(at(22, view), nearest);
            return text(nearest);
        },
        [](const Asked& asked, quint32) { return text(asked.defaultValue()); },
        [](const Asked& asked, quint32) { return QString::number(static_cast<uint>(asked.extrapolationAfter())); },
    };
}

/// A parameter that is asked, and two that it takes over and is tied to. All acts, in an order that is random and
/// fixed.
template <class Kind, class T> struct Script {
    static T value(double number) { return ValueType<T>::fromVariant(fitting(Kind(), number)); }

    Script() {
        for (const quint32 view : {0u, 1u, 5u})
            key<T>(begin, {{10, value(view)}, {20, value(5)}, {30, value(6)}, {40, value(2)}}, view);
        begin.vSetExtrapolationAfter(Extrapolation::Linear);
        std::minstd_rand random(14);
        for (int i = 0; i < 90; ++i) {
            std::array<std::uint8_t, 16> bytes;
            std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<std::uint8_t>(random() >> 8); });
            Choices choose(bytes.data(), bytes.size());
            const Act& act = chosen(i % 3 ? allEdits() : allCommands(), choose);
            A a(choose);
            // The views that make a blended value are read one after another.
            if (QByteArray(act.name).contains("setViewInterpolation"))
                a.kind = 1 + a.kind % 2;
            Kind& own = choose.below(4) > 0 ? asked : first;
            Kind& other = choose.yes() && &own != &first ? first : second;
            steps.push_back([&act, a, &own, &other, byHand = i % 2 > 0]() mutable {
                a.aim(own, a.number + a.kind);
                Command command;
                try {
                    act.run(command, own, other, a);
                    command.doIt();
                    if (byHand)
                        command.undoIt();
                } catch (const std::runtime_error&) {
                }
            });
        }
    }
    /// Calls the function where a change is not announced.
    void beginAnew(const std::function<void()>& silently = [] {}) {
        for (Kind* one : {&asked, &first, &second}) {
            one->bUnconstrain();
            one->setSplittable(true);
            silently();
            one->vSetDefault(T());
            silently();
            one->setViewInterpolation({});
            silently();
            one->assignFrom(begin);
        }
    }

    Kind begin, asked, first, second;
    std::vector<std::function<void()>> steps;
};

template <class Kind, class T> void seeOnlyWhatWas() {
    const Warnings quiet;
    Script<Kind, T> script;
    const auto asked = questions<T>();
    std::vector<QSet<QString>> answers(asked.size() * 8);
    const auto askAll = [&](const auto& take) {
        for (const quint32 view : {0u, 1u, 4u, 5u}) {
            for (std::size_t i = 0; i < asked.size(); ++i)
                take(i * 8 + view, asked[i](script.asked, view));
        }
    };
    const auto note = [&] {
        askAll([&](std::size_t question, const QString& answer) { answers[question].insert(answer); });
    };
    // What observers see on the way counts as well.
    for (const Kind* one : {&script.asked, &script.first, &script.second})
        QObject::connect(one, &P::changed, note);
    for (int round = 0; round < 2; ++round) {
        script.beginAnew(note);
        for (const auto& step : script.steps)
            step(), note();
    }
    for (const Kind* one : {&script.asked, &script.first, &script.second})
        one->detachAllObservers();
    std::mutex mutex;
    std::set<std::size_t> wrong;
    const Crowd crowd(readers, [&] {
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
        script.beginAnew();
        for (std::size_t i = 0; i < script.steps.size(); ++i) {
            script.steps[i]();
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
    const Crowd crowd(readers, [&] {
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
class Hooked : public Parameter<double> {
public:
    Hooked() : ParameterWithoutType(false, false, nullptr), Parameter<double>(QStringLiteral("hooked"), 1) {
        key(*this, {{0, 1.}, {100, 1.}});
    }

    double interpolateValue(const BoundingKeyframes& around, const Context& context, Cache*) const override {
        const double more = inside ? inside(context) : 0;
        return more + keyframe(around.before.index, around.before.view).value;
    }

    std::function<double(const Context&)> inside;
};

TEST(Races, AHookThatTakesItsTimeHoldsUpOnlyTheEditsOfItsView) {
    const Watchdog watchdog;
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
}

TEST(Races, ReadersAndWritersOfEachOthersParametersAllGetOn) {
    Hooked first;
    Hooked second;
    thread_local int depth = 0;
    const auto evaluating = [](const Hooked& other) {
        return [&other](const Context& context) {
            const double more = ++depth < 4 ? other.value(context) : 0;
            --depth;
            return more;
        };
    };
    first.inside = evaluating(second);
    second.inside = evaluating(first);
    const auto edit = [](Hooked& own, const Hooked& other) {
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
        }
    };
    const Crowd crowd(readers, [&] {
        for (const quint32 view : {0u, 1u, 2u})
            EXPECT_GE(first.value(at(50.5, view)) + second.value(at(50.5, view)), 2);
    });
    std::thread another(edit, std::ref(second), std::cref(first));
    edit(first, second);
    another.join();
}

TEST(Races, AHookMayEditWhatItReads) {
    Hooked other;
    for (const Act* act : allEdits()) {
        SCOPED_TRACE(act->name);
        Hooked parameter;
        bool inside = false;
        parameter.inside = [&, owner = std::this_thread::get_id()](const Context& context) {
            if (std::this_thread::get_id() == owner && !std::exchange(inside, true)) {
                Command none;
                act->run(none, parameter, other, {at(0, 1), at(30), 8, 2, false, 2});
                parameter.value(context);
                inside = false;
            }
            return 0;
        };
        const Crowd crowd(2, [&] { parameter.value(at(50, 1)); });
        for (int round = 0; round < rounds(10); ++round) {
            key(parameter, {{0, 1.}, {100, 1.}}, 1);
            EXPECT_EQ(parameter.sampleValues(Frame::fromUInt(49), Frame::fromUInt(51), View(1)).size(), 3);
        }
    }
}

} // namespace
