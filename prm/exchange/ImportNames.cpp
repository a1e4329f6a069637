#include "prm/exchange/ImportNames.h"

#include "prm/document/Problem.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <array>

namespace Prm::document {

namespace {

// Every line of what is below a name contains it.
const int longestName = 60;

struct Name {
    const char* kind;
    const char* key;
    const char* name;
};

/// The first match counts; an empty kind is any.
const Name memberNames[] = {
    {"tr", "a", "anchor_point"},
    {"tr", "or", "orientation"},
    {"tr", "rx", "rotation_x"},
    {"tr", "ry", "rotation_y"},
    {"tr", "rz", "rotation_z"},
    {"tr", "s", "scale"},
    {"tr", "sk", "skew"},
    {"tr", "sa", "skew_axis"},
    {"tr", "so", "start_opacity"},
    {"tr", "eo", "end_opacity"},
    {"layer", "tm", "time_remap"},
    {"layer", "ks", "transform"},
    {"layer", "ef", "effects"},
    {"layer", "masksProperties", "masks"},
    {"layer", "sy", "styles"},
    {"layer", "t", "text"},
    {"layer", "au", "audio"},
    {"layer", "pe", "perspective"},
    {"mask", "x", "expansion"},
    {"mask", "f", "feather"},
    {"mask", "pt", "path"},
    {"text", "a", "animators"},
    {"text", "d", "document"},
    {"text", "m", "alignment"},
    {"text", "p", "path"},
    {"animator", "a", "style"},
    {"animator", "s", "selector"},
    {"selector", "s", "start"},
    {"selector", "e", "end"},
    {"selector", "o", "offset"},
    {"selector", "a", "amount"},
    {"selector", "xe", "ease_high"},
    {"selector", "ne", "ease_low"},
    {"selector", "sm", "smoothness"},
    {"style", "a", "anchor_point"},
    {"style", "s", "scale"},
    {"style", "sk", "skew"},
    {"style", "sa", "skew_axis"},
    {"style", "t", "tracking"},
    {"style", "fc", "fill_colour"},
    {"style", "sc", "stroke_colour"},
    {"style", "sw", "stroke_width"},
    {"rc", "s", "size"},
    {"rc", "r", "roundness"},
    {"el", "s", "size"},
    {"sr", "pt", "points"},
    {"sr", "ir", "inner_radius"},
    {"sr", "is", "inner_roundness"},
    {"sr", "or", "outer_radius"},
    {"sr", "os", "outer_roundness"},
    {"sh", "ks", "path"},
    {"st", "d", "dashes"},
    {"st", "ml2", "miter_limit"},
    {"gs", "d", "dashes"},
    {"gs", "ml2", "miter_limit"},
    {"gs", "s", "start_point"},
    {"gs", "e", "end_point"},
    {"gs", "h", "highlight_length"},
    {"gs", "a", "highlight_angle"},
    {"gf", "s", "start_point"},
    {"gf", "e", "end_point"},
    {"gf", "h", "highlight_length"},
    {"gf", "a", "highlight_angle"},
    {"tm", "s", "start"},
    {"tm", "e", "end"},
    {"tm", "o", "offset"},
    {"rp", "c", "copies"},
    {"rp", "o", "offset"},
    {"rp", "tr", "transform"},
    {"rd", "r", "radius"},
    {"pb", "a", "amount"},
    {"op", "a", "amount"},
    {"op", "ml", "miter_limit"},
    {"tw", "a", "angle"},
    {"tw", "c", "centre"},
    {"zz", "s", "amplitude"},
    {"zz", "r", "frequency"},
    {"zz", "pt", "points"},
    {"fl", "c", "colour"},
    {"st", "c", "colour"},
    {"", "g", "gradient"},
    {"", "o", "opacity"},
    {"", "p", "position"},
    {"", "r", "rotation"},
    {"", "w", "width"},
};

/// What objects of a kind, or in a list, are called.
const Name kindNames[] = {
    {"gr", "", "group"},
    {"rc", "", "rectangle"},
    {"el", "", "ellipse"},
    {"sr", "", "star"},
    {"sh", "", "path"},
    {"fl", "", "fill"},
    {"st", "", "stroke"},
    {"gf", "", "gradient_fill"},
    {"gs", "", "gradient_stroke"},
    {"tm", "", "trim"},
    {"tr", "", "transform"},
    {"rp", "", "repeater"},
    {"rd", "", "rounded_corners"},
    {"mm", "", "merge"},
    {"pb", "", "pucker_and_bloat"},
    {"tw", "", "twist"},
    {"zz", "", "zigzag"},
    {"op", "", "offset_path"},
    {"", "ef", "effect"},
    {"", "sy", "style"},
    {"", "shapes", "shape"},
    {"", "it", "shape"},
    {"", "masksProperties", "mask"},
    {"", "a", "animator"},
    {"", "d", "dash"},
};

template <std::size_t count> const Name* find(const Name (&table)[count], const QString& kind, const QString& key) {
    const auto matches = [&](const Name& name) {
        return (*name.kind == '\0' || kind == QLatin1String(name.kind)) &&
               (*name.key == '\0' || key == QLatin1String(name.key));
    };
    const auto* const found = std::find_if(std::begin(table), std::end(table), matches);
    return found == std::end(table) ? nullptr : found;
}

} // namespace

QString ImportNames::take(const QString& wanted) {
    QString name = wanted.isEmpty() ? "unnamed" : wanted.left(longestName);
    for (QChar& c : name) {
        if (!c.isLetterOrNumber() && !c.isMark() && c != '-')
            c = '_';
    }
    QString candidate = name;
    for (int& count = m_counts[name]; m_taken.contains(candidate);)
        candidate = message("%1_%2", name, ++count + 1);
    m_taken.insert(candidate);
    return candidate;
}

QString onOneLine(const QString& name) {
    QString line = name;
    for (QChar& c : line) {
        if (c.category() == QChar::Other_Control)
            c = ' ';
    }
    return line;
}

QString kindOfObject(const QJsonObject& object, const QString& key) {
    QString type = object.value(QLatin1String("ty")).toString();
    if (!type.isEmpty())
        return type;
    static const QHash<QString, QString> kinds{{"ks", "tr"}, {"t", "text"}, {"masksProperties", "mask"}};
    return kinds.value(key, key);
}

QString memberName(const QString& kind, const QString& key) {
    const Name* const found = find(memberNames, kind, key);
    return found ? found->name : key;
}

QString kindName(const QString& kind, const QString& listKey) {
    const Name* const found = find(kindNames, kind, listKey);
    return found ? found->name : listKey;
}

QString memberKey(const QString& kind, const QString& name) {
    for (const Name& row : memberNames) {
        const bool isOfKind = *row.kind == '\0' || kind == QLatin1String(row.kind);
        if (isOfKind && name == QLatin1String(row.name) && memberName(kind, row.key) == name)
            return row.key;
    }
    return memberName(kind, name) == name ? name : QString();
}

QString kindOfName(const QString& name) {
    const auto isIt = [&](const Name& row) { return *row.key == '\0' && name == QLatin1String(row.name); };
    const auto* const found = std::find_if(std::begin(kindNames), std::end(kindNames), isIt);
    return found == std::end(kindNames) ? QString() : found->kind;
}

QString layerTypeName(int type) {
    static const std::array<const char*, 7> names{"precomposition", "solid", "image", "null", "shape", "text", "audio"};
    if (type == 13)
        return "camera";
    const bool known = type >= 0 && type < static_cast<int>(names.size());
    return QString::fromLatin1(known ? names.at(static_cast<std::size_t>(type)) : "layer");
}

bool isColour(const QString& kind, const QString& key) {
    return memberName(kind, key).endsWith(QLatin1String("colour"));
}

QString componentName(int index, bool colour) {
    const QLatin1String letters(colour ? "rgba" : "xyzw");
    return index < letters.size() ? QString(letters.at(index)) : QString::number(index + 1);
}

bool isListWithoutSet(const QString& kind, const QString& key) {
    return key == QLatin1String("shapes") || key == QLatin1String("it") ||
           (key == QLatin1String("ef") && kind != QLatin1String("layer"));
}

bool isBookkeeping(const QString& key) {
    static const std::array<const char*, 11> keys{"nm", "mn", "ty", "ix", "ind", "cix", "np", "id", "ln", "cl", "v"};
    return std::any_of(keys.begin(), keys.end(), [&](const char* name) { return key == QLatin1String(name); });
}

QString jsonPathOf(const QString& path, const QString& key) {
    const auto isPlain = [](QChar c) { return c.unicode() < 128 && (c.isLetterOrNumber() || c == '_'); };
    if (!key.isEmpty() && std::all_of(key.begin(), key.end(), isPlain))
        return path.isEmpty() ? key : path + '.' + key;
    // A list of one text, written as JSON, is the quoted key in brackets.
    return path + QString::fromUtf8(QJsonDocument(QJsonArray{key}).toJson(QJsonDocument::Compact));
}

} // namespace Prm::document
