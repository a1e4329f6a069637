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

/// A named node of the tree of parameters. It lists animatable parameters, parameters that do not animate, and subsets.
/// Project text and snapshots are made of sets.
///
/// The set shares ownership of members added by shared pointer and does not own those added by reference. A member that
/// is deleted is removed from all sets that list it.
///
/// Operations on what is below a set, its destruction included, recurse: trees may have up to 1000 levels. Deeper ones
/// may exhaust the stack, which ends the process.
///
/// \snippet parameter_panel.cpp set
/// \threads One at a time, that of the parameters in it.
class PRM_EXPORT ParameterSet : virtual public Bsc::MementoUndoable, public detail::Mortal {
public:
    /// \name Construct and assign
    //@{
    /// The name is also the script name, with characters replaced as `setScriptName` does.
    explicit ParameterSet(const QString& name = {}, ParameterTree* tree = nullptr);
    /// A set with the same names and members, in no tree. Trees are not notified.
    ParameterSet(const ParameterSet& other);
    /// Removes all members, as `clearAllLists` does, then lists those of the other set. The set stays in its tree,
    /// which is notified of the subsets removed and added. Observers may delete either set meanwhile.
    ParameterSet& operator=(const ParameterSet& other);
    /// Notifies the tree, removes the set from the sets that list it, and releases its members, last to first.
    ~ParameterSet() override;
    //@}
    /// \name Names and project text
    //@{
    /// Sets both the untranslated name and the one shown to users.
    virtual void setDisplayName(const QString& name);
    /// Sets the untranslated name and the one shown to users.
    virtual void setDisplayName(const QString& name, const QString& displayName);
    /// Sets the name in paths; blanks, apostrophes and dots become "_".
    virtual void setScriptName(const QString& name);
    /// Writes the lines of the name, the parameters and the subsets, depth first, each after the path of script names;
    /// returns true. If `withPrefixForSubsets` is false, the paths of subsets begin at the subset.
    virtual bool bStreamOut(QTextStream& stream, const QString& prefix, bool withPrefixForSubsets);
    /// Passes one line to the member whose name it begins with; returns whether the line was taken. An empty line is
    /// taken. If several members match, the first one after the member that took the last line gets it. Takes
    /// O(log members), and one call for each member of a host's class that overrides `setFromScriptString`. Throws what
    /// the member throws, for example `std::runtime_error` for a malformed keyframe.
    virtual bool bStreamIn(const QString& line, const ProjectFileVersion& version);
    //@}
    /// \name Members
    //@{
    /// Adds an animatable parameter. Ignores null and members; ignores a compound that contains this set, with a
    /// warning. If the parameter has no parent set, this set becomes it.
    virtual void addParameter(const boost::shared_ptr<ParameterWithoutType>& parameter);
    /// The same without ownership.
    virtual void addParameter(ParameterWithoutType& parameter);
    //@}
    /// \name Snapshots
    //@{
    /// A snapshot of the names, and of the states of all parameters and subsets at every level.
    boost::shared_ptr<Bsc::MementoBase> exportState() const override;
    /// Restores a snapshot. Throws `std::bad_cast` for a snapshot of another kind, and for null. Throws
    /// `std::logic_error` at the first member that was added since; the members before it are restored. Members removed
    /// since do not change. If memory runs out, each member is restored or unchanged, and a second call restores the
    /// rest.
    void doImportState(boost::shared_ptr<Bsc::MementoBase> snapshot) override;
    //@}
    /// \name Names and project text
    //@{
    /// Sets the untranslated name, and its translation in the context "Parameter" as the name shown to users.
    virtual void assignName(const QString& name);

    /// Writes what `bStreamOut` writes, without the set's own name in the paths: `bStreamIn` reads it back.
    void writeMembers(QTextStream& stream, const QString& path, bool withPrefixForSubsets);

    /// The name in paths.
    const QString& scriptName() const { return m_scriptName; }
    /// The names of the sets that contain this one, from the topmost on, and its own, joined by dots, as
    /// `assignNamePrefixes` of the topmost set joins them. Of several sets that list it, those above the first.
    QString path() const;
    /// The untranslated name.
    const QString& name() const { return m_name; }
    /// The name shown to users.
    const QString& displayName() const { return m_displayName; }
    //@}
    /// \name Members
    //@{
    /// Adds a parameter, makes it splittable, and gives `view` a copy of what it shows.
    void addSplittableParameter(ParameterWithoutType& parameter, const View& view);
    /// Adds a parameter that does not animate, without ownership.
    void addBasicParameter(BasicParameter& parameter);
    /// The same; the set owns it.
    void adoptBasicParameter(std::unique_ptr<BasicParameter> parameter);

    /// Adds a subset, which gets a unique script name (`setUniqueName`) and joins the tree. Returns false for null and
    /// for a subset of this set; returns false and warns for this set itself and for one that contains it. Warns if the
    /// subset has no script name.
    bool addParameterSet(const boost::shared_ptr<ParameterSet>& subset);
    /// The same without ownership.
    bool addParameterSet(ParameterSet& subset);
    /// As `addParameterSet`, before the position; a position outside the list is clamped. Takes O(subsets after the
    /// position).
    bool insertParameterSet(const boost::shared_ptr<ParameterSet>& subset, int position);
    /// Removes a subset, which leaves the tree. Returns false if it is not a subset of this set.
    bool removeParameterSet(const boost::shared_ptr<ParameterSet>& subset);
    /// Removes all members; the tree is notified of the subsets. Observers may delete the set meanwhile.
    void clearAllLists();
    /// If a subset of this set, `subset` or another one, has the script name of `subset`, gives it the next free one:
    /// "Blur" becomes "Blur_2", "Blur_2" becomes "Blur_3".
    void setUniqueName(const boost::shared_ptr<ParameterSet>& subset);

    /// The animatable parameters, in the order in which they were added.
    const std::vector<boost::shared_ptr<ParameterWithoutType>>& parameters() const {
        closeHoles(Parameters);
        return m_parameters;
    }
    /// The parameters that do not animate.
    const std::vector<BasicParameter*>& basicParameters() const {
        closeHoles(BasicParameters);
        return m_basicParameters;
    }
    /// The subsets.
    std::vector<ParameterSet*> subsets() const;
    /// A parameter, animatable or not, or a subset; the other pointer is null.
    struct Member {
        BasicParameter* parameter;
        ParameterSet* set;
    };
    /// All that the set holds, in the order of project text: animatable parameters, those that do not animate, subsets.
    std::vector<Member> members() const;
    //@}
    /// \name Find and visit
    /// Names are script names, compared exactly: first of members, `MovedParameter`s last, then as a path of subsets
    /// and compounds with dots between. Null if there is none. Takes O(log members) for each set on the path.
    //@{
    /// An animatable parameter, or one that does not animate.
    BasicParameter* parameterWithName(const QString& name) { return findParameter(name); }
    const BasicParameter* parameterWithName(const QString& name) const { return findParameter(name); }
    /// An animatable parameter.
    ParameterWithoutType* parameterWTWithName(const QString& name) { return findAnimatedParameter(name); }
    const ParameterWithoutType* parameterWTWithName(const QString& name) const { return findAnimatedParameter(name); }
    /// A subset.
    ParameterSet* subsetWithName(const QString& name) { return findSubset(name); }
    const ParameterSet* subsetWithName(const QString& name) const { return findSubset(name); }

    /// Calls the function for the animatable parameters of this set and then, if `recursive`, of the subsets, depth
    /// first. A compound counts as one parameter. The function may remove members, which are then not visited.
    void forEachParameter(boost::function<void(ParameterWithoutType*)> function, bool recursive) const;
    /// The same, and after each compound for its subparameters.
    void forEachParameterAndPart(const boost::function<void(ParameterWithoutType*)>& function,
                                 bool recursive = true) const;
    /// The same with the parameters that do not animate, which follow the animatable ones of each set and compound; and
    /// with the subsets of compounds.
    void forEachBasicParameter(const boost::function<void(BasicParameter*)>& function, bool recursive = true) const;
    /// Calls the function for the subsets and, if `recursive`, for theirs, depth first.
    void forEachSubset(boost::function<void(ParameterSet*)> function, bool recursive);
    //@}
    /// \name Observers
    /// The operations of `ParameterWithoutType`, for every animatable parameter of this set and the subparameters of
    /// compounds, and if `recursive` of the subsets. Command registration is connected once to each parameter, even if
    /// several paths lead to it.
    //@{
    /// Connects `changed`.
    void attachObserver(const QObject* observer, const char* slot, bool recursive) const;
    /// Disconnects `changed` from the observer.
    void detachObserver(const QObject* observer, bool recursive) const;
    /// Disconnects `changed` from everything.
    void detachAllObservers(bool recursive) const;
    /// Connects `commandRegistrationChanged`.
    void AttachCommandRegistrationObserver(QObject* observer, const char* slot, bool recursive);
    /// Disconnects `commandRegistrationChanged` from the observer.
    void DetachCommandRegistrationObserver(QObject* observer, bool recursive);
    //@}
    /// \name The host's tree
    //@{
    /// The tree that is notified; null without one.
    ParameterTree* parameterTree() const { return m_tree; }
    /// Moves this set, and the sets below it that belong to `from`, to another tree. `from` is notified before, `to`
    /// after. Does nothing if this set does not belong to `from`.
    void changeParameterTree(ParameterTree* from, ParameterTree* to);
    /// Calls `ParameterTree::subtreeAdded` of this set's tree.
    void notifySubtreeAdded(ParameterSet* subset);
    /// Calls `ParameterTree::subtreeRemoved` of this set's tree.
    void notifySubtreeRemoved(ParameterSet* subset);
    //@}
    /// \name Names and project text
    //@{
    /// Sets the name prefix of every animatable parameter at every level: the names of the sets that contain it, joined
    /// by dots, after `prefix`.
    void assignNamePrefixes(const QString& prefix = {});
    /// Sets the masters that project text named, for the parameters at every level. A master is what `find` returns or,
    /// without `find`, the parameter of that extended name at any level; the dot before the name of a member of a root
    /// without a name may be missing. Returns the number of masters that were not found, with a warning for each.
    int resolveMasterParameters(const boost::function<ParameterWithoutType*(const QString&)>& find = {});
    //@}

protected:
    template <class Visited> class SetWalk;

    /// Whether the parameter is a member.
    bool lists(const BasicParameter& parameter) const;
    /// At any level, through subsets and compounds.
    bool isOrContains(const ParameterSet& set) const;
    /// `bStreamIn` for a line without the set's own name.
    bool readByMembers(const QString& line, const ProjectFileVersion& version);

private:
    friend class BasicParameter;
    friend class ParameterSetEdit;
    friend class detail::Invariants;
    class MementoImpl;
    struct Subset {
        ParameterSet* set = nullptr;
        boost::shared_ptr<ParameterSet> owner;
    };

    static quint64 nextNumber();

    void takeNames(const QString& scriptName, const QString& name, const QString& displayName);
    void takeScriptName(const QString& name);
    void listParameter(const boost::shared_ptr<ParameterWithoutType>& parameter);
    bool listSubset(ParameterSet& subset, const boost::shared_ptr<ParameterSet>& owner, std::size_t position);
    void joinTree(ParameterSet& subset);
    void copyMembersFrom(const ParameterSet& other);
    void releaseMembers();
    bool isOrIsAbove(const ParameterSet& set, QSet<const ParameterSet*>& shared) const;
    /// Adds a parameter before a position, at the end for one outside the list.
    void putIn(BasicParameter& parameter, const boost::shared_ptr<void>& owner, int position);
    /// Removes a member and returns what owned it in this set.
    boost::shared_ptr<void> takeOut(BasicParameter& parameter, int& position);
    boost::shared_ptr<void> takeOut(ParameterSet& subset, int& position);
    bool unlistSubset(ParameterSet& subset);
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
    enum class Reading { NotMine, Refused, Taken };
    bool readRest(Rest& rest, const ProjectFileVersion& version);
    Reading readByAny(Rest& rest, const ProjectFileVersion& version);
    class Order;
    Reading readInOrder(const Order& order, int from, int to, Rest& rest, const ProjectFileVersion& version);
    std::vector<int> stepsThatMayTake(const Order& order, QStringView line) const;
    Reading offerTo(int list, int index, Rest& rest, const ProjectFileVersion& version);
    static Reading offerToSubset(const Subset& listed, QStringView line, const ProjectFileVersion& version);
    bool readName(const QString& line);

    mutable std::vector<boost::shared_ptr<ParameterWithoutType>> m_parameters;
    mutable std::vector<BasicParameter*> m_basicParameters;
    mutable std::vector<Subset> m_subsets;
    /// Read by evaluation on other threads as well, which asks compounds for their parameters.
    mutable std::array<std::atomic<int>, NumLists> m_holes{};
    std::vector<boost::shared_ptr<BasicParameter>> m_ownedBasicParameters;
    /// The sets that list this one.
    detail::Listings m_parents;
    mutable std::unique_ptr<detail::NameIndex> m_names;
    /// Counts the changes of the lists.
    quint32 m_membership = 0;
    /// Given to no other set.
    const quint64 m_number = nextNumber();
    int m_lastHitList = 0;
    int m_lastHitIndex = 0;
    QString m_scriptName;
    QString m_name;
    QString m_displayName;
    ParameterTree* m_tree;
};

} // namespace Prm
