#pragma once

#include <QStringList>

namespace Prm::document {

/// A kind of what layers draw with: shapes, fills, and what changes them.
struct LottieKind {
    const char* type;
    /// The names of all that it can have, by which it is recognised.
    const char* members;
    /// The keys of properties that players read without asking.
    const char* needed;
    /// JSON members that project text has not, such as the path itself, made up.
    const char* rest;
};

/// Null for a type that is not known.
const LottieKind* lottieKind(const QString& type);
/// The first kind that can have all these members, if it has the title's name; then any. Null for none.
const LottieKind* lottieKindWith(const QStringList& members, const QString& title);

/// "path" of "path_2", and 2; 1 where there is no number.
QString nameWithoutNumber(const QString& name, int& number);

/// The path of a mask, and the words of a text layer, made up.
extern const char* const lottieMaskRest;
extern const char* const lottieTextRest;
/// The fonts of such texts.
extern const char* const lottieFonts;
/// What a layer of one colour, of a picture or of a sound shows, and the asset that the last two name.
extern const char* const lottieSolidRest;
extern const char* const lottieMediaRest;
extern const char* const lottieMedia;

} // namespace Prm::document
