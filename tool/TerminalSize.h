#pragma once

namespace Tool {

/// How wide the terminal is on standard output; without one what COLUMNS says, or 80.
int terminalColumns();

/// Whether standard output is a terminal, and its user has nothing against colours (NO_COLOR).
bool wantsColours();

} // namespace Tool
