// Histories of commands over parameters of all kinds, compounds, sets and masters: what is undone, and what is done
// again, is exactly as it was. Beside that, compounds are the union of their parts, in keyframes, values and views.

#include "fuzz/Fuzz.h"
#include "tests/world/Acts.h"

using namespace Worlds;

namespace {

constexpr int stepSize = 16;

/// With PRM_FUZZ_TRACE in the environment, each step is printed.
template <class... More> void trace(const char* what, const More&... more) {
    static const bool isWanted = qEnvironmentVariableIsSet("PRM_FUZZ_TRACE");
    if (!isWanted)
        return;
    QString line;
    QTextStream stream(&line);
    static_cast<void>(((stream << what) << ... << more));
    std::fprintf(stderr, "%s\n", qPrintable(line));
}

void trace(const Act& act, const P& own, const P& other, const A& a) {
    const auto shown = [](const Context& at) { return QString("%1@%2 ").arg(at.time.toDouble()).arg(at.view.id()); };
    trace(act.name, " of ", own.scriptName(), ", other ", other.scriptName(), " at ", shown(a.at), "to ", shown(a.to),
          " value ", a.value, " number ", a.number, " kind ", a.kind, a.yes ? " yes" : " no");
}

/// A compound is its parts, asked one by one.
void compareWithParts(const CompoundParameter& compound, const View& view) {
    QList<double> plain;
    for (const P* part : compound.subparameters()) {
        for (unsigned i = 0; i < part->keyframeCount(view); ++i)
            plain.append(part->keyframeTime(i, view).time.toDouble());
    }
    std::sort(plain.begin(), plain.end());
    plain.erase(std::unique(plain.begin(), plain.end()), plain.end());
    QList<double> seen;
    for (const Context& at : compound.allKeyframesTime(view))
        seen.append(at.time.toDouble());
    HOLD(seen == plain);
    HOLD(static_cast<int>(compound.keyframeCount(view)) == plain.size());
    for (const double time : askedTimes) {
        const Context at(Time::fromDouble(time), view);
        HOLD(compound.bKeyframeAt(Context::Explicit(at)) == plain.contains(time));
        const QVariant value = compound.variantValue(at, std::nothrow);
        QString parts;
        for (const P* part : compound.subparameters())
            parts += ' ' + exact(part->variantValue(at, std::nothrow));
        HOLD(!value.isValid() || exact(value) == parts);
    }
}

class History {
public:
    History(const std::uint8_t* data, std::size_t size) : m_data(data), m_left(size / stepSize) {}

    void run() {
        Choices first = nextStep();
        const auto together = static_cast<unsigned>(first.below(8));
        m_isWatched = first.below(3) > 0;
        m_world = std::make_unique<World>(first, World::Options{10, together, first.yes()});
        trace("together ", together, m_world->options.isObserved ? ", observed" : "");
        m_project.enlist(*m_world);
        while (m_left > 0 && build(nextStep())) {
        }
        m_states.push_back(state());
        while (m_left > 0)
            act(nextStep());
        finishCommand();
        if (m_states[m_done].isEmpty())
            m_states[m_done] = state();
        travelTo(0);
        m_isWatched = true;
        travelTo(m_commands.size());
        saveAndLoad();
        travelTo(0);
    }

private:
    Choices nextStep() {
        if (m_left == 0)
            return {nullptr, 0};
        --m_left;
        return {std::exchange(m_data, m_data + stepSize), stepSize};
    }

    P* parameter(int number) const { return m_world->parameter(number); }

    // Building: nothing of this is undone.

    /// False where the commands begin.
    bool build(Choices step) {
        const int kind = step.below(9) == 8 && step.below(4) == 0 ? 8 : step.below(8);
        P* const own = parameter(step.below(m_world->parameterCount));
        P* const other = parameter(step.below(m_world->parameterCount));
        const int listing = step.below(setCount + compoundCount);
        try {
            if (kind < 3)
                addPart(listing, *own);
            else if (kind == 3)
                step.yes() ? tie(*own, *other) : interpolateViews(*own, step.below(4));
            else if (kind < 6)
                setValue(*own, A(step));
            else if (kind < 8)
                edit(*own, *other, step);
        } catch (const std::exception&) {
            // What setting a value or reading a keyframe throws.
        }
        return kind < 8;
    }

    void addPart(int listing, P& part) {
        trace("set ", listing, " lists ", part.scriptName());
        const int number = m_world->numberOf(&part);
        m_world->set(listing)->addParameter(m_world->owner(number));
        m_listed.emplace_back(listing, number);
    }

    static void tie(P& master, P& tied) {
        trace(qPrintable(master.scriptName()), " ties ", tied.scriptName());
        master.bAddConstrainedParameter(&tied);
    }

    static void interpolateViews(P& own, int mode) {
        trace(qPrintable(own.scriptName()), " interpolates views ", mode);
        onNumber(own, [&](auto& number) { number.setViewInterpolation({static_cast<Mode>(mode)}); });
    }

    static void setValue(P& own, const A& a) {
        trace(qPrintable(own.scriptName()), " = ", a.value);
        own.setVariantValue(fitting(own, a.value), a.at, std::nothrow);
    }

    static void edit(P& own, P& other, Choices& step) {
        const Act& act = chosen(allEdits(), step);
        const A a(step);
        trace(act, own, other, a);
        Command none;
        act.run(none, own, other, a);
    }

    // Doing and undoing.

    void act(Choices step) {
        const int kind = step.below(16);
        if (kind < 12) {
            addCall(step);
            if (kind > 2)
                finishCommand();
        } else {
            finishCommand();
            const std::size_t steps = kind == 15 ? m_commands.size() : static_cast<std::size_t>(step.below(4));
            const std::size_t former = m_done;
            travelTo(m_done - std::min(m_done, steps));
            if (step.yes())
                travelTo(former);
        }
    }

    void addCall(Choices& step) {
        const Act& act = chosen(allCommands(), step);
        P& own = *parameter(step.below(m_world->parameterCount));
        P& other = *parameter(step.below(m_world->parameterCount));
        A a(step);
        a.aim(own, step.below(16));
        if (!m_pending)
            m_pending = std::make_unique<Command>();
        trace(act, own, other, a);
        act.run(*m_pending, own, other, a);
    }

    void finishCommand() {
        if (!m_pending)
            return;
        m_commands.resize(m_done);
        m_states.resize(m_done + 1);
        trace("do");
        try {
            m_pending->doIt();
            m_commands.push_back(std::move(m_pending));
            m_states.push_back(m_isWatched ? state() : QByteArray());
            ++m_done;
        } catch (const std::exception&) {
            m_pending.reset();
            expect("what threw has not happened");
        }
    }

    void travelTo(std::size_t target) {
        while (m_done > target) {
            trace("undo");
            m_commands[--m_done]->undoIt();
            expect("what is undone is as it was");
        }
        while (m_done < target) {
            trace("do again");
            m_commands[m_done++]->doIt();
            expect("what is done again is as it was");
        }
    }

    void expect(const char* what) const {
        const QByteArray& former = m_states[m_done];
        if (!former.isEmpty() && (m_isWatched || m_done == 0))
            Fuzz::same(what, former, state());
    }

    QByteArray state() const {
        Fuzz::intact(detail::verify(m_project.root) + m_world->broken());
        for (int i = m_world->options.plainCount; i < m_world->parameterCount; ++i) {
            for (const View view : asked)
                compareWithParts(dynamic_cast<const CompoundParameter&>(*parameter(i)), view);
            // What is remembered of one view must be right later.
            compareWithParts(dynamic_cast<const CompoundParameter&>(*parameter(i)), asked[m_done % 3]);
        }
        return m_world->state() + m_project.file.text();
    }

    /// A project that can be saved without losses comes back in an equal world.
    void saveAndLoad() {
        if (!m_project.file.saveLosses().isEmpty())
            return;
        World world(Choices(nullptr, 0), m_world->options);
        Project project;
        project.enlist(world);
        for (const auto& [listing, number] : m_listed)
            world.set(listing)->addParameter(world.owner(number));
        for (int i = 0; i < world.parameterCount; ++i)
            makeAlike(*world.parameter(i), *parameter(i));
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

    struct Project {
        Project() { file.setTimeOfWriting(QDateTime(QDate(2021, 3, 1), QTime(), Qt::UTC)); }
        void enlist(World& world) {
            for (int i = 0; i < setCount; ++i)
                root.addParameterSet(*world.set(i));
        }
        ParameterSet root;
        ProjectFile file{root};
    };

    const std::uint8_t* m_data;
    std::size_t m_left;
    std::unique_ptr<World> m_world;
    Project m_project;
    /// By the numbers of sets and parameters.
    std::vector<std::pair<int, int>> m_listed;
    std::unique_ptr<Command> m_pending;
    std::vector<std::unique_ptr<Command>> m_commands;
    /// Before each command, and after the last.
    std::vector<QByteArray> m_states;
    /// Whether each state is looked at; compounds keep what they were asked last.
    bool m_isWatched = true;
    /// How many commands are done.
    std::size_t m_done = 0;
};

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    History(data, std::min<std::size_t>(size, 128 * stepSize)).run();
    return 0;
}
