#include "prm/exchange/LottieExport.h"

#include "prm/document/Problem.h"
#include "prm/exchange/ImportNames.h"
#include "prm/exchange/LottieKinds.h"
#include "prm/exchange/LottieLayer.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace Prm::document {

namespace {

/// What the readers of Qt and others take.
constexpr int deepestJson = 1024;

/// The first and the last frame of something.
struct Extent {
    double first = HUGE_VAL;
    double last = -HUGE_VAL;

    void include(const Extent& other) {
        first = std::min(first, other.first);
        last = std::max(last, other.last);
    }
    bool isEmpty() const { return first > last; }
};

/// Layers on one timeline: the animation itself, or a precomposition.
struct Composition {
    int node = ProjectText::root;
    QString id;
    std::vector<int> layers;
    std::vector<Json> json;
    /// 0 where no layer says it.
    double framesPerSecond = 0;
    Extent extent;
};

class Animation {
public:
    Animation(Document& document, const std::vector<int>& nodes, const LottieOptions& options)
        : m_options(options), m_nodes(nodes), m_source(document, nodes, options.view), m_objects(m_source),
          m_text(m_source.text()) {}

    LottieExport written() {
        findCompositions();
        for (Composition& composition : m_compositions)
            readFrameRate(composition);
        m_framesPerSecond = m_compositions.front().framesPerSecond;
        if (!(m_framesPerSecond > 0))
            m_framesPerSecond = m_options.framesPerSecond;
        if (!(m_framesPerSecond > 0))
            throw Problem("no layer has a frame_rate, so the frames per second are needed (--fps)");
        for (Composition& composition : m_compositions)
            addLayers(composition);
        addOtherGroups();
        LottieExport result;
        const Json whole = json();
        whole.write(result.text);
        result.text += '\n';
        result.losses = m_source.losses();
        if (whole.depth() > deepestJson)
            result.losses +=
                message("groups in groups make %1 levels of JSON, and readers take %2", whole.depth(), deepestJson);
        result.madeUp = m_objects.madeUp();
        result.notes = m_source.notes();
        result.isComplete = m_source.isComplete();
        return result;
    }

private:
    // --- what there is -----------------------------------------------------------------------------------------------

    bool isGroup(int node) const { return !m_text.node(node).isParameter(); }

    /// Whether a group is laid out as a layer. A layer of a composition may be called "transform".
    bool isLayer(int node) const {
        const int transform = m_text.findChild(node, "transform");
        return hasTimes(node) || (isGroup(node) && transform >= 0 && isGroup(transform) && !hasTimes(transform));
    }

    bool hasTimes(int node) const {
        const auto has = [&](const char* name) {
            const int child = m_text.findChild(node, name);
            return child >= 0 && !isGroup(child);
        };
        return isGroup(node) && (has("frame_rate") || has("in") || has("out"));
    }

    void findCompositions() {
        m_compositions.emplace_back();
        for (const int node : m_objects.childrenOf(ProjectText::root)) {
            if (isLayer(node)) {
                m_compositions.front().layers.push_back(node);
                continue;
            }
            Composition composition;
            composition.node = node;
            for (const int child : m_objects.childrenOf(node)) {
                if (isLayer(child))
                    composition.layers.push_back(child);
            }
            if (composition.layers.empty())
                continue;
            composition.id = message("comp_%1", static_cast<int>(m_compositions.size()) - 1);
            m_compositions.push_back(std::move(composition));
        }
        for (const Composition& composition : m_compositions) {
            for (std::size_t i = 0; i < composition.layers.size(); ++i)
                m_indices[composition.layers[i]] = static_cast<int>(i) + 1;
        }
    }

    void readFrameRate(Composition& composition) {
        for (const int layer : composition.layers) {
            const QVariant rate = m_source.number(layer, "frame_rate");
            if (rate.isNull())
                continue;
            if (!(composition.framesPerSecond > 0))
                composition.framesPerSecond = rate.toDouble();
            else if (rate.toDouble() != composition.framesPerSecond)
                m_source.lose(
                    layer, {message("its frame rate is %1, as of the layers beside it", composition.framesPerSecond)});
        }
    }

    // --- layers ------------------------------------------------------------------------------------------------------

    void addLayers(Composition& composition) {
        ImportNames ownNames;
        ImportNames& names = composition.node == ProjectText::root ? m_rootNames : ownNames;
        for (const int node : composition.layers) {
            LottieLayer layer(m_source, m_objects);
            layer.json().add("ind", m_indices.at(node));
            if (m_text.node(node).nameLine >= 0)
                layer.json().add("nm", m_objects.title(node));
            addTimes(layer.json(), node, composition);
            addReferences(layer.json(), node, composition);
            checkName(names, node, layerTypeName(layer.addGroup(node)));
            addLeft(layer, node, {});
            finish(layer.json());
            composition.json.push_back(std::move(layer.json()));
        }
    }

    /// An import makes the script name of the group's name.
    void checkName(ImportNames& names, int node, const QString& otherwise) {
        const QString title = m_objects.title(node);
        const QString name = names.take(title.isEmpty() ? otherwise : title);
        if (name != m_objects.name(node))
            m_source.lose(node, {message("an import calls it %1", name)});
    }

    void addTimes(Json& json, int node, Composition& composition) {
        const QVariant first = m_source.number(node, "in");
        const QVariant last = m_source.number(node, "out");
        if (!first.isNull())
            composition.extent.first = std::min(composition.extent.first, first.toDouble());
        if (!last.isNull())
            composition.extent.last = std::max(composition.extent.last, last.toDouble());
        const std::pair<const char*, QVariant> times[] = {{"ip", first},
                                                          {"op", last},
                                                          {"st", m_source.number(node, "start")},
                                                          {"sr", m_source.number(node, "stretch")}};
        for (const auto& [key, value] : times) {
            if (!value.isNull())
                json.add(key, value.toDouble());
        }
    }

    void addReferences(Json& json, int node, const Composition& composition) {
        const QString parent = m_source.textOf(node, "parent");
        if (!parent.isEmpty()) {
            const auto found = m_indices.find(m_text.findNode(toView(parent.toUtf8())));
            if (found != m_indices.end() && m_text.node(found->first).parent == composition.node)
                json.add("parent", found->second);
            else
                m_source.lose(node, {message("its parent %1 is no layer beside it", parent)});
        }
        const QString reference = m_source.textOf(node, "composition");
        if (reference.isEmpty())
            return;
        const int wanted = m_text.findNode(toView(reference.toUtf8()));
        const auto found = std::find_if(m_compositions.begin() + 1, m_compositions.end(),
                                        [wanted](const Composition& each) { return each.node == wanted; });
        if (found != m_compositions.end())
            json.add("refId", found->id).add("w", m_options.size.width()).add("h", m_options.size.height());
        else
            m_source.lose(node, {message("its composition %1 has no layers", reference)});
    }

    /// What has no place in the layer, by its path from there.
    void addLeft(LottieLayer& layer, int group, const QString& path) {
        for (const int child : m_objects.childrenOf(group)) {
            const QString name = path.isEmpty() ? m_objects.name(child) : message("%1.%2", path, m_objects.name(child));
            if (m_source.isLeft(child))
                layer.addLoose(child, m_objects.vectorName(child, name));
            addLeft(layer, child, name);
        }
    }

    void addOtherGroups() {
        std::map<int, LottieLayer> layers;
        std::vector<int> order;
        for (const int node : m_nodes) {
            if (!m_source.isLeft(node))
                continue;
            const int parent = m_text.node(node).parent;
            const int group = m_text.groupOf(m_objects.isVector(parent) ? parent : node);
            const auto [found, isNew] = layers.try_emplace(group, m_source, m_objects);
            if (isNew)
                order.push_back(group);
            const QString path = m_text.path(node).mid(group == ProjectText::root ? 0 : m_text.path(group).size() + 1);
            found->second.addLoose(node, m_objects.vectorName(node, path));
        }
        Composition& root = m_compositions.front();
        if (root.extent.isEmpty())
            root.extent = extentOfKeyframes();
        for (const int group : order) {
            Json& json = layers.at(group).json();
            json.add("ind", static_cast<int>(root.json.size()) + 1).add("ty", 3);
            json.add("nm", group == ProjectText::root ? QString("parameters") : m_text.path(group));
            json.add("ip", root.extent.first).add("op", root.extent.last).add("st", 0).add("sr", 1);
            finish(json);
            root.json.push_back(std::move(json));
        }
    }

    static void finish(Json& layer) { layer.member("ks", Json::object()); }

    Extent extentOfKeyframes() const {
        Extent extent;
        for (const int node : m_nodes) {
            const auto& curves = m_source.curves(node);
            if (!curves.empty() && !curves.front().keyframes.isEmpty())
                extent.include({std::floor(curves.front().keyframes.first().time.toDouble()),
                                std::floor(curves.front().keyframes.last().time.toDouble()) + 1});
        }
        return extent.isEmpty() ? Extent{0, 1} : extent;
    }

    // --- the text ----------------------------------------------------------------------------------------------------

    static Json listOf(std::vector<Json>& elements) {
        Json list = Json::list();
        for (Json& element : elements)
            list.append(std::move(element));
        return list;
    }

    Json json() {
        Composition& root = m_compositions.front();
        Json assets = Json::list();
        for (std::size_t i = 1; i < m_compositions.size(); ++i)
            assets.append(asset(m_compositions[i]));
        if (m_objects.hasMedia())
            assets.append(Json::written(lottieMedia));
        Json json = Json::object();
        json.add("v", "5.7.0").add("fr", m_framesPerSecond);
        json.add("ip", root.extent.first).add("op", root.extent.last);
        json.add("w", m_options.size.width()).add("h", m_options.size.height()).add("ddd", 0);
        if (m_objects.hasTexts())
            json.add("fonts", Json::written(lottieFonts));
        json.add("assets", std::move(assets)).add("layers", listOf(root.json));
        return json;
    }

    Json asset(Composition& composition) {
        checkName(m_rootNames, composition.node, "composition");
        Json asset = Json::object();
        asset.add("id", composition.id);
        asset.add("nm", m_objects.title(composition.node));
        if (composition.framesPerSecond > 0 && composition.framesPerSecond != m_framesPerSecond)
            asset.add("fr", composition.framesPerSecond);
        asset.add("layers", listOf(composition.json));
        return asset;
    }

    const LottieOptions m_options;
    const std::vector<int>& m_nodes;
    LottieSource m_source;
    LottieObjects m_objects;
    const ProjectText& m_text;
    std::vector<Composition> m_compositions;
    /// Of each layer, among those beside it, from 1 on.
    std::map<int, int> m_indices;
    ImportNames m_rootNames;
    double m_framesPerSecond = 0;
};

} // namespace

LottieExport exportLottie(Document& document, const std::vector<int>& nodes, const LottieOptions& options) {
    return Animation(document, nodes, options).written();
}

} // namespace Prm::document
