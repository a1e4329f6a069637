#pragma once

#include "host/bsc/MementoUndoable.h"
#include "prm/Export.h"
#include "prm/ParameterTree.h"
#include "prm/View.h"
#include "prm/change/Mortal.h"

#include <QHash>
#include <QPair>
#include <QSet>
#include <QString>
#include <boost/function.hpp>
#include <boost/shared_ptr.hpp>

#include <memory>
#include <vector>

class QObject;
class QTextStream;

namespace Prm {

class BasicParameter;
class ParameterWithoutType;
class ProjectFileVersion;

namespace detail {
class Invariants;
} // namespace detail

/// A named node of the tree of parameters: it lists the animatable parameters of one node of the host, further
/// parameters that do not animate, and subsets. What project text writes and reads, and snapshots capture.
///
/// Parameters and subsets added by shared pointer are kept alive, those added by reference are not; whatever dies
/// leaves the sets that list it.
///
/// \snippet parameter_panel.cpp set
/// \threads One at a time, that of the parameters in it.
class PRM_EXPORT ParameterSet : virtual public Bsc::MementoUndoable, public detail::Mortal {
public:
    /// The name is also the script name, with what that does not allow replaced.
    explicit ParameterSet(const QString& name = {}, ParameterTree* tree = nullptr);
    /// Lists the same members, outside any tree, and tells nobody.
    ParameterSet(const ParameterSet& other);
    ParameterSet& operator=(const ParameterSet& other);
    /// Tells the tree, leaves the sets that list this one, and frees owned members, last to first.
    ~ParameterSet() override;

    /// The untranslated name, and its display form.
    virtual void setDisplayName(const QString& name);
    virtual void setDisplayName(const QString& name, const QString& displayName);
    /// The name in paths: blanks, apostrophes and dots become "_".
    virtual void setScriptName(const QString& name);
    /// Writes the name, the parameters and the subsets, depth first, behind the path of script names; always true.
    /// Subsets' lines begin at their own names when `withPrefixForSubsets` is false.
    virtual bool bStreamOut(QTextStream& stream, const QString& prefix, bool withPrefixForSubsets) const;
    /// Hands one line to the member that it belongs to; answers whether it was taken. An empty line is. Lines of one
    /// member are found at once when they come together. Passes on what a parameter throws for a malformed keyframe.
    virtual bool bStreamIn(const QString& line, const ProjectFileVersion& version);
    /// Null and repeated members are ignored, with a warning also a compound that contains this set. A parameter
    /// without a parent set gets this one.
    virtual void addParameter(const boost::shared_ptr<ParameterWithoutType>& parameter);
    virtual void addParameter(ParameterWithoutType& parameter);
    /// The names, and the states of all members and of all below them.
    boost::shared_ptr<Bsc::MementoBase> exportState() const override;
    /// Throws `std::bad_cast` for a snapshot of another kind, and for null; `std::logic_error` at the first member that
    /// was added since, which leaves those before it restored. Members that were removed since are left alone. Where
    /// memory runs out each member is restored or as it was, and doing it once more restores the others.
    void doImportState(boost::shared_ptr<Bsc::MementoBase> snapshot) override;
    /// Sets the name, and its translation in the context "Parameter" as display name.
    virtual void assignName(const QString& name);

    /// What `bStreamOut` writes, without the set's own name in any path: text that this set itself reads back.
    void writeMembers(QTextStream& stream, const QString& path, bool withPrefixForSubsets) const;

    const QString& scriptName() const { return m_scriptName; }
    const QString& name() const { return m_name; }
    const QString& displayName() const { return m_displayName; }

    /// Adds a parameter, makes it splittable, and gives `view` data of its own.
    void addSplittableParameter(ParameterWithoutType& parameter, const View& view);
    /// Lists a parameter that does not animate; the caller keeps owning it.
    void addBasicParameter(BasicParameter& parameter);
    /// The same, owned by the set.
    void adoptBasicParameter(std::unique_ptr<BasicParameter> parameter);

    /// Adds a subset under a script name that no other subset has. False for null and repeated ones; false with a
    /// warning for this set itself and for one that contains it. Warns of a subset without a script name.
    bool addParameterSet(const boost::shared_ptr<ParameterSet>& subset);
    bool addParameterSet(ParameterSet& subset);
    /// Inserts before the position, held to the list.
    bool insertParameterSet(const boost::shared_ptr<ParameterSet>& subset, int position);
    /// False for one that is not listed. It leaves the tree that this set belongs to.
    bool removeParameterSet(const boost::shared_ptr<ParameterSet>& subset);
    /// Lets go of all members.
    void clearAllLists();
    /// Gives the subset a script name that is free in this set: "Blur" becomes "Blur_2", "Blur_2" becomes "Blur_3".
    void setUniqueName(const boost::shared_ptr<ParameterSet>& subset);

    const std::vector<boost::shared_ptr<ParameterWithoutType>>& parameters() const { return m_parameters; }
    const std::vector<BasicParameter*>& basicParameters() const { return m_basicParameters; }
    std::vector<ParameterSet*> subsets() const;

    /// Finds by script name, exactly: own members first (moved ones last), then a dotted path through subsets and
    /// compounds. Null when there is none.
    BasicParameter* parameterWithName(const QString& name) { return findParameter(name); }
    const BasicParameter* parameterWithName(const QString& name) const { return findParameter(name); }
    ParameterWithoutType* parameterWTWithName(const QString& name) { return findAnimatedParameter(name); }
    const ParameterWithoutType* parameterWTWithName(const QString& name) const { return findAnimatedParameter(name); }
    ParameterSet* subsetWithName(const QString& name) { return findSubset(name); }
    const ParameterSet* subsetWithName(const QString& name) const { return findSubset(name); }

    /// Visits the own animatable parameters, then those of the subsets, depth first. A compound is one parameter. What
    /// the function removes is not visited any more.
    void forEachParameter(boost::function<void(ParameterWithoutType*)> function, bool recursive) const;
    /// Visits all animatable parameters below, and behind each compound its subparameters.
    void forEachParameterAndPart(const boost::function<void(ParameterWithoutType*)>& function) const;
    void forEachSubset(boost::function<void(ParameterSet*)> function, bool recursive);

    // The operations of the same name on every member parameter.
    void attachObserver(const QObject* observer, const char* slot, bool recursive) const;
    void detachObserver(const QObject* observer, bool recursive) const;
    void detachAllObservers(bool recursive) const;
    void AttachCommandRegistrationObserver(QObject* observer, const char* slot, bool recursive);
    void DetachCommandRegistrationObserver(QObject* observer, bool recursive);

    ParameterTree* parameterTree() const { return m_tree; }
    /// Moves this set, and all below that belong to `from`, to another tree; `from` is told before, `to` after. Nothing
    /// for a set that does not belong to `from`.
    void changeParameterTree(ParameterTree* from, ParameterTree* to);
    void notifySubtreeAdded(ParameterSet* subset);
    void notifySubtreeRemoved(ParameterSet* subset);

    /// Gives every animatable parameter below its path, the names of the sets above it joined by dots, as name prefix.
    void assignNamePrefixes(const QString& prefix = {});
    /// Ties every parameter below whose master's name was read from text to that master: found by `find`, or by
    /// extended name among the parameters below. Answers how many are still waiting; each is warned of.
    int resolveMasterParameters(const boost::function<ParameterWithoutType*(const QString&)>& find = {});

protected:
    bool lists(const BasicParameter& parameter) const;
    /// By way of subsets, and of compounds among the parameters.
    bool isOrContains(const ParameterSet& set) const;
    /// The first half of `bStreamIn`: without the set's own name.
    bool readByMembers(const QString& line, const ProjectFileVersion& version);

private:
    friend class BasicParameter;
    friend class detail::Invariants;
    class MementoImpl;
    struct Subset {
        ParameterSet* set;
        boost::shared_ptr<ParameterSet> owner;
    };

    static quint64 nextNumber();

    void writeBelow(QTextStream& stream, QString& path, bool withPrefixForSubsets) const;
    void writeBehind(QTextStream& stream, QString& path, bool withPrefixForSubsets) const;
    void assignGrowingPrefix(QString& path);

    void takeNames(const QString& scriptName, const QString& name, const QString& displayName);
    void listParameter(const boost::shared_ptr<ParameterWithoutType>& parameter);
    bool listSubset(ParameterSet& subset, const boost::shared_ptr<ParameterSet>& owner, std::size_t position);
    void copyMembersFrom(const ParameterSet& other);
    void letGoOfMembers();
    void letGoOfSubsets(boost::shared_ptr<ParameterSet>& dying);
    void enlist(BasicParameter& parameter);
    void delist(BasicParameter& parameter);
    void forgetParent(const ParameterSet* parent);
    void forgetDeadMember(const BasicParameter* parameter);
    void forgetSubset(const ParameterSet* subset);
    std::vector<ParameterSet*> subsetsInTree() const;
    void exchangeTree(ParameterTree* from, ParameterTree* to);
    bool listsSubset(const ParameterSet& subset) const;
    void giveUniqueName(ParameterSet& subset);
    const QHash<QString, int>& subsetNames() const;
    BasicParameter* ownParameter(const QString& name) const;
    ParameterWithoutType* ownAnimatedParameter(const QString& name) const;
    ParameterSet* ownSubset(const QString& name) const;
    BasicParameter* findParameter(const QString& name) const;
    ParameterWithoutType* findAnimatedParameter(const QString& name) const;
    ParameterSet* findSubset(const QString& name) const;
    bool stillLists(const ParameterSet* subset, quint32 membership) const;
    /// Sets, with the length of the name that was not found in them.
    using Searched = QSet<QPair<const ParameterSet*, int>>;
    template <class Result, class Own> Result* find(const QString& name, const Own& own, Searched& searched) const;

    class Rest;
    /// A set and the rest of the line that is for it.
    struct Descent;
    enum class Reading { NotMine, Refused, Taken, Below };
    Reading readByAny(Rest& rest, const ProjectFileVersion& version, Descent& below);
    Reading readBy(int list, Rest& rest, const ProjectFileVersion& version, Descent& below);
    Reading offerTo(int list, int index, Rest& rest, const ProjectFileVersion& version, Descent& below);
    static Reading offerToSubset(const Subset& listed, QStringView line, const ProjectFileVersion& version,
                                 Descent& below);
    int lengthOf(int list) const;
    bool readName(const QString& line);

    std::vector<boost::shared_ptr<ParameterWithoutType>> m_parameters;
    std::vector<BasicParameter*> m_basicParameters;
    std::vector<std::unique_ptr<BasicParameter>> m_ownedBasicParameters;
    std::vector<Subset> m_subsets;
    /// The sets that list this one.
    std::vector<ParameterSet*> m_parents;
    /// How many subsets have a script name; rebuilt when one was renamed.
    mutable QHash<QString, int> m_subsetNames;
    mutable bool m_subsetNamesKnown = true;
    /// For a stem that names were counted from, a run of numbers of which all are taken, so that many equal names need
    /// not be counted from the start each time. As good as the names above.
    struct TakenNumbers {
        quint64 first = 0;
        quint64 end = 0;
    };
    mutable QHash<QString, TakenNumbers> m_takenNumbers;
    /// Counts the changes of the list of subsets.
    quint32 m_membership = 0;
    /// Given to no other set.
    const quint64 m_number = nextNumber();
    /// The last one that came by here, of those that look for circles.
    mutable quint64 m_lastWalk = 0;
    int m_lastHitList = 0;
    int m_lastHitIndex = 0;
    QString m_scriptName;
    QString m_name;
    QString m_displayName;
    ParameterTree* m_tree;
    // Destructors go through trees without asking for memory, so the lists of what is still to be done are these.
    ParameterSet* m_nextToMove = nullptr;
    boost::shared_ptr<ParameterSet> m_nextDying;
};

} // namespace Prm
