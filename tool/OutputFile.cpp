#include "tool/OutputFile.h"

#include "tool/Problem.h"
#include "tool/Streams.h"

#include <QFile>
#include <QFileInfo>

#include <pthread.h>

namespace Tool {

HeldSignals::HeldSignals() {
    sigset_t ends;
    sigemptyset(&ends);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        sigaddset(&ends, signal);
    pthread_sigmask(SIG_BLOCK, &ends, &m_former);
}

HeldSignals::~HeldSignals() {
    pthread_sigmask(SIG_SETMASK, &m_former, nullptr);
}

OutputFile::OutputFile(const QString& name) : m_name(name), m_file(name) {}

void OutputFile::write(const QByteArray& bytes) {
    m_bytes = bytes;
    if (!isReplaced())
        return;
    // The file that is to take the other's place would stay behind.
    m_held.emplace();
    if (!m_file.open(QIODevice::WriteOnly) || m_file.write(bytes) != bytes.size() || !m_file.flush())
        fail(m_file);
}

void OutputFile::commit() {
    if (m_file.isOpen() && !m_file.commit())
        fail(m_file);
    m_held.reset();
    if (m_name == QLatin1String("-"))
        print(m_bytes);
    else if (!isReplaced())
        writeDirectly();
}

bool OutputFile::isReplaced() const {
    const QFileInfo info(m_name);
    return m_name != QLatin1String("-") && (!info.exists() || info.isFile() || info.isDir());
}

void OutputFile::writeDirectly() {
    QFile file(m_name);
    if (!file.open(QIODevice::WriteOnly) || file.write(m_bytes) != m_bytes.size() || !file.flush())
        fail(file);
}

void OutputFile::fail(const QIODevice& device) const {
    throw Problem(QStringLiteral("%1: cannot be written: %2").arg(m_name, device.errorString()));
}

} // namespace Tool
