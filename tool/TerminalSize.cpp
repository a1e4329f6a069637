#include "tool/TerminalSize.h"

#include <QtGlobal>

#include <sys/ioctl.h>
#include <unistd.h>

namespace Tool {

int terminalColumns() {
    constexpr int usual = 80;
    winsize size{};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0)
        return size.ws_col;
    const int columns = qEnvironmentVariableIntValue("COLUMNS");
    return columns > 0 ? columns : usual;
}

bool wantsColours() {
    return isatty(STDOUT_FILENO) == 1 && qEnvironmentVariableIsEmpty("NO_COLOR");
}

} // namespace Tool
