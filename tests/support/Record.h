#pragma once

#include <QFile>
#include <gtest/gtest.h>

/// Expects the text of a file below tests/data, which is written anew where PRM_WRITE_RECORDS is in the environment.
inline void expectOnRecord(const char* record, const QString& now) {
    QFile file(QString(PRM_TEST_DATA "/") + record);
    const bool isWritten = qEnvironmentVariableIsSet("PRM_WRITE_RECORDS");
    ASSERT_TRUE(file.open(isWritten ? QIODevice::WriteOnly : QIODevice::ReadOnly));
    if (isWritten)
        file.write(now.toUtf8());
    const QStringList present = now.split('\n');
    const QStringList wanted = isWritten ? present : QString::fromUtf8(file.readAll()).split('\n');
    for (int i = 0; i < wanted.size(); ++i)
        ASSERT_EQ(wanted.at(i).toStdString(), present.value(i).toStdString()) << record << ':' << i + 1;
}
