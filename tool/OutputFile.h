#pragma once

#include <QByteArray>
#include <QSaveFile>
#include <QString>

#include <csignal>
#include <optional>

namespace Tool {

/// Keeps the signals by which a user ends a program waiting. What was sent meanwhile counts afterwards.
class HeldSignals {
public:
    HeldSignals();
    ~HeldSignals();
    HeldSignals(const HeldSignals&) = delete;
    HeldSignals& operator=(const HeldSignals&) = delete;

private:
    sigset_t m_former{};
};

/// Where a command writes: a file that is in its place when it is committed, whole, and stays as it was otherwise,
/// without anything left beside it. Standard output ("-"), devices and pipes are written when they are committed.
///
/// Throws `Problem` with one line that names the file.
class OutputFile {
public:
    explicit OutputFile(const QString& name);

    void write(const QByteArray& bytes);
    void commit();

private:
    bool isReplaced() const;
    void keepOwnerAndMode();
    void writeDirectly();
    [[noreturn]] void fail(const QIODevice& device) const;

    QString m_name;
    QByteArray m_bytes;
    QSaveFile m_file;
    std::optional<HeldSignals> m_held;
};

/// Whether both are names of one file, which is not a standard stream.
bool isSameFile(const QString& a, const QString& b);

} // namespace Tool
