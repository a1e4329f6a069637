#include "tool/import/ImportBudget.h"

namespace Tool {

namespace {

// A short static property is 13 bytes of JSON and more than a kilobyte as a parameter; small files need room to start
// with.
const qint64 bytesPerByte = 200;
const qint64 bytesAtLeast = 256LL << 20;
const qint64 bytesAtMost = 1LL << 30;

} // namespace

ImportFailure::ImportFailure(const QString& place, const QString& what)
    : std::runtime_error(what.toStdString()), m_place(place) {}

ImportBudget::ImportBudget(qint64 inputSize)
    : m_left(qMin(bytesAtMost, qMax(bytesAtLeast, inputSize * bytesPerByte))) {}

void ImportBudget::spend(qint64 bytes, const QString& place) {
    m_left -= bytes;
    if (m_left < 0)
        throw ImportFailure(place.left(120),
                            QStringLiteral("the import ends here, because it would take too much memory"));
}

} // namespace Tool
