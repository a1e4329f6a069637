// A program that does not link to the library opens a plugin which does, while threads are running already.

#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <thread>

int main(int, char** arguments) {
    std::atomic<double (*)()> dimmedRed{nullptr};
    std::array<double, 4> values{};
    std::array<std::thread, 4> threads;
    for (std::size_t i = 0; i < threads.size(); ++i) {
        threads[i] = std::thread([&, i] {
            while (!dimmedRed)
                std::this_thread::yield();
            values[i] = dimmedRed.load()();
        });
    }
    void* const plugin = dlopen(arguments[1], RTLD_NOW | RTLD_LOCAL);
    void* const found = plugin ? dlsym(plugin, "dimmedRed") : nullptr;
    if (!found) {
        std::fprintf(stderr, "%s\n", dlerror());
        std::_Exit(1);
    }
    dimmedRed = reinterpret_cast<double (*)()>(found);
    bool right = true;
    for (std::size_t i = 0; i < threads.size(); ++i) {
        threads[i].join();
        right = right && values[i] == 0.5;
    }
    return right ? 0 : 1;
}
