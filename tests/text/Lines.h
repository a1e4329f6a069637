#pragma once

#include "prm/ProjectFileVersion.h"

#include <QTextStream>
#include <gtest/gtest.h>

#include <string>

namespace Prm {

/// What a parameter or a set writes behind a prefix, with or without its own name or its subsets' prefixes.
template <class Writer> std::string lines(Writer& writer, const QString& prefix = {}, bool with = true) {
    QString text;
    QTextStream stream(&text);
    EXPECT_TRUE(writer.bStreamOut(stream, prefix, with));
    return text.toStdString();
}

inline ProjectFileVersion version(quint32 number = StreamVersion::latest) {
    ProjectFileVersion version;
    version.streamVersion = number;
    return version;
}

} // namespace Prm
