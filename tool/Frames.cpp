#include "tool/Frames.h"

#include "tool/Problem.h"
#include "tool/Streams.h"

#include <QStringList>

#include <algorithm>
#include <cmath>

namespace Tool {

namespace {

constexpr int most = 1000000;

double readNumber(const QString& text) {
    bool isNumber = false;
    const double number = text.trimmed().toDouble(&isNumber);
    if (!isNumber || !std::isfinite(number) || !Prm::Time::fromDouble(number).isValid())
        throw WrongUse(QStringLiteral("'%1' is not a frame").arg(text));
    return number;
}

void checkCount(double count) {
    if (count > most)
        throw WrongUse(QStringLiteral("more than %1 frames").arg(most));
}

/// Every time is counted from the first, so that steps such as 0.1 do not add up their errors. The small part lets a
/// range end on its last frame where the division falls just short of it.
void addRange(QVector<Prm::Time>& times, double first, double last, double step) {
    if (step == 0 || (last - first) / step < 0)
        throw WrongUse(QStringLiteral("step %1 does not lead from %2 to %3").arg(step).arg(first).arg(last));
    const double steps = std::floor((last - first) / step * (1 + 1e-12) + 1e-9);
    checkCount(times.size() + steps + 1);
    for (int i = 0; i <= static_cast<int>(steps); ++i)
        times.append(Prm::Time::fromDouble(first + i * step));
}

void addFrames(QVector<Prm::Time>& times, const QString& text) {
    const QLatin1String dots("..");
    const int range = text.indexOf(dots);
    if (range < 0) {
        times.append(Prm::Time::fromDouble(readNumber(text)));
        checkCount(times.size());
        return;
    }
    const QString end = text.mid(range + dots.size());
    const int cross = end.indexOf(QLatin1Char('x'));
    const double step = cross < 0 ? 1 : readNumber(end.mid(cross + 1));
    addRange(times, readNumber(text.left(range)), readNumber(end.left(cross)), step);
}

} // namespace

QVector<Prm::Time> readFrames(const QString& text) {
    QVector<Prm::Time> times;
    for (const QString& part : text.split(QLatin1Char(',')))
        addFrames(times, part);
    return times;
}

QVector<Prm::Time> readTimesFile(const QString& file) {
    const QStringList parts = QString::fromUtf8(readInput(file))
                                  .simplified()
                                  .replace(QLatin1Char(' '), QLatin1Char(','))
                                  .split(QLatin1Char(','), Qt::SkipEmptyParts);
    if (parts.isEmpty())
        throw Problem(QStringLiteral("%1: has no frames").arg(file));
    try {
        return readFrames(parts.join(QLatin1Char(',')));
    } catch (const WrongUse& problem) {
        throw Problem(QStringLiteral("%1: ").arg(file) + QString::fromUtf8(problem.what()));
    }
}

std::pair<Prm::Time, Prm::Time> readRange(const QString& text) {
    constexpr double narrowest = 1e-9;
    const QLatin1String dots("..");
    const int range = text.indexOf(dots);
    if (range < 0)
        throw WrongUse(QStringLiteral("'%1' is not a range A..B").arg(text));
    const double first = readNumber(text.left(range));
    const double last = readNumber(text.mid(range + dots.size()));
    const double length = last - first;
    if (!std::isfinite(length) || !(length > narrowest * std::max(std::abs(first), std::abs(last))))
        throw WrongUse(QStringLiteral("nothing lies between the frames of '%1'").arg(text));
    return {Prm::Time::fromDouble(first), Prm::Time::fromDouble(last)};
}

Prm::View readView(const QString& text) {
    bool isNumber = false;
    const Prm::View view(text.toUInt(&isNumber));
    if (!isNumber || !view.isValid())
        throw WrongUse(QStringLiteral("'%1' is not a view").arg(text));
    return view;
}

} // namespace Tool
