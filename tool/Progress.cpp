#include "tool/Progress.h"

#include <QElapsedTimer>

#include <cstdio>
#include <limits>
#include <unistd.h>

namespace Tool {

namespace {

constexpr qint64 untilFirst = 1000;
constexpr qint64 betweenTwo = 100;
constexpr std::size_t hundredth = 100;
/// The start of the line, then nothing up to its end.
constexpr const char* emptyLine = "\r\x1b[K";

bool isOnScreen = false;
qint64 shownAt = 0;

/// Since the first work has begun, whatever is being done now.
qint64 elapsed() {
    static const QElapsedTimer timer = [] {
        QElapsedTimer started;
        started.start();
        return started;
    }();
    return timer.elapsed();
}

bool isWatched() {
    static const bool isTerminal = isatty(STDERR_FILENO) == 1;
    return isTerminal;
}

} // namespace

Progress::Progress(const char* work, std::size_t total)
    : m_work(work), m_total(total), m_next(isWatched() ? 0 : std::numeric_limits<std::size_t>::max()) {
    elapsed();
}

Progress::~Progress() {
    hide();
}

void Progress::hide() {
    if (isOnScreen)
        std::fputs(emptyLine, stderr);
    isOnScreen = false;
}

void Progress::show() {
    // The clock is asked often enough, but not for each piece.
    m_next = m_begun + m_total / (hundredth * hundredth);
    const qint64 now = elapsed();
    if (now < (shownAt > 0 ? shownAt + betweenTwo : untilFirst))
        return;
    shownAt = now;
    std::fprintf(stderr, "%sprm: %s, %zu %%", emptyLine, m_work, (m_begun - 1) * hundredth / m_total);
    std::fflush(stderr);
    isOnScreen = true;
}

} // namespace Tool
