// Histories of commands over parameters of all kinds, compounds, sets and masters: what is undone, and what is done
// again, is exactly as it was. Beside that, compounds are the union of their parts, in keyframes, values and views.

#include "fuzz/Calls.h"
#include "prm/ProjectFile.h"

#include <QTextStream>

#include <cmath>
#include <memory>

using namespace Prm;
using namespace Fuzz;

namespace {

constexpr int stepSize = 16;
const View asked[] = {View(0), View(1), View(2), View(3), View(5), View(2147483646)};
const double askedTimes[] = {-1.5, 0, 1.25, 3, 20};

/// Names after a blank each in PRM_FUZZ_WITHOUT: parts of the world, and of the names of calls, that are left out.
bool isLeftOut(const char* name) {
    static const QList<QByteArray> without = qgetenv("PRM_FUZZ_WITHOUT").split(' ');
    return std::any_of(without.begin(), without.end(),
                       [=](const QByteArray& part) { return !part.isEmpty() && QByteArray(name).contains(part); });
}

template <class... More> void trace(const char* what, const More&... more) {
    static const bool isWanted = qEnvironmentVariableIsSet("PRM_FUZZ_TRACE");
    if (!isWanted)
        return;
    QString line;
    QTextStream stream(&line);
    static_cast<void>(((stream << what) << ... << more));
    std::fprintf(stderr, "%s\n", qPrintable(line));
}

QString shown(const Context& at) {
    return QStringLiteral("%1@%2").arg(at.time.isValid() ? at.time.toDouble() : NAN).arg(at.view.id());
}

// What a parameter is, exactly.

QString exact(double value) {
    return QString::number(value, 'g', 17);
}
QString exact(const QPointF& value) {
    return exact(value.x()) + '/' + exact(value.y());
}
QString exact(const QString& value) {
    return value;
}

/// With the values of its parts for a compound.
QString exact(const QVariant& value) {
    if (value.type() == QVariant::PointF)
        return exact(value.toPointF());
    QString all = value.toString();
    for (const QVariant& part : value.value<QVector<QVariant>>())
        all += ' ' + exact(part);
    return all;
}

template <class T> bool addStorage(QTextStream& out, const P& parameter) {
    const auto* const typed = dynamic_cast<const Parameter<T>*>(&parameter);
    if (!typed)
        return false;
    const QString name = parameter.scriptName();
    out << name << " default kind " << static_cast<quint32>(typed->defaultInterpolation()) << '\n';
    for (const View view : std::vector<View>(parameter.viewList())) {
        out << name << " view " << view.id() << " static " << exact(typed->staticValue(view)) << '\n';
        for (unsigned i = 0; i < parameter.keyframeCount(view); ++i) {
            const KeyframeData<T> key = typed->keyframe(i, view);
            const IType& curve = key.interpolationData;
            out << name << " view " << view.id() << " key " << exact(key.time.toDouble()) << " = " << exact(key.value)
                << ' ' << static_cast<quint32>(curve.interpolation);
            for (const double number : {curve.x1, curve.y1, curve.x2, curve.y2})
                out << ' ' << exact(number);
            out << '\n';
        }
    }
    return true;
}

void addValues(QTextStream& out, const P& parameter) {
    for (const View view : asked) {
        out << parameter.scriptName() << " shows in " << view.id();
        for (const double time : askedTimes) {
            out << ' ' << exact(parameter.variantValue(Context(Time::fromDouble(time), view), std::nothrow));
        }
        out << '\n';
    }
}

void addSettings(QTextStream& out, const P& parameter) {
    out << parameter.scriptName() << " hidden " << parameter.isHidden() << " locked " << parameter.isLocked()
        << " keyed " << parameter.isKeyframed() << " splittable " << parameter.splittable() << " split "
        << parameter.isSplit() << " before " << static_cast<quint32>(parameter.extrapolationBefore()) << " after "
        << static_cast<quint32>(parameter.extrapolationAfter()) << " pending " << parameter.pendingMasterParameterId()
        << " tied to " << (parameter.masterParameter() ? parameter.masterParameter()->scriptName() : QString())
        << " ties";
    for (const P* tied : parameter.constrainedParameters())
        out << ' ' << tied->scriptName();
    out << " views";
    for (const View view : std::vector<View>(parameter.viewList()))
        out << ' ' << view.id();
    out << " of " << parameter.numViews() << '\n';
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
        const unsigned int together = isLeftOut("together") ? 0 : static_cast<unsigned>(first.below(8));
        m_isWatched = first.below(3) > 0;
        m_world = std::make_unique<World>(first, World::Options{10, together, first.yes()});
        trace("together ", together, m_world->options.isObserved ? ", observed" : "");
        for (int i = 0; i < setCount; ++i)
            m_root.addParameterSet(*m_world->set(i));
        m_file.setTimeOfWriting(QDateTime(QDate(2021, 3, 1), QTime(), Qt::UTC));
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
        const bool isNested = listing >= setCount && dynamic_cast<CompoundParameter*>(&part);
        const bool isTwice = listing >= setCount && m_parts.contains(&part);
        if ((isNested && isLeftOut("nested")) || (isTwice && isLeftOut("twice")))
            return;
        trace("set ", listing, " lists ", part.scriptName());
        m_world->set(listing)->addParameter(m_world->slots[static_cast<std::size_t>(m_world->numberOf(&part))].owner);
        if (listing >= setCount)
            m_parts.insert(&part);
    }

    static void tie(P& master, P& tied) {
        if (isLeftOut("masters"))
            return;
        trace(qPrintable(master.scriptName()), " ties ", tied.scriptName());
        master.bAddConstrainedParameter(&tied);
    }

    static void interpolateViews(P& own, int mode) {
        auto* const number = dynamic_cast<Parameter<double>*>(&own);
        if (!number || isLeftOut("interpolated"))
            return;
        trace(qPrintable(own.scriptName()), " interpolates views ", mode);
        number->setViewInterpolation({static_cast<MVInterpolationParams::Mode>(mode)});
    }

    static void setValue(P& own, const A& a) {
        trace(qPrintable(own.scriptName()), " = ", a.value, " at ", shown(a.at));
        own.setVariantValue(fitting(own, a.value), a.at, std::nothrow);
    }

    static void edit(P& own, P& other, Choices& step) {
        const int row = step.below(static_cast<int>(std::size(edits)));
        const A a(step);
        trace(qPrintable(own.scriptName()), " edit ", row, ' ', other.scriptName(), " at ", shown(a.at), " view ",
              a.view.id(), " to ", shown(a.to), " value ", a.value, " number ", a.number, " kind ", a.kind,
              a.yes ? " yes" : " no");
        edits[row](own, other, a);
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
        constexpr int first = static_cast<int>(std::size(commands));
        constexpr int all = first + static_cast<int>(std::size(moreCommands));
        const int row = step.below(all);
        const Offer& offer = row < first ? commands[row] : moreCommands[row - first];
        P& own = *parameter(step.below(m_world->parameterCount));
        P& other = *parameter(step.below(m_world->parameterCount));
        A a(step);
        aim(a, own, step.below(16));
        if (isLeftOut(offer.name))
            return;
        if (!m_pending)
            m_pending = std::make_unique<Command>();
        trace(qPrintable(own.scriptName()), ": ", offer.name, ", other ", other.scriptName(), " at ", shown(a.at),
              " view ", a.view.id(), " to ", shown(a.to), " value ", a.value, " number ", a.number, " kind ", a.kind,
              a.yes ? " yes" : " no");
        offer.add(*m_pending, own, other, a);
    }

    /// Mostly at a keyframe that there is.
    static void aim(A& a, const P& own, int choice) {
        const QVector<Context> keyframes = own.allKeyframes();
        if (choice < 6 || keyframes.isEmpty())
            return;
        a.at = keyframes.at(choice % keyframes.size());
        a.view = a.at.view;
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
            same(what, former, state());
    }

    QByteArray state() const {
        intact(detail::verify(m_root));
        QString text;
        QTextStream out(&text);
        for (int i = 0; i < m_world->parameterCount; ++i) {
            const P& one = *parameter(i);
            intact(detail::verify(one));
            addSettings(out, one);
            if (const auto* const compound = dynamic_cast<const CompoundParameter*>(&one)) {
                for (const View view : asked)
                    compareWithParts(*compound, view);
                // What is remembered of one view must be right later.
                compareWithParts(*compound, asked[m_done % 3]);
                continue;
            }
            HOLD(addStorage<double>(out, one) || addStorage<int>(out, one) || addStorage<bool>(out, one) ||
                 addStorage<QString>(out, one) || addStorage<QPointF>(out, one));
            addValues(out, one);
        }
        out.flush();
        return text.toUtf8() + m_file.text();
    }

    const std::uint8_t* m_data;
    std::size_t m_left;
    std::unique_ptr<World> m_world;
    QSet<const P*> m_parts;
    ParameterSet m_root;
    ProjectFile m_file{m_root};
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
