#include "prm/GuessedSets.h"

#include "prm/ParameterSet.h"
#include "prm/document/Document.h"

#include <boost/make_shared.hpp>

namespace Prm {

namespace {

boost::shared_ptr<ParameterSet> makeSet(const QString& name) {
    auto set = boost::make_shared<ParameterSet>();
    set->setScriptName(name);
    return set;
}

} // namespace

boost::shared_ptr<ParameterSet> guessedSets(const QByteArray& bytes, const QStringList& rules) {
    document::Document document(bytes, rules);
    const document::ProjectText& text = document.text;
    std::vector<boost::shared_ptr<ParameterSet>> sets(static_cast<std::size_t>(text.nodeCount()));
    const auto setOf = [&](int node) -> auto& {
        return sets[static_cast<std::size_t>(node)];
    };
    setOf(document::ProjectText::root) = boost::make_shared<ParameterSet>();
    for (int node = 1; node < text.nodeCount(); ++node) {
        const boost::shared_ptr<ParameterSet>& group = setOf(text.groupOf(node));
        const QString name = text.nameInGroup(node);
        if (text.isGroup(node))
            group->addParameterSet(setOf(node) = makeSet(name));
        if (!text.node(node).isParameter())
            continue;
        if (const auto parameter = document.kinds.read(node).kind()->made(name))
            group->addParameter(parameter);
    }
    return setOf(document::ProjectText::root);
}

} // namespace Prm
