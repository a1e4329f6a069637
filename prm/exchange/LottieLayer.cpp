#include "prm/exchange/LottieLayer.h"

#include "prm/document/Problem.h"
#include "prm/exchange/ImportNames.h"
#include "prm/exchange/LottieKinds.h"

#include <algorithm>

namespace Prm::document {

namespace {

enum LayerType { Unknown = -1, Precomposition, Solid, Image, Null, Shape, Text, Audio, Camera = 13 };

/// What a layer's transform takes from a group that is not laid out as a layer.
struct TransformRow {
    const char* name;
    std::size_t fewest;
    std::size_t most;
};

constexpr TransformRow transformRows[] = {{"position", 2, 3}, {"anchor_point", 2, 3}, {"scale", 2, 3},
                                          {"rotation", 1, 1}, {"opacity", 1, 1},      {"skew", 1, 1},
                                          {"skew_axis", 1, 1}};

} // namespace

int LottieLayer::typeOf(int node, bool hasShapes) const {
    const ProjectText& text = m_source.text();
    const auto has = [&](const char* name) { return text.findChild(node, name) >= 0; };
    int number = 0;
    const QString name = nameWithoutNumber(m_objects.name(node), number);
    // A layer without a name of its own is called as its type.
    for (int type = Unknown; text.node(node).nameLine < 0 && type <= Camera; ++type) {
        if (layerTypeName(type) == name)
            return type;
    }
    if (has("composition") || has("time_remap"))
        return Precomposition;
    return has("text") ? Text : has("perspective") ? Camera : hasShapes ? Shape : Null;
}

int LottieLayer::addGroup(int node) {
    const std::vector<int> shapes = m_objects.addMembers(m_json, node, "layer");
    QStringList before = m_objects.namesBesides(node, shapes);
    if (!before.contains("transform"))
        before += "transform";
    Json list = m_objects.elements(shapes, "shapes", "layer", before);
    const int type = typeOf(node, !list.isEmpty());
    m_json.add("ty", type);
    if (type == Solid)
        m_json.append(Json::written(lottieSolidRest));
    if (type == Image || type == Audio)
        m_objects.makeUpMedia(m_json);
    if (!list.isEmpty())
        m_json.add("shapes", std::move(list));
    return type;
}

void LottieLayer::addLoose(int node, const QString& name) {
    const int group = m_source.text().node(node).parent;
    for (const bool isColour : {false, true}) {
        const std::vector<int> components = m_objects.vectorOf(group, isColour);
        if (components.size() < 2)
            continue;
        if (isColour || !addToTransform(components, name))
            addControl(components, name, isColour);
        return;
    }
    if (!addToTransform({node}, name))
        addControl({node}, name, false);
}

bool LottieLayer::addToTransform(const std::vector<int>& nodes, const QString& name) {
    std::size_t components = 0;
    for (const int node : nodes)
        components += m_source.curves(node).size();
    Json& transform = m_json.member("ks", Json::object());
    for (const TransformRow& row : transformRows) {
        const QString key = memberKey("tr", row.name);
        if (name.toLower() != QLatin1String(row.name) || components < row.fewest || components > row.most ||
            transform.has(key))
            continue;
        transform.add(key, m_objects.property(nodes, key == QLatin1String("p")));
        return true;
    }
    return false;
}

void LottieLayer::addControl(const std::vector<int>& nodes, const QString& name, bool isColour) {
    const bool isVector = nodes.size() > 1 || m_source.curves(nodes.front()).size() > 1;
    const char* const control = isColour                           ? "Color"
                                : isVector                         ? "Point"
                                : m_source.isSwitch(nodes.front()) ? "Checkbox"
                                                                   : "Slider";
    Json& effects = m_json.member("ef", Json::list());
    Json values = Json::list();
    values.append(m_objects.valueElement(control, nodes, isColour, 1));
    Json effect = Json::object();
    effect.add("ty", 5).add("ix", effects.count() + 1).add("en", 1).add("nm", name).add("ef", std::move(values));
    effects.append(std::move(effect));
}

} // namespace Prm::document
