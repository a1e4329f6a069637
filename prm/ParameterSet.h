#pragma once

#include "host/bsc/MementoUndoable.h"
#include "prm/Export.h"
#include "prm/ParameterTree.h"
#include "prm/View.h"
#include "prm/change/Mortal.h"
#include "prm/untyped/Listings.h"

#include <QPair>
#include <QSet>
#include <QString>
#include <QStringView>
#include <boost/function.hpp>
#include <boost/shared_ptr.hpp>

#include <array>
#include <atomic>
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
class NameIndex;
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
    /// Lists the same members, outside any tree, which is not notified.
    ParameterSet(const ParameterSet& other);
    /// Removes all members, as `clearAllLists`, and lists those of the other set; stays in its own tree, which is
    /// notified of the subsets that leave and come. Observers may delete either set meanwhile.
    ParameterSet& operator=(const ParameterSet& other);
    /// Tells the tree, leaves the sets that list this one, and frees owned members, last to first.
    ~ParameterSet() override;

    /// The untranslated name, and its display form.
    virtual void setDisplayName(const QString& name);
    virtual void setDisplayName(const QString& name, const QString& displayName);
    /// The name in paths: blanks, apostrophes and dots become "_".
    virtual void setScriptName(const QString& name);
    /// Writes the name, the parameters and the subsets, depth first, after the path of script names; always true.
    /// Subsets' lines begin at their own names when `withPrefixForSubsets` is false.
    virtual bool bStreamOut(QTextStream& stream, const QString& prefix, bool withPrefixForSubsets);
    /// Passes one line to the member that it belongs to; true when it was taken. An empty line is. Members are asked in
    /// turn from the one that took the last line, those whose names do not begin the line left out; so a line costs
    /// O(log members), and one each for members of a host's own class that override `setFromScriptString`. What a
    /// parameter throws for a malformed keyframe goes on to the caller.
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
    void writeMembers(QTextStream& stream, const QString& path, bool withPrefixForSubsets);

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
    /// Inserts before the position, held to the list. Costs O(subsets after the position).
    bool insertParameterSet(const boost::shared_ptr<ParameterSet>& subset, int position);
    /// False for one that is not listed. It leaves the tree that this set belongs to.
    bool removeParameterSet(const boost::shared_ptr<ParameterSet>& subset);
    /// Removes all members; the tree is notified of subsets. Observers may delete the set meanwhile.
    void clearAllLists();
    /// Gives the subset a script name that is free in this set: "Blur" becomes "Blur_2", "Blur_2" becomes "Blur_3".
    void setUniqueName(const boost::shared_ptr<ParameterSet>& subset);

    const std::vector<boost::shared_ptr<ParameterWithoutType>>& parameters() const {
        closeHoles(Parameters);
        return m_parameters;
    }
    const std::vector<BasicParameter*>& basicParameters() const {
        closeHoles(BasicParameters);
        return m_basicParameters;
    }
    std::vector<ParameterSet*> subsets() const;

    /// Finds by script name, exactly: own members first (moved ones last), then a dotted path through subsets and
    /// compounds. Null when there is none. Costs O(log members) for each set on the path.
    BasicParameter* parameterWithName(const QString& name) { return findParameter(name); }
    const BasicParameter* parameterWithName(const QString& name) const { return findParameter(name); }
    ParameterWithoutType* parameterWTWithName(const QString& name) { return findAnimatedParameter(name); }
    const ParameterWithoutType* parameterWTWithName(const QString& name) const { return findAnimatedParameter(name); }
    ParameterSet* subsetWithName(const QString& name) { return findSubset(name); }
    const ParameterSet* subsetWithName(const QString& name) const { return findSubset(name); }

    /// Visits the own animatable parameters, then those of the subsets, depth first. A compound is one parameter. What
    /// the function removes is not visited any more.
    void forEachParameter(boost::function<void(ParameterWithoutType*)> function, bool recursive) const;
    /// Visits all animatable parameters below, or the own ones, and after each compound its subparameters.
    void forEachParameterAndPart(const boost::function<void(ParameterWithoutType*)>& function,
                                 bool recursive = true) const;
    void forEachSubset(boost::function<void(ParameterSet*)> function, bool recursive);

    // The operations of the same name on every member parameter, and on the subparameters of compounds. Command
    // registration is attached once to a parameter that is reached in several ways.
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
    class SubsetVisit;
    struct Subset {
        ParameterSet* set = nullptr;
        boost::shared_ptr<ParameterSet> owner;
    };

    static quint64 nextNumber();

    void writeBelow(QTextStream& stream, QString& path, bool withPrefixForSubsets);
    void writeBehind(QTextStream& stream, QString& path, bool withPrefixForSubsets);
    void assignGrowingPrefix(QString& path);

    void takeNames(const QString& scriptName, const QString& name, const QString& displayName);
    void takeScriptName(const QString& name);
    void listParameter(const boost::shared_ptr<ParameterWithoutType>& parameter);
    bool listSubset(ParameterSet& subset, const boost::shared_ptr<ParameterSet>& owner, std::size_t position);
    void joinTree(ParameterSet& subset);
    void copyMembersFrom(const ParameterSet& other);
    void letGoOfMembers();
    void letGoOfSubsets(boost::shared_ptr<ParameterSet>& dying);
    void enlist(BasicParameter& parameter, int list);
    void delist(BasicParameter& parameter);
    void exchangeTree(ParameterTree* from, ParameterTree* to);
    bool listsSubset(const ParameterSet& subset) const { return subset.m_parents.contains(this); }

    // The three lists. A member that leaves makes a hole, so that the places of the others stay; holes are closed when
    // they are many and when a list is read.
    enum List { Parameters, BasicParameters, Subsets, NumLists };
    static const void* addressOf(const boost::shared_ptr<ParameterWithoutType>& parameter);
    static const void* addressOf(const BasicParameter* parameter) { return parameter; }
    static const void* addressOf(const Subset& subset) { return subset.set; }
    static const detail::Listings& listingsOf(int list, const void* address);
    template <class Act> auto inList(int list, const Act& act) const;
    /// With holes.
    int lengthOf(int list) const;
    const void* memberAt(int list, int place) const;
    int placeOf(const detail::Listing& listing, const void* address) const;
    void renumber(int list) const;
    void removeAt(int list, int place);
    void closeHoles(int list) const {
        if (m_holes[static_cast<std::size_t>(list)].load(std::memory_order_acquire) != 0)
            moveTogether(list);
    }
    void moveTogether(int list) const;
    const std::vector<Subset>& listedSubsets() const {
        closeHoles(Subsets);
        return m_subsets;
    }
    bool hasMembers() const;
    /// Of a member, which may be half destroyed: its address is only compared.
    void removeListed(const detail::Listing& listing, const void* address) noexcept;
    void removeSubset(ParameterSet& subset) noexcept;

    // Names: the first few members are asked in turn, further ones found by an index, made when it is needed first.
    static constexpr int fewMembers = 8;
    detail::NameIndex& names() const;
    std::unique_ptr<detail::NameIndex> indexed() const;
    static void enter(detail::NameIndex& index, int list, const void* address);
    void learn(int list, const void* address) noexcept;
    void relearn(int list, const void* address) noexcept;
    void freeName(const QString& subsetName) noexcept;
    template <class Keys, class Test> int firstPlace(int list, const Keys& keys, const Test& test) const;
    int placeOfSubset(QStringView name) const;
    quint64 freeNumber(const QString& stem, quint64 from) const;
    void giveUniqueName(ParameterSet& subset);
    BasicParameter* ownParameter(QStringView name) const;
    ParameterWithoutType* ownAnimatedParameter(QStringView name) const;
    ParameterSet* ownSubset(QStringView name) const;
    BasicParameter* findParameter(const QString& name) const;
    ParameterWithoutType* findAnimatedParameter(const QString& name) const;
    ParameterSet* findSubset(const QString& name) const;
    /// Sets, with the length of the name that was not found in them.
    using Searched = QSet<QPair<const ParameterSet*, int>>;
    template <class Result, class Own> Result* find(QStringView name, const Own& own, Searched& searched) const;

    class Rest;
    /// A set and the rest of the line that is for it.
    struct Descent;
    enum class Reading { NotMine, Refused, Taken, Below };
    Reading readByAny(Rest& rest, const ProjectFileVersion& version, Descent& below);
    class Order;
    Reading readInOrder(const Order& order, int from, int to, Rest& rest, const ProjectFileVersion& version,
                        Descent& below);
    std::vector<int> stepsThatMayTake(const Order& order, QStringView line) const;
    Reading offerTo(int list, int index, Rest& rest, const ProjectFileVersion& version, Descent& below);
    static Reading offerToSubset(const Subset& listed, QStringView line, const ProjectFileVersion& version,
                                 Descent& below);
    bool readName(const QString& line);

    mutable std::vector<boost::shared_ptr<ParameterWithoutType>> m_parameters;
    mutable std::vector<BasicParameter*> m_basicParameters;
    mutable std::vector<Subset> m_subsets;
    /// Read by evaluation on other threads as well, which asks compounds for their parameters.
    mutable std::array<std::atomic<int>, NumLists> m_holes{};
    std::vector<std::unique_ptr<BasicParameter>> m_ownedBasicParameters;
    /// The sets that list this one.
    detail::Listings m_parents;
    mutable std::unique_ptr<detail::NameIndex> m_names;
    /// Counts the changes of the lists.
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
