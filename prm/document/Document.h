#pragma once

#include "prm/Export.h"
#include "prm/document/FileParameter.h"
#include "prm/document/PathPattern.h"

namespace Prm::document {

/// What the parameters of a text mean. Kinds are guessed, each from all values when it is first asked for; a parameter
/// without values is of its master's kind.
class PRM_EXPORT Kinds {
public:
    explicit Kinds(const ProjectText& text, KindRules rules = {});
    /// A parameter whose kind is settled: what the user says, otherwise a guess.
    FileParameter read(int node);
    /// What a parameter shows: what its masters show, which is what the last of them shows, read as a kind of its own.
    /// A circle is left where it would close. Throws `Problem` for too long a chain.
    TypedParameter shown(const FileParameter& parameter);
    /// The node, its master and so on. A circle is left where it would close. Throws `Problem` for too long a chain.
    std::vector<int> masters(int node) const;
    /// The parameter and its masters, each tied to the next one, as parameters of the library's whose object names are
    /// their paths. The last one has the data that all show. Empty where values are of no known type.
    std::vector<std::shared_ptr<ParameterWithoutType>> chain(const FileParameter& parameter);

private:
    Kind guess(const FileParameter& parameter);

    const ProjectText& m_text;
    KindRules m_rules;
    std::vector<Kind> m_guesses;
    /// Of the last masters, each read once for all that follow it.
    std::map<std::pair<int, Kind>, TypedParameter> m_lastMasters;
};

/// A project text and what its values mean.
struct PRM_EXPORT Document {
    explicit Document(ProjectText read, KindRules rules = {}) : text(std::move(read)), kinds(text, std::move(rules)) {}
    /// Throws `Problem` for markers of a conflict, and for a rule that is none.
    Document(const QByteArray& bytes, const QStringList& rules);
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;

    /// The parameters that the patterns name, in the order of the file; all of them without a pattern. Throws `Problem`
    /// for a pattern that names nothing, with the place before the message.
    std::vector<int> parameters(const QStringList& patterns, const QString& place = {}) const;
    /// Reads some parameters one after the other. `work` is what a program shows when that takes long.
    void forEach(const std::vector<int>& nodes, const char* work,
                 const std::function<void(const FileParameter& parameter)>& visit);

    ProjectText text;
    Kinds kinds;
};

/// Whether all values can be evaluated.
struct Evaluability {
    bool isGiven;
    /// Why not, or what else to know; often empty.
    QString note;
    /// The rule that would settle what is a guess, such as "logo.visible=switch"; often empty.
    QString settledBy;
};

PRM_EXPORT Evaluability evaluability(const FileParameter& parameter);

} // namespace Prm::document
