#pragma once

#include "prm/document/Document.h"
#include "prm/exchange/LottieProperty.h"

#include <QStringList>

namespace Prm::document {

/// The parameters that are exported, read as the curves of an animation file: of one view, with the values that masters
/// give. Notes what such a file does not hold.
class LottieSource {
public:
    LottieSource(Document& document, const std::vector<int>& nodes, View view);

    const ProjectText& text() const { return m_document.text; }
    /// Whether the node is to be exported, or is the group of one that is. All nodes are, where all parameters are.
    bool isIncluded(int node) const { return m_isIncluded[static_cast<std::size_t>(node)]; }
    /// One for a number or a switch, two for a point; empty for what has none.
    const std::vector<LottieCurve>& curves(int node) const { return m_curves[static_cast<std::size_t>(node)]; }
    bool isSwitch(int node) const { return m_isSwitch[static_cast<std::size_t>(node)]; }

    /// What has a place in the file.
    void setWritten(int node) { m_isWritten[static_cast<std::size_t>(node)] = true; }
    /// Whether a curve has no place yet.
    bool isLeft(int node) const { return !curves(node).empty() && !m_isWritten[static_cast<std::size_t>(node)]; }

    // Settings of a layer are read although they may not be among the parameters that are exported.
    /// The value of a child that is a number, otherwise null. A curve counts by its first value, which is a loss.
    QVariant number(int parent, const char* name);
    QString textOf(int parent, const char* name);

    void lose(int node, const QStringList& what);
    /// One line for each parameter that is not held as it is.
    QStringList losses() const;
    /// What else to know of them.
    const std::vector<Evaluability>& notes() const { return m_notes; }
    /// Whether the values of all of them are of a known type.
    bool isComplete() const { return m_isComplete; }

private:
    void include(const std::vector<int>& nodes);
    void read(const FileParameter& parameter);
    void note(const Evaluability& found);
    void readCurves(int node, const TypedParameter& shown);
    QStringList settingsLost(const FileParameter& parameter, const TypedParameter& shown);

    Document& m_document;
    const View m_view;
    std::vector<bool> m_isIncluded;
    std::vector<bool> m_isWritten;
    std::vector<bool> m_isSwitch;
    std::vector<std::vector<LottieCurve>> m_curves;
    std::vector<int> m_texts;
    std::map<int, QStringList> m_losses;
    std::vector<Evaluability> m_notes;
    bool m_isComplete = true;
};

} // namespace Prm::document
