#pragma once

#include <QFile>
#include <QSaveFile>
#include <QString>

class QByteArray;

namespace Tool {

/// Where a command writes: a file that is in its place when it is committed, whole, and stays as it was otherwise; or
/// the device `out` for the name "-". Devices and pipes with a name are not replaced but written to.
class OutputFile {
public:
    OutputFile(const QString& name, QIODevice& out);

    bool write(const QByteArray& bytes);
    bool commit();
    /// What went wrong, in one line that begins with the name.
    QString error() const;

private:
    bool isSpecial() const;
    bool isStandardStream() const;
    QIODevice* open();
    const QIODevice& device() const;

    QString m_name;
    QSaveFile m_file;
    QFile m_special;
    QIODevice& m_out;
};

} // namespace Tool
