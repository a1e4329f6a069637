#pragma once

#include "prm/Export.h"
#include "prm/Interpolation.h"
#include "prm/View.h"

#include <QString>
#include <QStringView>

#include <vector>

namespace Prm::detail {

// The characters of project text. Nothing here throws for what a text holds. Positions count UTF-16 code units.

/// The next token of a comma-separated list from `pos` on, without the white space before it; `pos` moves after the
/// comma that ends it. Null when there is none left. A token that opens with a double quote may hold commas, up to a
/// quote that ends the text or is followed by a comma and a blank, and may be empty without being null. An escaped
/// quote comes out as the quote and then the backslash: readers of old files rely on it.
PRM_EXPORT QString getToken(const QString& text, int& pos);

/// Splits "...Key( <time>, <value>, <interpolation> ) )", or "...BezierKey( <time>, <value>, <four numbers> ) )". The
/// value is not parsed: it may contain commas, because only the first and the last (or the fourth from the end)
/// separate. If the result is false, the outputs have no meaning, but `itype` is unchanged unless its own text was
/// read.
PRM_EXPORT bool parseKeyframeDeclaration(QStringView declaration, QStringView& timeText, QStringView& valueText,
                                         IType& itype);
/// The same with copies of the texts.
PRM_EXPORT bool parseKeyframeDeclaration(QString declaration, QString& timeText, QString& valueText, IType& itype);

/// The views listed between the first "[" and the first "]"; what is no number is left out, and noted.
PRM_EXPORT std::vector<View> parseViewList(const QString& text);

/// Escapes, in place, what could break a line or end a quoted text: a backslash and a letter or sign for form feed,
/// double quote, backslash, carriage return, line feed, tab and vertical tab. Everything else stays.
PRM_EXPORT QString& escapeString(QString& s);

/// Undoes `escapeString` in place. A backslash before any other character, or at the end, stays.
PRM_EXPORT QString& unescapeString(QString& s);

} // namespace Prm::detail
