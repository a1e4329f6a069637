#pragma once

#include "tool/Problem.h"

namespace Tool {

/// How much text a result may have. A long name that stands in many rows, or a long text at many frames, is small in a
/// file and shared in memory until it is written.
class TextLimit {
public:
    /// Throws `Problem` when that is too much.
    void add(qint64 characters) {
        constexpr qint64 most = 1 << 27;
        m_characters += characters;
        if (m_characters > most)
            throw Problem(QStringLiteral("more than %1 characters of text, as by long names in many rows").arg(most));
    }

private:
    qint64 m_characters = 0;
};

} // namespace Tool
