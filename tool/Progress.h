#pragma once

#include <cstddef>

namespace Tool {

/// Shows how far a piece of work has come, from one second after the first one has begun, in a line of the terminal on
/// standard error that goes away at its end. Without a terminal it shows nothing.
class Progress {
public:
    /// "reading", for example, and how many pieces there are.
    Progress(const char* work, std::size_t total);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Takes the line away, where another one is to be written.
    static void hide();

    /// One more piece is begun.
    void step() {
        if (++m_begun > m_next)
            show();
    }

private:
    void show();

    const char* m_work;
    std::size_t m_total;
    std::size_t m_begun = 0;
    std::size_t m_next;
};

} // namespace Tool
