#include "tool/import/OutputFile.h"

#include <QFileInfo>

namespace Tool {

OutputFile::OutputFile(const QString& name, QIODevice& out) : m_name(name), m_file(name), m_special(name), m_out(out) {}

bool OutputFile::write(const QByteArray& bytes) {
    QIODevice* const target = open();
    return target && target->write(bytes) == bytes.size();
}

bool OutputFile::commit() {
    if (m_file.isOpen())
        return m_file.commit();
    // Only now does the system tell whether it took what was kept back.
    auto* const file = isStandardStream() ? qobject_cast<QFileDevice*>(&m_out) : &m_special;
    return !file || file->flush();
}

QString OutputFile::error() const {
    return QStringLiteral("%1: cannot be written: %2").arg(m_name, device().errorString());
}

bool OutputFile::isSpecial() const {
    const QFileInfo info(m_name);
    return info.exists() && !info.isFile() && !info.isDir();
}

bool OutputFile::isStandardStream() const {
    return m_name == QLatin1String("-");
}

QIODevice* OutputFile::open() {
    if (isStandardStream())
        return &m_out;
    if (isSpecial())
        return m_special.open(QIODevice::WriteOnly) ? &m_special : nullptr;
    return m_file.open(QIODevice::WriteOnly) ? &m_file : nullptr;
}

const QIODevice& OutputFile::device() const {
    if (isStandardStream())
        return m_out;
    if (isSpecial())
        return m_special;
    return m_file;
}

} // namespace Tool
