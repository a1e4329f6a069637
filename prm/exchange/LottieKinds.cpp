#include "prm/exchange/LottieKinds.h"

#include "prm/exchange/ImportNames.h"

#include <algorithm>

namespace Prm::document {

// Without its path a mask hides nothing.
const char* const lottieMaskRest =
    R"("mode":"n","inv":false,"pt":{"a":0,"k":{"c":true,"v":[[0,0]],"i":[[0,0]],"o":[[0,0]]}})";
const char* const lottieTextRest =
    R"("d":{"k":[{"t":0,"s":{"t":"","f":"","s":12,"j":0,"tr":0,"lh":14,"ls":0,"fc":[0,0,0]}}]})";
const char* const lottieSolidRest = R"("sc":"#000000","sw":1,"sh":1)";
const char* const lottieMediaRest = R"("refId":"empty")";
const char* const lottieMedia = R"({"id":"empty","w":1,"h":1,"u":"","p":"data:,","e":1})";
const char* const lottieFonts = R"({"list":[{"fName":"","fFamily":"sans-serif","fStyle":"Regular","ascent":75}]})";

namespace {

constexpr LottieKind kinds[] = {
    {"sh", "", "", R"("ks":{"a":0,"k":{"c":false,"v":[],"i":[],"o":[]}})"},
    {"mm", "", "", R"("mm":1)"},
    {"fl", "colour opacity", "c o", R"("r":1)"},
    {"st", "colour opacity width dashes miter_limit", "c o w", R"("lc":1,"lj":1,"ml":4)"},
    {"tr",
     "anchor_point opacity orientation position rotation rotation_x rotation_y rotation_z scale skew skew_axis "
     "start_opacity end_opacity",
     "", ""},
    {"el", "position size", "p s", ""},
    {"rc", "position size roundness", "p s r", ""},
    {"sr", "position rotation points inner_radius inner_roundness outer_radius outer_roundness", "p r pt or os ir is",
     R"("sy":1)"},
    {"tm", "start end offset", "s e o", R"("m":1)"},
    {"rd", "radius", "r", ""},
    {"rp", "copies offset transform", "c o", R"("m":1)"},
    {"pb", "amount", "a", ""},
    {"op", "amount miter_limit", "a ml", R"("lj":1)"},
    {"tw", "angle centre", "a c", ""},
    {"zz", "amplitude frequency points", "s r pt", ""},
    {"gf", "opacity start_point end_point highlight_length highlight_angle", "o s e",
     R"("t":1,"r":1,"g":{"p":2,"k":{"a":0,"k":[0,0,0,0,1,1,1,1]}})"},
    {"gs", "opacity width start_point end_point highlight_length highlight_angle dashes miter_limit", "o w s e",
     R"("t":1,"lc":1,"lj":1,"ml":4,"g":{"p":2,"k":{"a":0,"k":[0,0,0,0,1,1,1,1]}})"},
    {"gr", "", "", ""},
};

bool canHave(const LottieKind& kind, const QStringList& members) {
    const QStringList own = QString(kind.members).split(' ');
    return std::all_of(members.begin(), members.end(), [&](const QString& name) { return own.contains(name); });
}

} // namespace

const LottieKind* lottieKind(const QString& type) {
    const auto* const found =
        std::find_if(std::begin(kinds), std::end(kinds), [&](const LottieKind& kind) { return type == kind.type; });
    return found == std::end(kinds) ? nullptr : found;
}

const LottieKind* lottieKindWith(const QStringList& members, const QString& title) {
    int number = 0;
    const LottieKind* const named =
        lottieKind(kindOfName(nameWithoutNumber(ImportNames().take(title.toLower()), number)));
    if (named && canHave(*named, members))
        return named;
    const auto* const found = std::find_if(std::begin(kinds), std::end(kinds),
                                           [&](const LottieKind& kind) { return canHave(kind, members); });
    return found == std::end(kinds) ? nullptr : found;
}

QString nameWithoutNumber(const QString& name, int& number) {
    const int dash = name.lastIndexOf('_');
    bool isNumber = false;
    number = name.mid(dash + 1).toInt(&isNumber);
    if (dash > 0 && isNumber && number > 0)
        return name.left(dash);
    number = 1;
    return name;
}

} // namespace Prm::document
