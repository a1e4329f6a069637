// The state of a compound's parts, taken and put back.

#include "host/bsc/MementoUndoable.h"
#include "prm/CompoundParameter.h"
#include "prm/set/SetWalk.h"
#include "prm/untyped/PartialState.h"
#include "prm/untyped/Restoring.h"

#include <boost/make_shared.hpp>

#include <algorithm>
#include <typeinfo>

namespace Prm {

/// One snapshot for each subparameter, by position.
class CompoundParameter::MementoImpl : public Bsc::MementoBase {
public:
    std::vector<boost::shared_ptr<Bsc::MementoBase>> states;
};

/// What an edit concerns in each part.
class CompoundParameter::StateOfParts : public detail::PartialState {
public:
    struct OfPart {
        QPointer<ParameterWithoutType> part;
        boost::shared_ptr<Bsc::MementoBase> state;
    };

    bool equals(const BasicParameter&) const override {
        return std::all_of(parts.begin(), parts.end(),
                           [](const OfPart& one) { return !one.part || detail::equalsState(*one.state, *one.part); });
    }
    boost::shared_ptr<Bsc::MementoBase> present(const BasicParameter&) const override {
        const auto now = boost::make_shared<StateOfParts>();
        for (const OfPart& one : parts) {
            if (one.part)
                now->parts.push_back({one.part, detail::presentState(*one.state, *one.part)});
        }
        return now;
    }
    /// All of them, whatever observers throw.
    void putBack() const {
        detail::FirstException first;
        for (const OfPart& one : parts) {
            if (one.part)
                first.during([&] { Bsc::importState(*one.part, one.state); });
        }
        first.goOn();
    }

    std::vector<OfPart> parts;
};

boost::shared_ptr<Bsc::MementoBase> CompoundParameter::exportState() const {
    const auto memento = boost::make_shared<MementoImpl>();
    for (const auto& parameter : parameters())
        memento->states.push_back(parameter->exportState());
    return memento;
}

boost::shared_ptr<Bsc::MementoBase> CompoundParameter::exportStateAround(const detail::Places& places) const {
    // What a class of a host's own adds to the snapshot is in the whole one.
    if (typeid(*this) != typeid(CompoundParameter)) {
        auto memento = exportState();
        const Bsc::MementoBase* const taken = memento.get();
        if (!taken || typeid(*taken) != typeid(MementoImpl))
            return memento;
    }
    const auto memento = boost::make_shared<StateOfParts>();
    for (const auto& parameter : parameters())
        memento->parts.push_back({parameter.get(), parameter->exportStateAround(places)});
    return memento;
}

void CompoundParameter::doImportState(boost::shared_ptr<Bsc::MementoBase> snapshot) {
    if (const auto* const state = dynamic_cast<const StateOfParts*>(snapshot.get()))
        return state->putBack();
    const auto* const memento = dynamic_cast<const MementoImpl*>(snapshot.get());
    if (!memento)
        return;
    PartWalk(*this).forEach([&](ParameterWithoutType& parameter, std::size_t i) {
        if (i < memento->states.size())
            Bsc::importState(parameter, memento->states[i]);
    });
}

} // namespace Prm
