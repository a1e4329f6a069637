// The hero view of a parameter, and its return to one view with default values.

#include "prm/Parameter.h"
#include "prm/ParameterWithoutType.h"

#include <algorithm>

namespace Prm {

void ParameterWithoutType::setViewSelector(Parameter<bool>* selector, quintptr companion) {
    ownExtraData().viewSelector = selector;
    ownExtraData().viewSelectorCompanion = companion;
}

Parameter<bool>* ParameterWithoutType::viewSelector() const {
    return dynamic_cast<Parameter<bool>*>(extraData().viewSelector.data());
}

View ParameterWithoutType::heroView() const {
    const Parameter<bool>* const selector = viewSelector();
    if (!selector)
        return View::INVALID();
    std::vector<View> views = selector->viewList();
    views.erase(std::remove_if(views.begin(), views.end(), [=](View view) { return selector->staticValue(view); }),
                views.end());
    return views.size() == 1 ? views.front() : View::INVALID();
}

void ParameterWithoutType::resetAll() {
    const detail::LifeGuard guard(*this);
    const std::vector<View> views = viewList();
    for (const View view : views) {
        if (isKeyframed())
            vDeleteAllKeyframes(view);
        if (guard.alive())
            vReset(Context(Time(), view));
        if (!guard.alive())
            return;
    }
    if (!isSplit())
        return;
    const View hero = heroView();
    if (!hero.isValid() || viewList().empty())
        return;
    const View first = viewList().front();
    int left = numViews();
    while (left > 1) {
        const View last = viewList().back();
        deleteView(last == hero ? first : last);
        // With the last view as hero the first one is asked for again and again: stop when nothing goes any more.
        if (!guard.alive() || numViews() >= left)
            return;
        left = numViews();
    }
}

} // namespace Prm
