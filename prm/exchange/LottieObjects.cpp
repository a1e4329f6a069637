#include "prm/exchange/LottieObjects.h"

#include "prm/document/Problem.h"
#include "prm/exchange/ImportNames.h"
#include "prm/exchange/LottieCurves.h"
#include "prm/exchange/LottieKinds.h"

#include <QHash>
#include <QJsonObject>

#include <algorithm>

namespace Prm::document {

namespace {

const QLatin1String effectsKey("ef");
const QLatin1String shapesKey("shapes");
const QLatin1String itemsKey("it");

/// Whether a key that is unknown as a name would make something else of an object.
bool isReserved(const QString& key) {
    static const QStringList reserved{"nm", "ty", "v", "k", "sid", "x", "it", "shapes"};
    return reserved.contains(key);
}

/// Whether members of an object of a kind are the elements of a list, in a set of its own.
bool isList(const QString& kind, const QString& key) {
    const bool isStroke = kind == QLatin1String("st") || kind == QLatin1String("gs");
    if (kind == QLatin1String("layer"))
        return key == effectsKey || key == QLatin1String("masksProperties") || key == QLatin1String("sy");
    return (kind == QLatin1String("text") && key == QLatin1String("a")) || (isStroke && key == QLatin1String("d"));
}

/// What players need of the letters that an animator of a text concerns.
void addSelectorParts(Json& selector) {
    for (const char* const key : {"s", "a"}) {
        if (!selector.has(key))
            selector.add(key, lottiePropertyWithoutValue());
    }
}

/// What players need of a text.
void addTextParts(Json& text) {
    text.append(Json::written(lottieTextRest));
    if (!text.has("a"))
        text.add("a", Json::list());
    if (!text.has("p"))
        text.add("p", Json::object());
    if (!text.has("m"))
        text.add("m", Json::object().add("g", 1).add("a", lottiePropertyWithoutValue()));
}

QString dashType(const QString& name) {
    return name.startsWith(QLatin1String("gap")) ? "g" : name.startsWith(QLatin1String("offset")) ? "o" : "d";
}

} // namespace

QString LottieObjects::name(int node) const {
    return toText(m_source.text().node(node).name);
}

QString LottieObjects::title(int node) const {
    const QString quoted = m_source.text().groupName(node);
    return quoted.mid(1, quoted.size() - 2);
}

void LottieObjects::makeUpMedia(Json& layer) {
    layer.append(Json::written(lottieMediaRest));
    m_hasMedia = true;
    ++m_madeUp;
}

QString LottieObjects::vectorName(int node, const QString& path) const {
    const int parent = m_source.text().node(node).parent;
    return isVector(parent) ? path.left(path.lastIndexOf('.')) : path;
}

std::vector<int> LottieObjects::childrenOf(int node) const {
    std::vector<int> children;
    for (const int child : m_source.text().node(node).children) {
        if (m_source.isIncluded(child))
            children.push_back(child);
    }
    return children;
}

std::vector<int> LottieObjects::vectorOf(int group, bool isColour) const {
    // What is no vector never becomes one.
    const std::pair<int, bool> asked(group, isColour);
    if (m_noVectors.count(asked) != 0)
        return {};
    std::vector<int> components = readVector(group, isColour);
    if (components.empty())
        m_noVectors.insert(asked);
    return components;
}

std::vector<int> LottieObjects::readVector(int group, bool isColour) const {
    const ProjectText& text = m_source.text();
    if (text.node(group).isParameter() || text.node(group).nameLine >= 0)
        return {};
    QHash<QString, int> found;
    for (const int child : childrenOf(group)) {
        if (!m_source.isLeft(child) || m_source.curves(child).size() != 1 || !text.node(child).children.empty())
            return {};
        found.insert(name(child), child);
    }
    std::vector<int> components;
    components.reserve(static_cast<std::size_t>(found.size()));
    for (int i = 0; i < found.size(); ++i)
        components.push_back(found.value(componentName(i, isColour), -1));
    const bool isWhole =
        std::find(components.begin(), components.end(), -1) == components.end() && (components.size() > 1 || !isColour);
    return isWhole ? components : std::vector<int>();
}

bool LottieObjects::isVector(int group) const {
    return vectorOf(group, false).size() > 1 || vectorOf(group, true).size() > 1;
}

Json LottieObjects::property(const std::vector<int>& nodes, bool isPosition) {
    std::vector<LottieCurve> curves;
    for (const int node : nodes) {
        curves.insert(curves.end(), m_source.curves(node).begin(), m_source.curves(node).end());
        m_source.setWritten(node);
    }
    if (areTogether(curves) && (curves.size() > 1 || !isPosition))
        return lottieProperty(curves);
    if (!isPosition || curves.size() > 3) {
        m_source.lose(nodes.front(), bringTogether(curves));
        return lottieProperty(curves);
    }
    Json separated = Json::object();
    separated.add("s", Json::written("true"));
    for (std::size_t i = 0; i < curves.size(); ++i)
        separated.add(componentName(static_cast<int>(i), false), lottieProperty({curves[i]}));
    if (curves.size() == 1)
        separated.add("y", lottiePropertyWithoutValue());
    return separated;
}

QStringList LottieObjects::namesBesides(int node, const std::vector<int>& others) const {
    QStringList names;
    // Both are in the order of the children.
    auto other = others.begin();
    for (const int child : node < 0 ? std::vector<int>() : childrenOf(node)) {
        if (other != others.end() && *other == child)
            ++other;
        else
            names += name(child);
    }
    return names;
}

// --- members ---------------------------------------------------------------------------------------------------------

std::vector<int> LottieObjects::addMembers(Json& object, int node, const QString& kind) {
    std::vector<int> others;
    for (const int child : childrenOf(node)) {
        const bool isGroup = !m_source.text().node(child).isParameter() && !isVector(child);
        if (!addMember(object, child, kind) && isGroup)
            others.push_back(child);
    }
    return others;
}

bool LottieObjects::addMember(Json& object, int node, const QString& kind) {
    const QString key = memberKey(kind, name(node));
    if (key.isEmpty() || object.has(key) || (key == name(node) && isReserved(key)))
        return false;
    // A layer has few properties of its own; players ignore others.
    const bool canBeValue = kind != QLatin1String("layer") || key != name(node);
    const bool isPosition = kind == QLatin1String("tr") && key == QLatin1String("p");
    if (m_source.text().node(node).isParameter()) {
        if (canBeValue && m_source.isLeft(node))
            object.add(key, property({node}, isPosition && m_source.curves(node).size() > 1));
        return true;
    }
    const std::vector<int> components = vectorOf(node, isColour(kind, key));
    if (components.empty())
        return addGroup(object, node, key, kind);
    if (canBeValue)
        object.add(key, property(components, isPosition || components.size() == 1));
    return true;
}

bool LottieObjects::addGroup(Json& object, int node, const QString& key, const QString& kind) {
    if (isList(kind, key)) {
        object.add(key, elements(childrenOf(node), key, kind));
        return true;
    }
    // Among shapes, what has a name or the name of a kind is a shape.
    const bool hasShapes = kind == QLatin1String("gr") || kind == shapesKey || kind == QLatin1String("layer");
    int number = 0;
    const QString shape = nameWithoutNumber(name(node), number);
    const bool isShape = !kindOfName(shape).isEmpty() || shape == kindName({}, shapesKey);
    const bool isKnown = key != name(node);
    if (!isKnown && (m_source.text().node(node).nameLine >= 0 || (hasShapes && isShape)))
        return false;
    Json member = Json::object();
    if (m_source.text().node(node).nameLine >= 0)
        member.add("nm", title(node));
    const bool isNamed = name(node) == QLatin1String("style") || name(node) == QLatin1String("selector");
    const QString own = isNamed ? name(node) : kindOfObject({}, key);
    const std::vector<int> shapes = addMembers(member, node, own);
    if (!shapes.empty())
        member.add(shapesKey, elements(shapes, shapesKey, own, namesBesides(node, shapes)));
    if (own == QLatin1String("selector"))
        addSelectorParts(member);
    if (own == QLatin1String("text")) {
        addTextParts(member);
        m_hasTexts = true;
        ++m_madeUp;
    }
    object.add(key, std::move(member));
    return true;
}

// --- elements --------------------------------------------------------------------------------------------------------

Json LottieObjects::elements(const std::vector<int>& nodes, const QString& key, const QString& parent,
                             const QStringList& before) {
    const Place place{key, parent};
    Json list = Json::list();
    ImportNames names;
    for (const QString& used : before)
        names.take(used);
    for (const int node : nodes) {
        if (addValue(list, node, place)) {
            names.take(name(node));
        } else if (!m_source.text().node(node).isParameter() && !isVector(node)) {
            const QString type = typeOf(node, place);
            addNumbers(list, names, node, type, place);
            list.append(group(node, type, place));
        }
    }
    return list;
}

/// What is all about one value.
bool LottieObjects::addValue(Json& list, int node, const Place& place) {
    if (place.key == shapesKey || place.key == itemsKey)
        return false;
    const bool isValue = m_source.isLeft(node);
    std::vector<int> values = isValue ? std::vector<int>{node} : vectorOf(node, false);
    const bool isColour = values.empty() && place.key == effectsKey;
    if (isColour)
        values = vectorOf(node, true);
    if (values.empty() || (values.size() == 1 && !isValue))
        return false;
    Json element = Json::object();
    if (place.key == QLatin1String("d"))
        element.add("n", dashType(name(node))).add("nm", name(node)).add("v", property(values, false));
    else
        element = valueElement(name(node), values, isColour, list.count() + 1);
    list.append(std::move(element));
    return true;
}

Json LottieObjects::valueElement(const QString& name, const std::vector<int>& values, bool isColour, int index) {
    const bool isVector = values.size() > 1 || m_source.curves(values.front()).size() > 1;
    const int type = isColour ? 2 : isVector ? 3 : m_source.isSwitch(values.front()) ? 7 : 0;
    Json element = Json::object();
    element.add("ty", type).add("ix", index).add("nm", name).add("v", property(values, false));
    return element;
}

/// A name with a number says that others had it before, maybe some without a trace in project text.
void LottieObjects::addNumbers(Json& list, ImportNames& names, int node, const QString& type, const Place& place) {
    constexpr int mostUnseen = 1000;
    const bool hasTitle = m_source.text().node(node).nameLine >= 0;
    const QString wanted = hasTitle ? title(node) : kindName(type, place.key);
    int number = 0;
    const bool isNumbered = !hasTitle && nameWithoutNumber(name(node), number) == wanted;
    QString given = names.take(wanted);
    for (int i = 1; given != name(node) && isNumbered && i < number && m_unseen < mostUnseen; ++i) {
        ++m_unseen;
        list.append(group(-1, type, place));
        given = names.take(wanted);
    }
    if (given != name(node))
        m_source.lose(node, {message("an import calls it %1", given)});
}

QString LottieObjects::typeOf(int node, const Place& place) const {
    if (place.key != shapesKey && place.key != itemsKey)
        return place.key == QLatin1String("a") ? QString("animator") : kindOfObject({}, place.key);
    const bool hasTitle = m_source.text().node(node).nameLine >= 0;
    int number = 0;
    const QString base = hasTitle ? QString() : nameWithoutNumber(name(node), number);
    const QString type = kindOfName(base);
    if (!type.isEmpty() || base == kindName({}, shapesKey))
        return type.isEmpty() ? place.key : type;
    QStringList members;
    bool hasGroups = false;
    for (const int child : childrenOf(node)) {
        members += name(child);
        hasGroups = hasGroups || !(m_source.text().node(child).isParameter() || isVector(child));
    }
    const LottieKind* const kind = lottieKindWith(members, hasTitle ? title(node) : QString());
    return kind ? kind->type : hasGroups ? QString("gr") : place.key;
}

Json LottieObjects::group(int node, const QString& type, const Place& place) {
    Json object = Json::object();
    if (node >= 0 && m_source.text().node(node).nameLine >= 0)
        object.add("nm", title(node));
    if (type == effectsKey) {
        object.add("ty", 5).add("en", 1);
        object.add("ef", elements(node < 0 ? std::vector<int>() : childrenOf(node), effectsKey, type));
        return object;
    }
    if (place.key == shapesKey || place.key == itemsKey)
        return shape(std::move(object), node, type == place.key ? QString() : type, place);
    if (type == QLatin1String("mask")) {
        object.append(Json::written(lottieMaskRest));
        ++m_madeUp;
    }
    if (node >= 0)
        addMembers(object, node, type);
    for (const char* const part : {"s", "a"}) {
        if (type == QLatin1String("animator") && !object.has(part))
            object.add(part, Json::object());
    }
    return object;
}

Json LottieObjects::shape(Json object, int node, const QString& type, const Place& place) {
    const LottieKind* const kind = lottieKind(type);
    if (!type.isEmpty())
        object.add("ty", type);
    if (kind && *kind->rest != '\0')
        object.append(Json::written(kind->rest));
    m_madeUp += type == QLatin1String("sh") || type == QLatin1String("gf") || type == QLatin1String("gs") ? 1 : 0;
    std::vector<int> others;
    if (node >= 0)
        others = addMembers(object, node, type.isEmpty() ? place.key : type);
    for (const QString& key : QString(kind ? kind->needed : "").split(' ', Qt::SkipEmptyParts)) {
        if (!object.has(key))
            object.add(key, lottiePropertyWithoutValue());
    }
    if (!others.empty() || type == QLatin1String("gr"))
        object.add(itemsKey, elements(others, itemsKey, type, namesBesides(node, others)));
    return object;
}

} // namespace Prm::document
