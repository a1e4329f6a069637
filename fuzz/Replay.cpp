// Gives a fuzz target the files below the folders that are named, as libFuzzer does with its corpus; or, after
// `--random`, so many inputs of a fixed random stream. An input that breaks something is made small and kept.

#include "fuzz/Fuzz.h"

#include <QDirIterator>
#include <QFile>

#include <random>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>
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

Input randomInput(unsigned int number) {
    std::mt19937 random(number);
    Input input(random() % 4096);
    for (std::uint8_t& byte : input)
        byte = static_cast<std::uint8_t>(random());
    return input;
}

/// Whether a process of its own comes to its end.
template <class Act> bool survives(const Act& act) {
    const pid_t child = fork();
    if (child == 0) {
        act();
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return status == 0;
}

bool breaks(const Input& input) {
    return !survives([&] {
        alarm(20);
        static_cast<void>(std::freopen("/dev/null", "w", stderr));
        LLVMFuzzerTestOneInput(input.data(), input.size());
    });
}

/// Leaves bytes out, in ever shorter runs, for as long as it still breaks something.
Input shrunk(Input input) {
    for (std::size_t run = 1024; run > 0; run /= 2) {
        for (std::size_t end = input.size() / run * run; end > 0; end -= run) {
            Input fewer = input;
            const auto last = fewer.begin() + static_cast<std::ptrdiff_t>(end);
            fewer.erase(last - static_cast<std::ptrdiff_t>(run), last);
            if (breaks(fewer))
                input = fewer;
        }
    }
    return input;
}

int runRandom(unsigned int first, unsigned int count) {
    auto* const shared = static_cast<unsigned int*>(
        mmap(nullptr, sizeof(unsigned int), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    const bool survived = survives([&] {
        for (*shared = first; *shared != first + count; ++*shared) {
            alarm(60);
            const Input input = randomInput(*shared);
            LLVMFuzzerTestOneInput(input.data(), input.size());
        }
    });
    if (survived) {
        std::printf("%u random inputs\n", count);
        return 0;
    }
    const Input least = shrunk(randomInput(*shared));
    const QString name = QStringLiteral("broken_%1").arg(*shared);
    QFile file(name);
    static_cast<void>(file.open(QIODevice::WriteOnly));
    file.write(reinterpret_cast<const char*>(least.data()), static_cast<qint64>(least.size()));
    std::fprintf(stderr, "\nRandom input %u breaks something; what is left of it is in %s.\n", *shared,
                 qPrintable(name));
    return 1;
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
