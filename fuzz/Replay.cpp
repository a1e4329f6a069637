// Gives every file below the folders and files that are named to a fuzz target, as libFuzzer does with its corpus.

#include "fuzz/Fuzz.h"

#include <QDirIterator>
#include <QFile>

#include <vector>

namespace {

bool replay(const QString& name) {
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "%s: %s\n", qPrintable(name), qPrintable(file.errorString()));
        return false;
    }
    const QByteArray bytes = file.readAll();
    // A copy of its own size, so that reading behind it is seen.
    const std::vector<std::uint8_t> input(bytes.begin(), bytes.end());
    std::fprintf(stderr, "%s\n", qPrintable(name));
    LLVMFuzzerTestOneInput(input.data(), input.size());
    return true;
}

int replayBelow(const QString& name) {
    int count = QFileInfo(name).isDir() ? 0 : replay(name);
    for (QDirIterator files(name, QDir::Files); files.hasNext(); ++count)
        if (!replay(files.next()))
            return 0;
    return count;
}

} // namespace

int main(int argc, char** argv) {
    int count = 0;
    for (int i = 1; i < argc; ++i)
        count += replayBelow(QString::fromLocal8Bit(argv[i]));
    std::printf("%d inputs\n", count);
    return count > 0 ? 0 : 1;
}
