// Parameters and subsets that are added and removed by edits, and put back at their places.

#include "prm/NumericParameter.h"
#include "prm/ParameterSetEdits.h"

#include <QStringList>
#include <QTextStream>
#include <boost/make_shared.hpp>

namespace {

/// Shows a parameter while it is in the set.
struct Panel : QObject {
    QStringList shown;
};

} // namespace

int main() {
    Prm::ParameterSet logo("logo");
    for (const char* const name : {"opacity", "angle", "size"})
        logo.addParameter(boost::make_shared<Prm::NumericParameter<double>>(name));
    Panel panel;
    const auto place = [&] { return logo.parameters().at(1)->scriptName(); };

    // [add]
    Prm::ParameterSetAddEdit add(logo, boost::make_shared<Prm::NumericParameter<double>>("blur"), 1);
    add.doIt();   // opacity, blur, angle, size
    add.undoIt(); // the edit owns blur now
    // [add]
    const bool isUndone = place() == "angle";
    // [remove]
    Prm::ParameterSetRemoveEdit remove(logo, *logo.parameterWTWithName("angle"));
    remove.doIt();   // opacity, size; the edit owns angle now, which keeps its connections
    remove.undoIt(); // opacity, angle, size
    // [remove]
    const bool isBack = place() == "angle";
    // [observe]
    remove.observeWith([&](const Prm::ParameterSet::Member& m) { panel.shown.append(m.parameter->scriptName()); },
                       [&](const Prm::ParameterSet::Member& m) { panel.shown.removeOne(m.parameter->scriptName()); });
    // [observe]
    panel.shown << "angle";
    remove.doIt();
    const bool isHidden = panel.shown.isEmpty();
    remove.undoIt();
    QTextStream(stdout) << Prm::undoText(remove) << '\n';
    return isUndone && isBack && isHidden && panel.shown.size() == 1 ? 0 : 1;
}
