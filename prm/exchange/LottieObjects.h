#pragma once

#include "prm/exchange/Json.h"
#include "prm/exchange/LottieSource.h"

#include <set>

namespace Prm::document {

class ImportNames;

/// Writes groups as the objects of an animation file that `LottieObject` would import as them. Curves without a place
/// in such objects are left.
class LottieObjects {
public:
    explicit LottieObjects(LottieSource& source) : m_source(source) {}

    /// Members for all that has a key in an object of that kind. The groups that have none, but belong to a list of
    /// shapes, are returned.
    std::vector<int> addMembers(Json& object, int node, const QString& kind);
    /// An element for each of some members of a group, in a list of that key. `parent` is the kind of the object that
    /// has the list, `before` the names that are in use before the list.
    Json elements(const std::vector<int>& nodes, const QString& key, const QString& parent,
                  const QStringList& before = {});

    /// The components of a group that is a vector, in their order; empty for another group.
    std::vector<int> vectorOf(int group, bool isColour) const;
    bool isVector(int group) const;
    /// One property of them. Positions may have components that are properties of their own.
    Json property(const std::vector<int>& nodes, bool isPosition);
    /// The same as an element of an effect, which editors show as a slider, a point, a colour or a checkbox.
    Json valueElement(const QString& name, const std::vector<int>& values, bool isColour, int index);
    std::vector<int> childrenOf(int node) const;
    /// The path of a parameter without its own name, if that is the name of a component.
    QString vectorName(int node, const QString& path) const;
    /// Of the other children of a group.
    QStringList namesBesides(int node, const std::vector<int>& others) const;
    QString name(int node) const;
    /// What a group is called, empty where it has no name.
    QString title(int node) const;

    /// Makes a layer show a picture or a sound that is empty.
    void makeUpMedia(Json& layer);
    /// How much was made up that project text has not.
    int madeUp() const { return m_madeUp; }
    bool hasTexts() const { return m_hasTexts; }
    bool hasMedia() const { return m_hasMedia; }

private:
    /// A list and the kind of the objects in it.
    struct Place {
        QString key;
        QString parent;
    };

    std::vector<int> readVector(int group, bool isColour) const;
    bool addMember(Json& object, int node, const QString& kind);
    bool addGroup(Json& object, int node, const QString& key, const QString& kind);
    bool addValue(Json& list, int node, const Place& place);
    void addNumbers(Json& list, ImportNames& names, int node, const QString& type, const Place& place);
    QString typeOf(int node, const Place& place) const;
    /// An element of a list; of node -1, one without members of its own.
    Json group(int node, const QString& type, const Place& place);
    Json shape(Json object, int node, const QString& type, const Place& place);

    LottieSource& m_source;
    /// Groups that are none, of numbers or of a colour.
    mutable std::set<std::pair<int, bool>> m_noVectors;
    int m_madeUp = 0;
    int m_unseen = 0;
    bool m_hasTexts = false;
    bool m_hasMedia = false;
};

} // namespace Prm::document
