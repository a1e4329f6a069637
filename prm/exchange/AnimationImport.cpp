#include "prm/exchange/AnimationImport.h"

#include "prm/ParameterSet.h"
#include "prm/exchange/LottieObject.h"

#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace Prm::document {

namespace {

const QLatin1String layersKey("layers");
const QLatin1String assetsKey("assets");
const QLatin1String frameRateKey("fr");
const QLatin1String nameKey("nm");

/// Layers on one timeline: the animation itself, or a precomposition.
struct Composition {
    QJsonObject json;
    QString jsonPath;
    ImportedSet set;
    std::vector<ImportedSet> layers;
    /// The layers' numbers in the file, by which others name them as parent.
    QHash<int, QString> pathOfLayer;
};

class Animation {
public:
    Animation(const QJsonObject& json, ImportReport& report, Budget& budget)
        : m_json(json), m_objects(report, budget) {}

    boost::shared_ptr<ParameterSet> import() {
        // All names come first, because layers speak of each other in any order.
        m_compositions.push_back({m_json, {}, m_root, {}, {}});
        nameLayers(m_compositions.front());
        m_root = m_compositions.front().set;
        nameAssets();
        m_compositions.front().set = m_root;
        for (std::size_t i = 0; i < m_compositions.size(); ++i)
            importComposition(m_compositions[i], i == 0);
        return m_root.set();
    }

private:
    static QString pathOfElement(const QString& list, int index) { return message("%1[%2]", list, index); }

    void nameLayers(Composition& composition) {
        const QJsonArray layers = composition.json.value(layersKey).toArray();
        composition.layers.reserve(static_cast<std::size_t>(layers.size()));
        const QString list = jsonPathOf(composition.jsonPath, layersKey);
        for (int i = 0; i < layers.size(); ++i) {
            const QJsonObject layer = layers.at(i).toObject();
            const QString title = layer.value(nameKey).toString();
            const QString name = title.isEmpty() ? layerTypeName(layer.value(QLatin1String("ty")).toInt(-1)) : title;
            composition.layers.push_back(composition.set.makeSubset(name, title));
            m_objects.reportName(layer, pathOfElement(list, i), composition.layers.back());
            const QJsonValue number = layer.value(QLatin1String("ind"));
            if (number.isDouble() && !composition.pathOfLayer.contains(number.toInt()))
                composition.pathOfLayer.insert(number.toInt(), composition.layers.back().path());
        }
    }

    void nameAssets() {
        const QJsonArray assets = m_json.value(assetsKey).toArray();
        for (int i = 0; i < assets.size(); ++i) {
            const QJsonObject asset = assets.at(i).toObject();
            const QString path = pathOfElement(assetsKey, i);
            if (!asset.value(layersKey).isArray()) {
                m_objects.leaveOut(path, "an image, a sound or other data");
                continue;
            }
            const QString id = asset.value(QLatin1String("id")).toString();
            const QString title = asset.value(nameKey).toString(id);
            m_compositions.push_back(
                {asset, path, m_root.makeSubset(title.isEmpty() ? "composition" : title, title), {}, {}});
            nameLayers(m_compositions.back());
            if (!m_pathOfComposition.contains(id))
                m_pathOfComposition.insert(id, m_compositions.back().set.path());
        }
    }

    void importComposition(Composition& composition, bool isRoot) {
        if (!isRoot)
            m_objects.reportName(composition.json, composition.jsonPath, composition.set);
        const QJsonArray layers = composition.json.value(layersKey).toArray();
        for (int i = 0; i < layers.size(); ++i) {
            const QString path = pathOfElement(jsonPathOf(composition.jsonPath, layersKey), i);
            ImportedSet& set = composition.layers[static_cast<std::size_t>(i)];
            if (layers.at(i).isObject())
                importLayer(layers.at(i).toObject(), path, set, composition);
            else
                m_objects.leaveOut(path, "it is no layer");
        }
        importRest(composition, isRoot);
        if (!isRoot)
            m_root.add(composition.set);
    }

    /// What belongs to the composition itself, after its layers.
    void importRest(Composition& composition, bool isRoot) {
        QJsonObject rest = composition.json;
        rest.remove(layersKey);
        if (m_json.value(frameRateKey).isDouble())
            rest.remove(frameRateKey);
        if (isRoot)
            rest.remove(assetsKey);
        const QString kind = isRoot ? "animation" : "asset";
        m_objects.importMembers(rest, {composition.set, composition.jsonPath, kind});
    }

    void importLayer(QJsonObject layer, const QString& path, ImportedSet& set, Composition& composition) {
        importFrameRate(composition, set);
        importTiming(layer, path, set);
        importReferences(layer, path, set, composition);
        m_objects.importMembers(layer, {set, path, "layer"});
        composition.set.add(set);
    }

    void importFrameRate(const Composition& composition, ImportedSet& set) {
        const bool own = composition.json.value(frameRateKey).isDouble();
        const QJsonValue rate = own ? composition.json.value(frameRateKey) : m_json.value(frameRateKey);
        const QString path = own ? jsonPathOf(composition.jsonPath, frameRateKey) : QString(frameRateKey);
        if (rate.isDouble())
            m_objects.hold(path, set.addStillNumber("frame_rate", rate.toDouble()));
    }

    /// Takes the layer's times, and removes them from it.
    void importTiming(QJsonObject& layer, const QString& path, ImportedSet& set) {
        const std::pair<const char*, const char*> timings[] = {
            {"ip", "in"}, {"op", "out"}, {"st", "start"}, {"sr", "stretch"}};
        for (const auto& timing : timings) {
            const QString key = timing.first;
            const QJsonValue value = layer.value(key);
            if (!value.isDouble())
                continue;
            m_objects.hold(jsonPathOf(path, key), set.addStillNumber(timing.second, value.toDouble()));
            layer.remove(key);
        }
    }

    /// Takes what names other sets, and removes it from the layer.
    void importReferences(QJsonObject& layer, const QString& path, ImportedSet& set, const Composition& composition) {
        const auto take = [&](const QString& key, const QString& name, const auto& targetOf, const char* obstacle) {
            // Not by take(), which leaks when memory runs out.
            const QJsonValue value = layer.value(key);
            layer.remove(key);
            const QString target = targetOf(value);
            if (!value.isUndefined() && target.isEmpty())
                m_objects.leaveOut(jsonPathOf(path, key), obstacle);
            else if (!value.isUndefined())
                m_objects.hold(jsonPathOf(path, key), set.addText(name, target));
        };
        take(
            "parent", "parent", [&](const auto& value) { return composition.pathOfLayer.value(value.toInt(-1)); },
            "it names no layer of its composition");
        take(
            "refId", "composition", [&](const auto& value) { return m_pathOfComposition.value(value.toString()); },
            "it names no composition of the file");
    }

    QJsonObject m_json;
    LottieObject m_objects;
    ImportedSet m_root;
    std::vector<Composition> m_compositions;
    QHash<QString, QString> m_pathOfComposition;
};

QString lineAndColumn(const QByteArray& text, int offset) {
    const QByteArray before = text.left(std::max(0, offset));
    const int column = before.size() - before.lastIndexOf('\n');
    return message("%1:%2", before.count('\n') + 1, column);
}

/// Roughly what reading takes: brackets around nothing are small in a file, and large in memory.
bool isTooManyValues(const QByteArray& json) {
    const qint64 bytesOfList = 160;
    const qint64 bytesOfValue = 24;
    const auto lists = std::count_if(json.begin(), json.end(), [](char c) { return c == '[' || c == '{'; });
    const auto values = std::count(json.begin(), json.end(), ',');
    return lists * bytesOfList + values * bytesOfValue > Most::bytesOfJson;
}

QJsonObject readAnimation(const QByteArray& json) {
    if (json.trimmed().isEmpty())
        throw Problem("1:1: the file is empty");
    if (json.size() > Most::bytesOfAnimation || isTooManyValues(json))
        throw Problem("1:1: the file is too large (%1 bytes)", json.size());
    QJsonParseError parsing{};
    const QJsonDocument document = QJsonDocument::fromJson(json, &parsing);
    if (parsing.error != QJsonParseError::NoError)
        throw Problem("%1: %2", lineAndColumn(json, parsing.offset), parsing.errorString());
    if (!document.isObject())
        throw Problem("1:1: no Lottie animation: the outermost value is no object");
    QJsonObject animation = document.object();
    if (!animation.value(layersKey).isArray())
        throw Problem("1:1: no Lottie animation: the outermost object has no list \"layers\"");
    const QLatin1String timings[] = {frameRateKey, QLatin1String("ip"), QLatin1String("op")};
    if (std::none_of(std::begin(timings), std::end(timings), [&](auto key) { return animation.value(key).isDouble(); }))
        throw Problem("1:1: no Lottie animation: the outermost object has no number \"fr\", \"ip\" or \"op\"");
    return animation;
}

/// Keeps what is made in proportion to what is read: long names over deep trees would multiply. A short static property
/// is 13 bytes of JSON and more than a kilobyte as a parameter; small files need room to start with.
Budget memoryFor(qint64 inputSize) {
    const qint64 bytesPerByte = 200;
    const qint64 bytesAtLeast = 256LL << 20;
    const qint64 bytesAtMost = 1LL << 30;
    return {std::min(bytesAtMost, std::max(bytesAtLeast, inputSize * bytesPerByte)),
            "the import ends here, because it would take too much memory"};
}

} // namespace

ImportResult importAnimation(const QByteArray& json) {
    ImportResult result;
    const QJsonObject animation = readAnimation(json);
    Budget memory = memoryFor(json.size());
    result.root = Animation(animation, result.report, memory).import();
    return result;
}

} // namespace Prm::document
