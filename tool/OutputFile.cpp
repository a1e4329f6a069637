#include "tool/OutputFile.h"

#include "tool/Problem.h"
#include "tool/Streams.h"

#include <QFile>
#include <QFileInfo>

#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

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

OutputFile::OutputFile(const QString& name) : m_name(name), m_file(name) {
    if (name.isEmpty())
        throw Problem("the name of the file to write is empty; - is standard output");
}

void OutputFile::write(const QByteArray& bytes) {
    m_bytes = bytes;
    if (!isReplaced())
        return;
    // Otherwise the file that is to replace the other one would be left.
    m_held.emplace();
    if (!m_file.open(QIODevice::WriteOnly))
        fail(m_file);
    keepOwnerAndMode();
    if (m_file.write(bytes) != bytes.size() || !m_file.flush())
        fail(m_file);
}

/// Of a file that is replaced, as far as this user may.
void OutputFile::keepOwnerAndMode() {
    struct stat former {};
    if (stat(QFile::encodeName(m_name).constData(), &former) != 0)
        return;
    const bool hasGroup = fchown(m_file.handle(), static_cast<uid_t>(-1), former.st_gid) == 0;
    const bool hasOwner = fchown(m_file.handle(), former.st_uid, static_cast<gid_t>(-1)) == 0;
    mode_t mode = former.st_mode & (hasOwner && hasGroup ? 07777 : 0777);
    if (!hasGroup)
        mode = (mode & ~static_cast<mode_t>(S_IRWXG)) | ((mode & S_IRWXO) << 3); // Another group is like all others.
    fchmod(m_file.handle(), mode);
}

void OutputFile::commit() {
    if (m_file.isOpen() && !m_file.commit())
        fail(m_file);
    m_held.reset();
    if (m_name == "-")
        print(m_bytes);
    else if (!isReplaced())
        writeDirectly();
}

bool OutputFile::isReplaced() const {
    const QFileInfo info(m_name);
    return m_name != "-" && (!info.exists() || info.isFile() || info.isDir());
}

void OutputFile::writeDirectly() {
    QFile file(m_name);
    if (!file.open(QIODevice::WriteOnly) || file.write(m_bytes) != m_bytes.size() || !file.flush())
        fail(file);
}

void OutputFile::fail(const QIODevice& device) const {
    throw Problem("%1: cannot be written: %2", m_name, device.errorString());
}

bool isSameFile(const QString& a, const QString& b) {
    const QFileInfo one(a);
    const QFileInfo other(b);
    const bool sameName = one.absoluteFilePath() == other.absoluteFilePath();
    return a != "-" && (sameName || (one.exists() && other.exists() && one == other));
}

} // namespace Tool
