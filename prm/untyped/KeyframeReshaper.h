#pragma once

#include "prm/Export.h"
#include "prm/ParameterWithoutType.h"
#include "prm/track/Place.h"
#include "prm/track/Reshaping.h"

#include <QPointer>

#include <memory>
#include <vector>

namespace Prm::detail {

/// The keyframes of one parameter while an edit that does not know the type of the values reshapes them as a whole.
/// New lists are computed from those that the parameter has, one view after the other and step by step; then all are
/// stored, then observers are notified. So an edit of several parameters computes all, stores all, notifies of all.
class PRM_EXPORT KeyframeReshaper {
public:
    /// Null for a class without values of one type.
    static std::unique_ptr<KeyframeReshaper> of(ParameterWithoutType& parameter);
    virtual ~KeyframeReshaper();
    Q_DISABLE_COPY(KeyframeReshaper)

    /// Null after it was deleted.
    ParameterWithoutType* parameter() const { return m_parameter.data(); }
    /// The views with data that edits address, of a parameter that is not splittable one at most; and those that were
    /// reshaped and are given data.
    virtual std::vector<View> views() const = 0;
    /// The times of a view's keyframes, as they were at first, and as they are reshaped so far.
    virtual std::vector<Time> formerTimes(const View& view) const = 0;
    virtual std::vector<Time> times(const View& view) const = 0;

    /// Reshapes the keyframes of a view. Returns why that is not possible, in words that follow a colon; null if it was
    /// done. Does nothing in a view without data, unless the reshaping gives it some.
    virtual const char* reshape(const View& view, const Reshaping& how) = 0;
    /// The keyframes as they were at first, for other reshapings. What has changed since is replaced when they are
    /// stored.
    virtual void restart() = 0;
    /// Where storing would change something; empty if nowhere.
    virtual Places places() const = 0;
    /// Replaces the lists, safely beside evaluation. Emits VIEW_ADDED at most. A list that was changed since it was
    /// read is left alone.
    virtual void store() = 0;
    /// Emits what the last call of `store` did: for each view in which only times have changed, in the same order, one
    /// KEYFRAME_MOVED with all indices; otherwise one PARAMETER_ASSIGNED. Observers may delete the parameter.
    virtual void announce() = 0;

protected:
    explicit KeyframeReshaper(ParameterWithoutType& parameter) : m_parameter(&parameter) {}

private:
    QPointer<ParameterWithoutType> m_parameter;
};

/// What makes a reshaper, found by the type of a parameter's values.
struct ReshaperFactory {
    std::unique_ptr<KeyframeReshaper> (*make)(ParameterWithoutType& parameter);
};

} // namespace Prm::detail
