#include "prm/exchange/LottieObject.h"

#include "prm/ParameterSet.h"

#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>

namespace Prm::document {

namespace {

const QLatin1String nameKey("nm");
const QLatin1String typeKey("ty");
const QLatin1String effectsKey("ef");
const QLatin1String effectValueKey("v");
const QLatin1String expressionKey("x");

// Roughly the memory of the library; each line of the text has a path, too.
const qint64 bytesOfSet = 1000;
const qint64 bytesOfParameter = 1200;
const qint64 bytesOfCompound = 3000;
const qint64 bytesOfKeyframe = 150;
const qint64 bytesOfEntry = 150;

/// A vector whose components are properties of their own.
bool isSeparated(const QJsonObject& object) {
    return object.value(QLatin1String("s")).toBool() && object.value(QLatin1String("x")).isObject();
}

bool isGradient(const QJsonObject& object) {
    return object.value(QLatin1String("k")).toObject().contains(QLatin1String("k"));
}

bool isStructure(const QJsonValue& value) {
    return value.isObject() || value.isArray();
}

QJsonObject without(QJsonObject object, QLatin1String key) {
    object.remove(key);
    return object;
}

} // namespace

void LottieObject::add(const ImportEntry& entry) {
    m_budget.spend(bytesOfEntry + 3LL * (entry.jsonPath.size() + entry.parameter.size()), entry.jsonPath);
    m_report.add(entry);
}

void LottieObject::hold(const QString& jsonPath, const QString& parameter) {
    add({jsonPath, parameter, ImportEntry::Held, {}, false});
}

void LottieObject::change(const QString& jsonPath, const QString& parameter, const QString& reason) {
    add({jsonPath, parameter, ImportEntry::Changed, reason, false});
}

void LottieObject::leaveOut(const QString& jsonPath, const QString& reason) {
    add({jsonPath, {}, ImportEntry::LeftOut, reason, false});
}

void LottieObject::leaveOutSetting(const QString& jsonPath) {
    add({jsonPath, {}, ImportEntry::LeftOut, "a setting that does not animate", true});
}

void LottieObject::reportName(const QJsonObject& object, const QString& jsonPath, const ImportedSet& set) {
    m_budget.spend(bytesOfSet + set.path().size(), jsonPath);
    const QString name = object.value(nameKey).toString();
    if (onOneLine(name) != name)
        change(jsonPathOf(jsonPath, nameKey), set.path(), "line breaks in the name become blanks");
}

void LottieObject::importMembers(const QJsonObject& object, const Place& place) {
    for (auto member = object.begin(); member != object.end(); ++member) {
        const QString key = member.key();
        const QJsonValue value = member.value();
        if (!isBookkeeping(key) || isStructure(value))
            importMember(key, value, {place.set, jsonPathOf(place.jsonPath, key), place.kind});
    }
}

void LottieObject::importMember(const QString& key, const QJsonValue& value, const Place& place) {
    if (value.isArray())
        return importList(key, value.toArray(), place);
    if (!value.isObject())
        return leaveOutSetting(place.jsonPath);
    const QJsonObject object = value.toObject();
    if (isGradient(object))
        return importGradient(object, place.jsonPath);
    const QString name = memberName(place.kind, key);
    if (isSeparated(object))
        return importSeparated(object, place, name);
    if (isLottieProperty(object))
        return importProperty(object, place, name, isColour(place.kind, key));
    importNamedObject(key, object, place);
}

void LottieObject::importNamedObject(const QString& key, const QJsonObject& object, const Place& place) {
    const QString name = memberName(place.kind, key);
    ImportedSet set = place.set.makeSubset(name, object.value(nameKey).toString());
    reportName(object, place.jsonPath, set);
    // Members of texts are distinguished by their names.
    const bool named = name == QLatin1String("style") || name == QLatin1String("selector");
    importMembers(object, {set, place.jsonPath, named ? name : kindOfObject(object, key)});
    if (!set.isEmpty())
        place.set.add(set);
}

void LottieObject::importProperty(const QJsonObject& json, const Place& place, const QString& name, bool colour) {
    const bool hasExpression = json.value(expressionKey).isString();
    if (hasExpression)
        leaveOut(jsonPathOf(place.jsonPath, expressionKey), "an expression");
    LottieProperty property;
    try {
        property = readLottieProperty(json);
    } catch (const Problem& obstacle) {
        return leaveOut(place.jsonPath, obstacle.text());
    }
    if (hasExpression)
        property.changes.prepend("held as it is without its expression");
    if (property.components.size() > 1)
        m_budget.spend(bytesOfCompound, place.jsonPath);
    for (const LottieCurve& curve : property.components) {
        const qint64 lines = 3 + curve.keyframes.size();
        const qint64 path = place.set.path().size() + name.size();
        m_budget.spend(bytesOfParameter + bytesOfKeyframe * curve.keyframes.size() + path * lines, place.jsonPath);
    }
    const LottieLosses losses = lossesInText(property);
    m_report.addMovedKeyframes(losses.movedKeyframes, losses.farthestMove);
    const QStringList changes = property.changes + losses.texts;
    const QString path = addComponents(property, place.set, name, colour);
    if (changes.isEmpty())
        hold(place.jsonPath, path);
    else
        change(place.jsonPath, path, changes.join("; "));
}

QString LottieObject::addComponents(const LottieProperty& property, ImportedSet& set, const QString& name,
                                    bool colour) {
    if (property.components.size() == 1)
        return set.addCurve(name, property.components.front());
    ImportedSet vector = set.makeCompound(name);
    int index = 0;
    for (const LottieCurve& curve : property.components)
        vector.addCurve(componentName(index++, colour), curve);
    set.add(vector);
    return vector.path();
}

void LottieObject::importSeparated(const QJsonObject& object, const Place& place, const QString& name) {
    m_budget.spend(bytesOfCompound, place.jsonPath);
    const QJsonObject dimensions = without(object, QLatin1String("s"));
    const bool isVector = std::all_of(dimensions.begin(), dimensions.end(), [](const QJsonValue& value) {
        return !isStructure(value) || (value.isObject() && isLottieProperty(value.toObject()));
    });
    ImportedSet group = isVector ? place.set.makeCompound(name) : place.set.makeSubset(name);
    importMembers(dimensions, {group, place.jsonPath, {}});
    if (!group.isEmpty())
        place.set.add(group);
}

void LottieObject::importGradient(const QJsonObject& object, const QString& jsonPath) {
    const QString colours = jsonPathOf(jsonPath, "k");
    leaveOut(colours, "the colours of a gradient");
    if (object.value(QLatin1String("k")).toObject().value(expressionKey).isString())
        leaveOut(jsonPathOf(colours, expressionKey), "an expression");
}

void LottieObject::importList(const QString& key, const QJsonArray& list, const Place& place) {
    if (std::none_of(list.begin(), list.end(), isStructure)) {
        if (!list.isEmpty())
            leaveOutSetting(place.jsonPath);
        return;
    }
    if (isListWithoutSet(place.kind, key))
        return importElements(key, list, place);
    ImportedSet set = place.set.makeSubset(memberName(place.kind, key));
    m_budget.spend(bytesOfSet, place.jsonPath);
    importElements(key, list, {set, place.jsonPath, place.kind});
    if (!set.isEmpty())
        place.set.add(set);
}

void LottieObject::importElements(const QString& key, const QJsonArray& list, const Place& place) {
    for (int i = 0; i < list.size(); ++i) {
        const QJsonValue element = list.at(i);
        const Place here{place.set, message("%1[%2]", place.jsonPath, i), place.kind};
        if (element.isObject())
            importElement(key, element.toObject(), here);
        else
            importMember(key, element, here);
    }
}

void LottieObject::importElement(const QString& key, const QJsonObject& element, const Place& place) {
    const QString title = element.value(nameKey).toString();
    const QString kind = place.kind == QLatin1String("text") ? "animator" : kindOfObject(element, key);
    const QString name = title.isEmpty() ? kindName(kind, key) : title;
    const QJsonValue value = element.value(effectValueKey);
    if (value.isObject() && isLottieProperty(value.toObject())) {
        // An element that is all about one value needs no set of its own.
        const bool colour = key == effectsKey && element.value(typeKey).toInt() == 2;
        const Place at{place.set, jsonPathOf(place.jsonPath, effectValueKey), {}};
        importProperty(value.toObject(), at, name, colour);
        return importMembers(without(element, effectValueKey), place);
    }
    if (isLottieProperty(element))
        return importProperty(element, place, name, false);
    ImportedSet set = place.set.makeSubset(name, title);
    reportName(element, place.jsonPath, set);
    importMembers(element, {set, place.jsonPath, kind});
    place.set.add(set);
}

} // namespace Prm::document
