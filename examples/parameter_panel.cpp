// A panel that shows whatever is in a set, and knows no types: static parameters, numbers, and a kind of the host's.

#include "prm/NumericParameter.h"
#include "prm/ParameterSet.h"
#include "prm/SerialisedKeyframe.h"
#include "prm/StaticParameter.h"

#include <QTextStream>

using Prm::Context;
using Prm::Time;
using Prm::View;

namespace {

// [kind]
/// A button is in the list, has no value, and emits a change when it is pressed.
class Button : public Prm::ParameterWithoutTypeBase {
public:
    explicit Button(const QString& name) { setScriptName(name); }
    ~Button() override { announceDeletion(); } // optional: observers of its deletion still find a button
    void press() { Prm::ParameterChange::valueChanged(*this, View()); }
};
// [kind]

// [basic]
/// One line of the panel: any kind of parameter has its value as a variant.
QString lineOf(const Prm::BasicParameter& parameter, const Context& context) {
    const QVariant value = parameter.variantValue(context, std::nothrow);
    return parameter.scriptName() + ": " + (value.isValid() ? value.toString() : QStringLiteral("(none)"));
}
// [basic]

} // namespace

int main() {
    QTextStream out(stdout);
    // [static]
    unsigned int samples = 16; // a variable of the host's
    Prm::VirtualParameter<unsigned int> quality("samples", samples);
    Prm::OwnedStaticParameter<QString> note("note", "draft");
    quality.setValue(64); // sends valueChanged(), and samples is 64
    // [static]
    Prm::NumericParameter<double> blur("blur"), glow("glow");
    Button reset("reset");
    Prm::ParameterSet set("lens");
    // [set]
    set.addParameter(blur);
    set.addParameter(glow);
    set.addParameter(reset);
    set.addBasicParameter(quality); // lists it; the caller keeps owning it
    set.addBasicParameter(note);
    // [set]
    blur.vSetValue(2.0, Time::fromInt(0));
    blur.vSetValue(8.0, Time::fromInt(10));
    blur.vSetInterpolation(Prm::Interpolation::Constant, Time::fromInt(0));

    // [untyped]
    int sliders = 0;
    const auto show = [&](Prm::ParameterWithoutType* parameter) {
        out << lineOf(*parameter, Time::fromInt(5)) << '\n';
        if (dynamic_cast<Prm::NumericParameterWithoutType*>(parameter))
            ++sliders; // a number, of whatever type
        parameter->forEachKeyframeTime([&](const Context& at) { out << "    key at " << at.time.toDouble() << '\n'; });
    };
    set.forEachParameter(show, true);
    // [untyped]
    for (const Prm::BasicParameter* parameter : set.basicParameters())
        out << lineOf(*parameter, {}) << '\n';

    // [copy]
    const auto copied = blur.getSerialisedKeyframe(Time::fromInt(0)); // null where there is no keyframe
    if (copied) {
        copied->adjustTime(20);
        glow.importKeyframe(*copied);
        out << "copied to glow: " << copied->toString() << '\n';
    }
    // [copy]
    // [keyframe]
    const Prm::KeyframeData<double> key = glow.keyframe(0, View());
    const bool same = key.value == 2.0 && key.interpolationData == Prm::IType(Prm::Interpolation::Constant);
    // [keyframe]
    return same && key.time == Time::fromInt(20) && sliders == 2 && samples == 64 ? 0 : 1;
}
