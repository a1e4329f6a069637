// Animations of other programs.

#include "tool/Arguments.h"
#include "tool/Commands.h"
#include "tool/Problem.h"
#include "tool/import/ImportCommand.h"

#include <QFile>
#include <QTextStream>

#include <cstdio>

namespace Tool {

int importAnimation(Arguments& arguments) {
    QTextStream err(stderr);
    QFile out;
    if (!out.open(stdout, QIODevice::WriteOnly))
        throw Problem(QStringLiteral("standard output is closed"));
    return runImport(arguments.words(), out, err);
}

} // namespace Tool
