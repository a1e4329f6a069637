#pragma once

#include "prm/exchange/LottieObjects.h"

namespace Prm::document {

/// A layer that is being written: of a group that is laid out as one, or of any group.
class LottieLayer {
public:
    LottieLayer(LottieSource& source, LottieObjects& objects)
        : m_source(source), m_objects(objects), m_json(Json::object()) {}

    /// Everything that has a place in a layer, of a group that is laid out as one. Returns the type of the layer.
    int addGroup(int node);
    /// A curve without a place under a name, and the other components of its vector. The name is that of the vector.
    void addLoose(int node, const QString& name);
    /// To add settings to.
    Json& json() { return m_json; }

private:
    int typeOf(int node, bool hasShapes) const;
    bool addToTransform(const std::vector<int>& nodes, const QString& name);
    void addControl(const std::vector<int>& nodes, const QString& name, bool isColour);

    LottieSource& m_source;
    LottieObjects& m_objects;
    Json m_json;
};

} // namespace Prm::document
