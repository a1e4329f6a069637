#include "tool/Frames.h"

#include "prm/document/Budget.h"
#include "prm/document/ValueText.h"
#include "tool/Streams.h"

#include <algorithm>
#include <cmath>

namespace Tool {

namespace {

const QString dots = "..";

double readNumber(const QString& text) {
    bool isNumber = false;
    const double number = text.trimmed().toDouble(&isNumber);
    if (!isNumber || !std::isfinite(number) || !Prm::Time::fromDouble(number).isValid())
        throw WrongUse("'%1' is not a frame, a number such as 12.5", text);
    return number;
}

/// Every time is counted from the first, so that steps such as 0.1 do not add up their errors. The small part lets a
/// range end on its last frame where the division falls just short of it.
void addRange(QVector<Prm::Time>& times, double first, double last, double step, Budget& budget) {
    if (step == 0 || (last - first) / step < 0)
        throw WrongUse("step %1 does not lead from %2 to %3", step, first, last);
    const double steps = std::floor((last - first) / step * (1 + 1e-12) + 1e-9);
    budget.spend<WrongUse>(static_cast<qint64>(std::min<double>(steps, Most::frames)) + 1);
    for (int i = 0; i <= static_cast<int>(steps); ++i)
        times.append(Prm::Time::fromDouble(first + i * step));
}

void addFrames(QVector<Prm::Time>& times, const QString& text, Budget& budget) {
    const int range = text.indexOf(dots);
    if (range < 0) {
        budget.spend<WrongUse>(1);
        times.append(Prm::Time::fromDouble(readNumber(text)));
        return;
    }
    const QString end = text.mid(range + dots.size());
    const int cross = end.indexOf('x');
    const double step = cross < 0 ? 1 : readNumber(end.mid(cross + 1));
    addRange(times, readNumber(text.left(range)), readNumber(end.left(cross)), step, budget);
}

} // namespace

QVector<Prm::Time> readFrames(const QString& text) {
    QVector<Prm::Time> times;
    Budget budget(Most::frames, "more than %1 frames");
    for (const QString& part : text.split(','))
        addFrames(times, part, budget);
    return times;
}

QVector<Prm::Time> readTimesFile(const QString& file) {
    QVector<Prm::Time> times;
    int number = 0;
    Budget budget(Most::frames, "more than %1 frames");
    for (const QString& line : QString::fromUtf8(readInput(file)).split('\n')) {
        ++number;
        const QString frames = line.simplified().replace(' ', ',');
        try {
            for (const QString& part : frames.split(',', Qt::SkipEmptyParts))
                addFrames(times, part, budget);
        } catch (const WrongUse& problem) {
            throw Problem("%1:%2: %3", inputName(file), number, problem.text());
        }
    }
    if (times.isEmpty())
        throw Problem("%1: has no frames", inputName(file));
    return times;
}

std::pair<Prm::Time, Prm::Time> readRange(const QString& text) {
    constexpr double narrowest = 1e-9;
    const int range = text.indexOf(dots);
    if (range < 0)
        throw WrongUse("'%1' is not a range A..B", text);
    const double first = readNumber(text.left(range));
    const double last = readNumber(text.mid(range + dots.size()));
    const double length = last - first;
    if (!std::isfinite(length) || !(length > narrowest * std::max(std::abs(first), std::abs(last))))
        throw WrongUse("nothing lies between the frames of '%1'", text);
    return {Prm::Time::fromDouble(first), Prm::Time::fromDouble(last)};
}

Prm::View readView(const QString& text) {
    bool isNumber = false;
    const Prm::View view(text.toUInt(&isNumber));
    if (!isNumber || !view.isValid())
        throw WrongUse("'%1' is not a view, a number from 0 to 2147483647", text);
    return view;
}

bool isFrame(Prm::Time time) {
    return time.isValid() && time.toDouble() >= -Prm::Time::LARGEST_VALID_VALUE;
}

double writtenFrame(Prm::Time time) {
    return decimalFrame(Prm::writtenTime(time).toDouble());
}

Prm::Time decimalTime(Prm::Time time) {
    return Prm::Time::fromDouble(decimalFrame(time.toDouble()));
}

Prm::Time fileTime(Prm::Time decimal) {
    const Prm::Time time = Prm::Time::fromFloat(static_cast<float>(decimal.toDouble()));
    return decimalTime(time) == decimal ? time : decimal;
}

double numberOption(const Arguments& arguments, const QString& option, double otherwise) {
    if (!arguments.has(option))
        return otherwise;
    bool isNumber = false;
    const double number = arguments.value(option).toDouble(&isNumber);
    if (!isNumber || !std::isfinite(number))
        throw WrongUse("--%1: '%2' is not a number", option, arguments.value(option));
    return number;
}

Prm::Time timeOption(const Arguments& arguments, const QString& option, Prm::Time otherwise) {
    if (!arguments.has(option))
        return otherwise;
    const Prm::Time time = Prm::Time::fromDouble(numberOption(arguments, option));
    if (!isFrame(time))
        throw WrongUse("--%1: '%2' is not a frame, a number up to 2147483645", option, arguments.value(option));
    return time;
}

Prm::Time keyframeOption(const Arguments& arguments, const QString& option, Prm::Time otherwise) {
    const Prm::Time time = timeOption(arguments, option, otherwise);
    return arguments.has(option) ? Prm::Time::fromFloat(static_cast<float>(time.toDouble())) : time;
}

Prm::View viewOption(const Arguments& arguments, Prm::View otherwise) {
    return arguments.has("view") ? readView(arguments.value("view")) : otherwise;
}

} // namespace Tool
