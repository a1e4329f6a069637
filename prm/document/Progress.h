#pragma once

#include "prm/Export.h"

#include <cstddef>

namespace Prm::document {

/// How far a piece of work has come, for a program that shows it.
class PRM_EXPORT Progress {
public:
    /// What a program shows, and when it is over. Called by the thread that does the work.
    struct Display {
        /// "reading", for example, and how many of the pieces are begun. Returns at which piece to be called again.
        std::size_t (*show)(const char* work, std::size_t begun, std::size_t total);
        void (*hide)();
    };

    /// Set once, before any work begins. By default nothing is shown.
    static void setDisplay(const Display* display);

    /// "reading", for example, and how many pieces there are.
    Progress(const char* work, std::size_t total);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

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

} // namespace Prm::document
