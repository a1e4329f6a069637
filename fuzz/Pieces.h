#pragma once

// Pieces of project text, of which lines of every kind come about, whole and broken.

#include "tests/world/Arguments.h"

#include <QByteArray>
#include <QList>

namespace Fuzz {

inline const QList<QByteArray> pieces =
    QByteArray("a|b.|a.b.|view[1].|view[0].|view[4000000000].|keyframes|.append( |Key( |BezierKey( |1|-2.5|1e39|nan|, |"
               "Linear|Constant| ) )|value=|views=[0, 1]|views=[7|hidden=1|before=Linear|after=|MasterParameterId=a.b|"
               "name=\"x\"|\"t\\\"|0 1|=|.|\n|\n|\r\n|\n\n|FileVersion.value=3002\n|FileVersion.value=2019\n|"
               "ProductName.value=\"p\"\n|ProductVersion.value=\"1.2\"\n|FileTimestamp.value=\"\"\n|\xEF\xBB\xBF|"
               "\xFF\xC0|NUL|a.keyframes.append( Key( 1, 2, Linear ) )\n|a.b.view[3].value=1\n|"
               "a.keyframes.append( Key( 5.0,  x, Custom2 ) )\r\n|a.keyframes.append( Key( inf, 5, Linear ) )\n|"
               "a.view[1].keyframes.append( BezierKey( 3, 2, 0, 0.123456789, 1, 1 ) )\n|"
               "a.view[1].keyframes.append( Key( -2, 4, Linear ) )\n|a.keyframes.append( Key( 1, 3, Linear ) )\n|"
               "a.value=2\n|a.views=[1, 0]\n|a.MasterParameterId=b\n|b.MasterParameterId=a\n")
        .split('|');

/// Until the choices end, or for so many pieces.
inline QByteArray pieced(Worlds::Choices& choices, int most) {
    QByteArray text;
    for (int i = 0; i < most && !choices.atEnd(); ++i) {
        const QByteArray& piece = pieces.at(choices.below(pieces.size()));
        text += piece == "NUL" ? QByteArray(1, 0) : piece;
    }
    return text;
}

} // namespace Fuzz
