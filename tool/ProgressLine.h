#pragma once

namespace Tool {

/// Shows how far a piece of work has come, from one second after the program has begun, in a line of the terminal on
/// standard error that goes away at its end. Without a terminal it shows nothing.
void showProgress();

/// From now on, the line also says which of several files this is.
void showFileInProgress(int number, int count);

/// Takes the line away, where another one is to be written.
void hideProgress();

} // namespace Tool
