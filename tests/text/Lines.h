#pragma once

#include "prm/ProjectFileVersion.h"

#include <QTextStream>
#include <gtest/gtest.h>

#include <string>

/// What a parameter or a set writes behind a prefix, with or without its own name or its subsets' prefixes.
template <class Writer> std::string lines(const Writer& writer, const QString& prefix = {}, bool with = true) {
    QString text;
    QTextStream stream(&text);
    EXPECT_TRUE(writer.bStreamOut(stream, prefix, with));
    return text.toStdString();
}

inline Prm::ProjectFileVersion version(quint32 number = Prm::StreamVersion::latest) {
    Prm::ProjectFileVersion version;
    version.streamVersion = number;
    return version;
}
