#include "tests/support/QtCallers.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <dlfcn.h>
#include <execinfo.h>

bool isBeneathQtCaller() {
    // How the symbols of QObject::connect, of QSettings and of qWarning begin.
    const char* const callers[] = {"_ZN7QObject7connect", "_ZN9QSettings", "_ZN6QDebug"};
    std::array<void*, 100> addresses{};
    const int depth = backtrace(addresses.data(), static_cast<int>(addresses.size()));
    return std::any_of(addresses.begin(), addresses.begin() + depth, [&](void* address) {
        Dl_info found{};
        const bool isNamed = dladdr(address, &found) != 0 && found.dli_sname;
        return isNamed && std::any_of(std::begin(callers), std::end(callers), [&](const char* caller) {
                   return std::strncmp(found.dli_sname, caller, std::strlen(caller)) == 0;
               });
    });
}
