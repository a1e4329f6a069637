#pragma once

#include "host/bsc/MementoBase.h"
#include "prm/ParameterWithoutType.h"
#include "prm/track/Place.h"

#include <QPointer>
#include <QVariant>
#include <boost/shared_ptr.hpp>

#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace Prm::detail {

/// Whose animation a parameter shows, and its place among those that show the same; and the master that it waits for.
class MasterLink {
public:
    explicit MasterLink(const ParameterWithoutType& constrained);

    ParameterWithoutType* master() const { return m_master.data(); }
    bool equals(const ParameterWithoutType& constrained) const;
    /// False, with a warning, where the parameter has become a master of its former master.
    bool mayRestore(const ParameterWithoutType& constrained) const;
    /// Ties the parameter as it was tied, or to none where that cannot be. Sends nothing.
    void restore(ParameterWithoutType& constrained) const;

private:
    QPointer<ParameterWithoutType> m_master;
    /// The one that followed among those that show the same.
    QPointer<ParameterWithoutType> m_next;
    QString m_pending;
};

/// The state of what an edit concerns: of the edited parameter around some places, and of all that change with it
/// because a compound keys them together. Parameters that were deleted since are skipped.
class State {
public:
    /// The parameters that an edit changes, and where.
    using EditedPlaces = std::vector<std::pair<BasicParameter*, Places>>;

    State(BasicParameter& edited, const Places& places);
    /// Of several parameters. There must be one.
    explicit State(const EditedPlaces& edited);
    /// Of the whole parameter and its link to a master.
    static State withMaster(ParameterWithoutType& edited);

    /// What putting this one back would change, as it is now.
    State present() const;
    bool equals() const;
    /// The same for the edited parameter alone.
    bool equalsEdited() const { return m_kept.front().equals(); }
    /// Drops the parameters that changed with the edited one, or might have, and did not.
    void forgetUnchanged();
    /// Sends one PARAMETER_ASSIGNED for each parameter, with `isImporting()` true. All are put back, then the first
    /// exception of an observer goes on.
    void putBack() const;
    const std::optional<MasterLink>& link() const { return m_link; }
    /// Those that it would put back, with the parts of compounds.
    std::vector<const BasicParameter*> parameters() const;
    /// The compounds that key their parts together among those that a change of the parameter leads to.
    static std::vector<ParameterWithoutType*> keyedTogether(BasicParameter& edited);

    /// Changes something, and returns what undoes it; null if nothing differs then. When that throws, puts this state
    /// back before the exception goes on.
    template <class Change> std::shared_ptr<const State> changed(const Change& change) && {
        auto former = std::make_shared<State>(std::move(*this));
        former->changeOrPutBack(change);
        former->forgetUnchanged();
        if (former->equals())
            former.reset();
        return former;
    }

    /// Changes something; when that throws, puts this state back before the exception goes on. What observers throw
    /// meanwhile is dropped, for the first exception is under way.
    template <class Change> void changeOrPutBack(const Change& change) const {
        try {
            change();
        } catch (...) {
            try {
                putBack();
            } catch (...) { // NOLINT(bugprone-empty-catch)
            }
            throw;
        }
    }

private:
    class Reach;
    struct Kept {
        static Kept of(BasicParameter& parameter, const Places& places);
        bool equals() const;

        QPointer<BasicParameter> parameter;
        boost::shared_ptr<Bsc::MementoBase> memento;
        /// Of a parameter that does not animate.
        QVariant value;
    };
    State() = default;

    std::optional<MasterLink> m_link;
    /// The edited one first.
    std::vector<Kept> m_kept;
};

} // namespace Prm::detail
