#include "prm/TimeSpan.h"

#include <QDebug>

#include <algorithm>
#include <utility>

namespace Prm {

namespace {

bool beginsBefore(const TimeSpan& a, const TimeSpan& b) {
    return a.from < b.from || (a.from == b.from && a.withFrom && !b.withFrom);
}

bool endsBefore(const TimeSpan& a, const TimeSpan& b) {
    return a.to < b.to || (a.to == b.to && !a.withTo && b.withTo);
}

/// Whether a time between the two is in neither of them.
bool isApartFrom(const TimeSpan& earlier, const TimeSpan& later) {
    return earlier.to < later.from || (earlier.to == later.from && !earlier.withTo && !later.withFrom);
}

} // namespace

TimeSpan TimeSpan::intersected(const TimeSpan& other) const {
    const TimeSpan& begin = beginsBefore(*this, other) ? other : *this;
    const TimeSpan& end = endsBefore(*this, other) ? *this : other;
    const TimeSpan both{begin.from, end.to, begin.withFrom, end.withTo};
    return isEmpty() || other.isEmpty() || both.isEmpty() ? none() : both;
}

bool operator==(const TimeSpan& a, const TimeSpan& b) {
    if (a.isEmpty() || b.isEmpty())
        return a.isEmpty() && b.isEmpty();
    return a.from == b.from && a.to == b.to && a.withFrom == b.withFrom && a.withTo == b.withTo;
}

TimeSpans::TimeSpans(std::initializer_list<TimeSpan> spans) {
    for (const TimeSpan& span : spans)
        add(span);
}

void TimeSpans::add(const TimeSpan& span) {
    if (span.isEmpty())
        return;
    const TimeSpan* const first = firstNotBefore(span);
    const TimeSpan* last = first;
    TimeSpan united = span;
    for (; last != end() && !isApartFrom(span, *last); ++last) {
        const TimeSpan& begin = beginsBefore(*last, united) ? *last : united;
        const TimeSpan& end = endsBefore(*last, united) ? united : *last;
        united = {begin.from, end.to, begin.withFrom, end.withTo};
    }
    m_spans.replace(static_cast<int>(first - begin()), static_cast<int>(last - begin()), united);
}

TimeSpans& TimeSpans::operator|=(const TimeSpans& other) {
    if (this == &other)
        return *this;
    for (const TimeSpan& span : other)
        add(span);
    return *this;
}

/// The first span that ends at or after the beginning of another one.
const TimeSpan* TimeSpans::firstNotBefore(const TimeSpan& span) const {
    return std::lower_bound(begin(), end(), span, isApartFrom);
}

bool TimeSpans::contains(Time time) const {
    const TimeSpan* const found = firstNotBefore(TimeSpan::at(time));
    return found != end() && found->contains(time);
}

bool TimeSpans::intersects(const TimeSpan& span) const {
    for (const TimeSpan* found = firstNotBefore(span); found != end() && !isApartFrom(span, *found); ++found) {
        if (found->intersects(span))
            return true;
    }
    return false;
}

TimeSpans TimeSpans::intersected(const TimeSpan& span) const {
    TimeSpans both;
    for (const TimeSpan* found = firstNotBefore(span); found != end() && !isApartFrom(span, *found); ++found)
        both.add(found->intersected(span));
    return both;
}

QDebug operator<<(QDebug debug, const TimeSpan& span) {
    const QDebugStateSaver saver(debug);
    if (span.isEmpty())
        return debug.nospace().noquote() << "{}";
    return debug.nospace().noquote() << (span.withFrom ? '[' : '(') << span.from << ", " << span.to
                                     << (span.withTo ? ']' : ')');
}

QDebug operator<<(QDebug debug, const TimeSpans& spans) {
    const QDebugStateSaver saver(debug);
    if (spans.isEmpty())
        return debug << TimeSpan();
    const char* join = "";
    for (const TimeSpan& span : spans)
        debug.nospace().noquote() << std::exchange(join, " + ") << span;
    return debug;
}

} // namespace Prm
