#include "tool/ProgressLine.h"

#include "prm/document/Progress.h"

#include <QElapsedTimer>

#include <cstdio>
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
int fileNumber = 0;
int fileCount = 0;

/// Since the program has begun, whatever is being done now.
QElapsedTimer sinceStart;

std::size_t show(const char* work, std::size_t begun, std::size_t total) {
    // The clock is asked often enough, but not for each piece.
    const std::size_t next = begun + total / (hundredth * hundredth);
    const qint64 now = sinceStart.elapsed();
    if (now < (shownAt > 0 ? shownAt + betweenTwo : untilFirst))
        return next;
    shownAt = now;
    std::fprintf(stderr, "%sprm: ", emptyLine);
    if (fileCount > 0)
        std::fprintf(stderr, "file %d of %d, ", fileNumber, fileCount);
    std::fprintf(stderr, "%s, %zu %%", work, (begun - 1) * hundredth / total);
    std::fflush(stderr);
    isOnScreen = true;
    return next;
}

} // namespace

void showProgress() {
    static constexpr Prm::document::Progress::Display line{show, hideProgress};
    sinceStart.start();
    if (isatty(STDERR_FILENO) == 1)
        Prm::document::Progress::setDisplay(&line);
}

void showFileInProgress(int number, int count) {
    fileNumber = number;
    fileCount = count;
}

void hideProgress() {
    if (isOnScreen)
        std::fputs(emptyLine, stderr);
    isOnScreen = false;
}

} // namespace Tool
