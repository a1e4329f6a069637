#include "tool/DifferencesText.h"

#include "tool/Streams.h"

namespace Tool {

QByteArray plainText(const std::vector<Difference>& differences) {
    QString text;
    for (const Difference& difference : differences)
        text += printable(difference.message) + '\n';
    return text.toUtf8();
}

} // namespace Tool
