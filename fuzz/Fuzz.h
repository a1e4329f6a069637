#pragma once

// What all fuzz targets share: the entry that libFuzzer and the replay driver call, and how a broken promise ends them.

#include <QByteArray>
#include <QList>
#include <QLocale>
#include <QString>

#include <algorithm>
#include <clocale>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace Fuzz {

/// Warnings are part of what bad input leads to. Decimal commas must reach no file.
inline const QtMessageHandler prepared = [] {
    std::setlocale(LC_ALL, "de_DE.UTF-8");
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    return qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& message) {
        if (type != QtFatalMsg)
            return;
        std::fprintf(stderr, "%s\n", qPrintable(message));
        std::abort();
    });
}();

[[noreturn]] inline void fail(const char* promise, const QString& more = {}) {
    std::fprintf(stderr, "Broken: %s\n%s\n", promise, qPrintable(QString(more).replace(QChar(0), "\\0")));
    std::abort();
}

#define HOLD(promise) ((promise) ? void() : Fuzz::fail(#promise))

/// With what follows a NUL, and with a byte-order mark, which Qt would remove at the beginning. The size is
/// never -1, which the compiler cannot know.
inline QString textOf(const QByteArray& bytes) {
    const QByteArray marked = ':' + bytes;
    return QString::fromUtf8(marked.constData(), std::max(0, marked.size())).mid(1);
}

/// The lines of one that the other does not have.
inline QByteArray linesMissing(const QByteArray& one, const QByteArray& other) {
    const QList<QByteArray> others = other.split('\n');
    QByteArray missing;
    for (const QByteArray& line : one.split('\n'))
        missing += others.contains(line) ? QByteArray() : line + '\n';
    return missing;
}

inline void same(const char* what, const QByteArray& a, const QByteArray& b) {
    if (a != b)
        fail(what, textOf("--- only before\n" + linesMissing(a, b) + "--- only now\n" + linesMissing(b, a)));
}

inline void intact(const QString& broken) {
    if (!broken.isEmpty())
        fail("an invariant", broken);
}

/// The input, of which nothing is shared: overruns are seen.
inline QByteArray bytesOf(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), static_cast<int>(size)};
}

} // namespace Fuzz
