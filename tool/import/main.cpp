#include "tool/import/ImportCommand.h"

#include <QCoreApplication>
#include <QFile>
#include <QTextStream>

#include <cstdio>

int main(int count, char** values) {
    const QCoreApplication application(count, values);
    QTextStream err(stderr);
    QFile out;
    if (!out.open(stdout, QIODevice::WriteOnly))
        return 2;
    return Tool::runImport(QCoreApplication::arguments(), out, err);
}
