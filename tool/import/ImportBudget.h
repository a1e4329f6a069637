#pragma once

#include <QString>
#include <QtGlobal>

#include <stdexcept>

namespace Tool {

/// Ends an import; `what` stands at `place`, a JSON path.
class ImportFailure : public std::runtime_error {
public:
    ImportFailure(const QString& place, const QString& what);
    const QString& place() const { return m_place; }

private:
    QString m_place;
};

/// Keeps what an import makes in proportion to what it reads: long names over deep trees would multiply.
class ImportBudget {
public:
    explicit ImportBudget(qint64 inputSize);

    /// Throws `ImportFailure` with the place when the bytes are no longer in proportion.
    void spend(qint64 bytes, const QString& place);

private:
    qint64 m_left;
};

} // namespace Tool
