#include "tests/support/QtCallers.h"

#include <QDebug>
#include <QObject>
#include <QSettings>

#include <algorithm>
#include <array>
#include <cstring>
#include <dlfcn.h>
#include <execinfo.h>

const QtCaller qtCallers[] = {
    {"connect", "_ZN7QObject7connect",
     [] {
         QObject object;
         QObject::connect(&object, &QObject::objectNameChanged, [] {});
     }},
    {"QSettings", "_ZN9QSettings", [] { QSettings(QStringLiteral("organisation"), QStringLiteral("program")).sync(); }},
    {"qWarning", "_ZN6QDebug", [] { qWarning() << QStringLiteral("text"); }},
};

bool isBeneathQtCaller() {
    std::array<void*, 100> addresses{};
    const int depth = backtrace(addresses.data(), static_cast<int>(addresses.size()));
    return std::any_of(addresses.begin(), addresses.begin() + depth, [](void* address) {
        Dl_info found{};
        return dladdr(address, &found) != 0 && found.dli_sname &&
               std::any_of(std::begin(qtCallers), std::end(qtCallers), [&](const QtCaller& caller) {
                   return std::strncmp(found.dli_sname, caller.symbol, std::strlen(caller.symbol)) == 0;
               });
    });
}
