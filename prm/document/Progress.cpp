#include "prm/document/Progress.h"

#include <limits>

namespace Prm::document {

namespace {

const Progress::Display* shownBy = nullptr;

} // namespace

void Progress::setDisplay(const Display* display) {
    shownBy = display;
}

Progress::Progress(const char* work, std::size_t total)
    : m_work(work), m_total(total), m_next(shownBy ? 0 : std::numeric_limits<std::size_t>::max()) {}

Progress::~Progress() {
    if (shownBy)
        shownBy->hide();
}

void Progress::show() {
    m_next = shownBy->show(m_work, m_begun, m_total);
}

} // namespace Prm::document
