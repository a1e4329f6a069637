#pragma once

#include "prm/Parameter.h"
#include "tool/ProjectText.h"
#include "tool/ValueKind.h"

#include <QVariant>
#include <QVector>

#include <map>
#include <memory>
#include <vector>

namespace Tool {

/// Gives the parameter's lines to it, in the order of the file, and answers which of them it could not read.
std::vector<int> readInto(Prm::ParameterWithoutType& parameter, const ProjectText& text, int node,
                          const Prm::ParameterWithoutType::TextConversion& convert = {});

/// A parameter whose values are kept as they are written. `convert` hears each value's own text.
std::unique_ptr<Prm::Parameter<QString>> buildRaw(const ProjectText& text, int node,
                                                  const Prm::ParameterWithoutType::TextConversion& convert = {});

/// The masters at the ends of chains, each read once for all that follow it as values of a kind.
using Masters = std::map<std::pair<int, ValueKind>, std::shared_ptr<Prm::ParameterWithoutType>>;

/// A parameter made of the lines of a project text.
class BuiltParameter {
public:
    BuiltParameter(const ProjectText& text, int node, ValueKind kind);
    /// Makes it show what its masters show, which is what the last of them shows. That one is read as it is itself: one
    /// shows its values only to its own type. A circle is left where it would close. Throws `Problem` for a chain of
    /// more than `longestChain`.
    void followMasters(const ProjectText& text, Masters& masters);

    static constexpr std::size_t longestChain = 100;

    ValueKind kind() const { return m_kind; }
    const Prm::ParameterWithoutType& parameter() const { return *m_parameter; }
    /// The values at times, in their order: numbers, switches, texts, points; null for an opaque parameter.
    QVector<QVariant> sample(const QVector<Prm::Time>& times, Prm::View view) const;
    QVariant keyframeValue(unsigned int index, Prm::View view) const;
    QVariant staticValue(Prm::View view) const;

private:
    template <class Ask> auto ask(const Ask& ask) const;

    int m_node;
    ValueKind m_kind;
    std::shared_ptr<Prm::ParameterWithoutType> m_master;
    std::unique_ptr<Prm::ParameterWithoutType> m_parameter;
};

/// The node that a parameter's last master line names, -1 without such a line or node.
int masterOf(const ProjectText& text, int node);

} // namespace Tool
