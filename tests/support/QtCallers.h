#pragma once

/// A function of Qt 5 that ends the process, or is not itself any more, when an allocation beneath it fails.
struct QtCaller {
    const char* name;
    /// How its symbols begin.
    const char* symbol;
    /// Calls it, so that a test can show what happens.
    void (*call)();
};

/// All of them. No failure is injected beneath one, for that would be a test of Qt.
extern const QtCaller qtCallers[3]; // NOLINT(cppcoreguidelines-avoid-c-arrays,modernize-avoid-c-arrays)

/// Whether the calling function runs beneath one of them.
bool isBeneathQtCaller();
