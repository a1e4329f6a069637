#pragma once

#include "prm/Context.h"
#include "prm/Export.h"
#include "prm/TimeSpan.h"
#include "prm/track/ViewRanges.h"

#include <QHash>
#include <QVector>
#include <boost/container/small_vector.hpp>

#include <utility>

namespace Bsc {
class MementoBase;
}

namespace Prm {

namespace detail {
class ReachOfChange;
class Watch;
} // namespace detail

class BasicParameter;
class ParameterChange;
class ParameterSet;
class ParameterWithoutType;

/// Where values may differ from what they were: in which parameters, in which views, at which times. Never too small.
/// As small as the kinds of curve allow: of an edited keyframe, the times between its neighbours.
///
/// Parameters are named by their addresses, which are never read. An address names the parameter that was there when
/// the extent was made; after that parameter was deleted, another one may get the address. So ask about a parameter
/// that may be gone with a pointer that was a `const BasicParameter*` before: converting one to its base class reads
/// it.
///
/// \snippet frame_cache.cpp drop
/// \threads A plain value.
class PRM_EXPORT Extent { // NOLINT(bugprone-exception-escape): moving an element throws nothing
public:
    /// A member of a set: a parameter (a compound, too) or a set, the other is null; and the set that lists it.
    struct Member {
        const ParameterSet* in = nullptr;
        const BasicParameter* parameter = nullptr;
        const ParameterSet* set = nullptr;
    };
    using Members = QVector<Member>;

    /// Whether values are the same everywhere, and so are the members and their names.
    bool isEmpty() const { return m_parameters.empty() && m_came.isEmpty() && m_went.isEmpty() && m_renamed.isEmpty(); }
    /// Whether any value may differ at the time in the view.
    bool touches(const Context& context) const;
    /// Whether the parameter's value may differ at the time in the view. Takes O(log spans).
    bool touches(const BasicParameter* parameter, const Context& context) const;
    /// The times at which any value may differ in the view.
    TimeSpans in(View view) const;
    /// The times at which the parameter's value may differ in the view.
    TimeSpans in(const BasicParameter* parameter, View view) const;
    /// The parameters whose values may differ, each once.
    QVector<const BasicParameter*> parameters() const;

    /// \name Members
    /// Only in what `ChangedSince` returns. Of a set that came or went, what is below it did, too, and is not listed. A
    /// member that has another place in its list went and came.
    //@{
    const Members& came() const { return m_came; }
    const Members& went() const { return m_went; }
    /// Members with another script name or display name.
    const Members& renamed() const { return m_renamed; }
    //@}

    Extent& operator|=(const Extent& other);

private:
    friend class detail::ReachOfChange;
    friend class detail::Watch;
    friend PRM_EXPORT Extent differenceOf(const ParameterWithoutType& before, const ParameterWithoutType& after);
    friend PRM_EXPORT Extent differenceOf(const Bsc::MementoBase& before, const ParameterWithoutType& after);

    struct Reached {
        Reached(const BasicParameter* of, detail::Reach&& added) : parameter(of), reach(std::move(added)) {}

        const BasicParameter* parameter;
        detail::Reach reach;
    };

    bool add(const BasicParameter* parameter, detail::Reach&& reach);
    const detail::Reach* reachOf(const BasicParameter* parameter) const;
    int placeOf(const BasicParameter* parameter) const;

    boost::container::small_vector<Reached, 1> m_parameters;
    /// The places of many parameters; few are asked in turn.
    QHash<const BasicParameter*, int> m_places;
    Members m_came;
    Members m_went;
    Members m_renamed;
};

/// Where values may differ from what they were before a change. To be called in the slot that received the change, with
/// that very record; it stays right when the parameter changes further. Takes O(log keyframes), and longer with many
/// views, parameters that show this one, and compounds.
///
/// - Of PARAMETER_ASSIGNED, which undo emits, too, the difference of the two states; all times if the parameter has a
///   master, or was tied or freed just before. Takes O(keyframes) for an assignment, and what was put back for undo.
/// - The record does not contain the state before VIEW_CLEARED and VALUE_CHANGED: all times. `differenceOf` and
///   `ChangedSince` compare states.
/// - The parameters constrained to this one and the compounds that list it are included, and so on. A parameter with a
///   master shows that one: its own edits change nothing.
/// - Hooks of a host's class may compute any value from any keyframe: all times in all views. A class that reads other
///   parameters has to emit a change of its own when these change.
/// - If the parameter was changed once more since the record was made, by an observer that received it earlier: all
///   times.
/// - Empty for changes that concern no values: flags, names, registered commands.
///
/// What is not announced has no record: edits that emit nothing, what is done with signals blocked, and the data that
/// view 0 gains by an edit of a parameter that is not splittable and has data in other views only.
///
/// \threads The thread that edits, during the notification.
PRM_EXPORT Extent extentOf(const ParameterChange& change);

/// Where the values of `after` differ from those of `before`, exactly as the kinds of curve allow; the extent names
/// `after`. Compounds are compared part by part. All times if the types differ, or if hooks of a host's class compute
/// the values. Takes O(keyframes), less where both share keyframes.
///
/// \threads The owning thread of both.
PRM_EXPORT Extent differenceOf(const ParameterWithoutType& before, const ParameterWithoutType& after);

/// The same with a snapshot, taken by `exportState`, of the parameter itself, without its master. The default value,
/// which a snapshot does not contain, is not compared. All times for a compound, and for a snapshot of another kind.
///
/// \threads The owning thread.
PRM_EXPORT Extent differenceOf(const Bsc::MementoBase& before, const ParameterWithoutType& after);

} // namespace Prm
