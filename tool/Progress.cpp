#include "tool/Progress.h"

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

bool isWatched() {
    return isatty(STDERR_FILENO) == 1;
}

} // namespace

Progress::Progress(const char* work, std::size_t total)
    : m_work(work), m_total(total), m_next(isWatched() ? 0 : std::numeric_limits<std::size_t>::max()) {
    m_timer.start();
}

Progress::~Progress() {
    if (m_shownAt > 0)
        std::fputs(emptyLine, stderr);
}

void Progress::show() {
    // The clock is asked often enough, but not for each piece.
    m_next = m_begun + m_total / (hundredth * hundredth);
    const qint64 now = m_timer.elapsed();
    if (now < (m_shownAt > 0 ? m_shownAt + betweenTwo : untilFirst))
        return;
    m_shownAt = now;
    std::fprintf(stderr, "%sprm: %s, %zu %%", emptyLine, m_work, (m_begun - 1) * hundredth / m_total);
    std::fflush(stderr);
}

} // namespace Tool
