// Gives a fuzz target the files below the folders that are named, as libFuzzer does with its corpus; or, after
// `--random`, so many inputs of a fixed random stream. An input that breaks something is kept, in a file named after
// the program and the number of the input.

#include "fuzz/Fuzz.h"

#include <QDirIterator>
#include <QFile>

#include <cerrno>
#include <random>
#include <sys/time.h>
#include <vector>

namespace {

using Input = std::vector<std::uint8_t>;

bool replay(const QString& name) {
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "%s: %s\n", qPrintable(name), qPrintable(file.errorString()));
        return false;
    }
    const QByteArray bytes = file.readAll();
    // A copy of its own size, so that reading past its end is seen.
    const Input input(bytes.begin(), bytes.end());
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

/// Ends the program if the next input takes a minute of processor time, however busy the machine is.
void limitTime() {
    const itimerval minute{{0, 0}, {60, 0}};
    setitimer(ITIMER_PROF, &minute, nullptr);
}

Input randomInput(unsigned int number) {
    std::mt19937 random(number);
    Input input(random() % 4096);
    for (std::uint8_t& byte : input)
        byte = static_cast<std::uint8_t>(random());
    return input;
}

int runRandom(unsigned int first, unsigned int count) {
    for (unsigned int number = first; number != first + count; ++number) {
        const Input input = randomInput(number);
        // Stays if the process ends here.
        QFile kept(QStringLiteral("%1_%2").arg(program_invocation_short_name).arg(number));
        if (!kept.open(QIODevice::WriteOnly))
            return 1;
        kept.write(reinterpret_cast<const char*>(input.data()), static_cast<qint64>(input.size()));
        kept.close();
        limitTime();
        LLVMFuzzerTestOneInput(input.data(), input.size());
        kept.remove();
    }
    std::printf("%u random inputs\n", count);
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    if (argc > 2 && QByteArray(argv[1]) == "--random")
        return runRandom(argc > 3 ? QByteArray(argv[3]).toUInt() : 1, QByteArray(argv[2]).toUInt());
    int count = 0;
    for (int i = 1; i < argc; ++i)
        count += replayBelow(QString::fromLocal8Bit(argv[i]));
    std::printf("%d inputs\n", count);
    return count > 0 ? 0 : 1;
}
