#include "prm/document/Document.h"

#include "prm/document/Budget.h"
#include "prm/document/ConflictMarkers.h"
#include "prm/document/Progress.h"

#include <algorithm>

namespace Prm::document {

namespace {

/// Whether some values are not of the kind that the user has given.
bool isContradicted(Kind told, Kind written) {
    if (!written || told == written || told == &ValueKind::text)
        return false;
    return told == &ValueKind::point || !written->isNumeric;
}

} // namespace

Kinds::Kinds(const ProjectText& text, KindRules rules)
    : m_text(text), m_rules(std::move(rules)), m_guesses(static_cast<std::size_t>(text.nodeCount())) {}

FileParameter Kinds::read(int node) {
    FileParameter parameter(m_text, node);
    parameter.setKind(m_rules.kindOf(parameter.path(), guess(parameter)));
    return parameter;
}

Kind Kinds::guess(const FileParameter& parameter) {
    const auto guess = [this](int node) -> Kind& { return m_guesses[static_cast<std::size_t>(node)]; };
    const int start = parameter.node();
    std::vector<int> followers;
    int node = start;
    for (; node >= 0 && !guess(node); node = m_text.masterOf(node)) {
        guess(node) = node == start ? parameter.writtenKind() : FileParameter(m_text, node).writtenKind();
        if (guess(node))
            break;
        // What stays when the masters form a circle.
        guess(node) = &ValueKind::opaque;
        followers.push_back(node);
    }
    for (const int follower : followers)
        guess(follower) = node < 0 ? &ValueKind::opaque : guess(node);
    return guess(start);
}

std::vector<int> Kinds::masters(int node) const {
    std::vector<int> chain{node};
    for (int master = m_text.masterOf(node); master >= 0; master = m_text.masterOf(master)) {
        if (std::find(chain.begin(), chain.end(), master) != chain.end())
            break;
        if (chain.size() > Most::masters)
            throw Problem("%1: follows more than %2 others", m_text.path(node), Most::masters);
        chain.push_back(master);
    }
    return chain;
}

TypedParameter Kinds::shown(const FileParameter& parameter) {
    const Kind kind = parameter.kind();
    const int last = masters(parameter.node()).back();
    if (last == parameter.node())
        return kind->typed(parameter);
    TypedParameter& shown = m_lastMasters[{last, kind}];
    if (!shown.sample)
        shown = kind->typed(FileParameter(m_text, last));
    return shown;
}

std::vector<std::shared_ptr<ParameterWithoutType>> Kinds::chain(const FileParameter& parameter) {
    const TypedParameter last = shown(parameter);
    if (!last.parameter)
        return {};
    const FileParameter withoutData({}, m_text.version());
    std::vector<std::shared_ptr<ParameterWithoutType>> chain;
    const std::vector<int> nodes = masters(parameter.node());
    for (const int node : nodes) {
        const auto next = node == nodes.back() ? last.parameter : parameter.kind()->typed(withoutData).parameter;
        next->setObjectName(m_text.path(node));
        if (!chain.empty())
            next->bAddConstrainedParameter(chain.back().get());
        chain.push_back(next);
    }
    return chain;
}

Document::Document(const QByteArray& bytes, const QStringList& rules)
    : Document((refuseConflicts(bytes, "text"), ProjectText(bytes)), KindRules(rules)) {}

std::vector<int> Document::parameters(const QStringList& patterns, const QString& place) const {
    std::vector<PathPattern> wanted;
    for (const QString& pattern : patterns)
        wanted.emplace_back(pattern);
    std::vector<bool> isUsed(wanted.size());
    std::vector<int> found;
    for (int i = 0; i < text.nodeCount(); ++i) {
        if (!text.node(i).isParameter())
            continue;
        const QString path = text.path(i);
        bool isWanted = wanted.empty();
        for (std::size_t p = 0; p < wanted.size(); ++p) {
            if (wanted[p].matches(path))
                isWanted = isUsed[p] = true;
        }
        if (isWanted)
            found.push_back(i);
    }
    const auto unused = std::find(isUsed.begin(), isUsed.end(), false);
    if (unused != isUsed.end())
        throw Problem("%1no parameter or group '%2'", place, patterns.at(static_cast<int>(unused - isUsed.begin())));
    return found;
}

void Document::forEach(const std::vector<int>& nodes, const char* work,
                       const std::function<void(const FileParameter& parameter)>& visit) {
    Progress progress(work, nodes.size());
    for (const int node : nodes) {
        progress.step();
        visit(kinds.read(node));
    }
}

Evaluability evaluability(const FileParameter& parameter) {
    const QString& path = parameter.path();
    const Kind kind = parameter.kind();
    if (kind == &ValueKind::opaque)
        return {false, message("%1: cannot be evaluated, its values are of no known type", path), {}};
    if (isContradicted(kind, parameter.writtenKind()))
        return {false,
                message("%1: some values are not of type %2, and are read as far as possible", path, kind->name),
                {}};
    if (kind == &ValueKind::numberOrSwitch)
        return {true, message("%1: number or switch, read as a number", path), path + "=switch"};
    return {true, {}, {}};
}

} // namespace Prm::document
