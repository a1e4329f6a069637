#pragma once

#include "prm/Export.h"

#include <QSet>
#include <QString>

namespace Prm {

class BasicParameter;
class CompoundParameter;
class ParameterSet;
class ParameterWithoutType;

namespace detail {

/// What holds between any two calls, whatever was called and however it ended: keyframes in strictly ascending order
/// of valid times, in real views only; storage that shows each view the data of its own or borrows those of the source
/// view; `isSplit`; members that know the sets which list them, and the other way round; masters without circles, and
/// both ends of each such link; a compound that is connected to its parts, and the union of their keyframes.
///
/// Returns the first broken invariant in words, after the name of what is broken; an empty text if all hold.
/// A set is looked into with all that is below it, in time linear in that. Mappings that are not strictly increasing,
/// which `adjustKeyframesTime` forbids, break the order. For the owning thread.
PRM_EXPORT QString verify(const BasicParameter& parameter);
PRM_EXPORT QString verify(const ParameterSet& set);
PRM_EXPORT QString verify(const CompoundParameter& compound);

/// A friend of all that it looks into.
class Invariants {
public:
    const char* brokenIn(const ParameterWithoutType& parameter);
    static const char* brokenIn(const ParameterSet& set);
    /// Of the sets that list the parameter, or the set, from outside; as long as those sets are.
    static const char* brokenAround(const BasicParameter& parameter);
    static const char* brokenAround(const ParameterSet& set);

private:
    template <class T> static const char* brokenInStorage(const ParameterWithoutType& parameter);
    static const char* brokenInKeyframes(const ParameterWithoutType& parameter);
    const char* brokenInLinks(const ParameterWithoutType& parameter);
    bool leadsToCircle(const ParameterWithoutType& parameter);
    static const char* brokenInUnion(const CompoundParameter& compound);
    static const char* brokenInNames(const ParameterSet& set);

    QSet<const ParameterWithoutType*> m_withoutCircle;
};

} // namespace detail

} // namespace Prm
