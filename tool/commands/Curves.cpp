// The commands that reshape curves: each is its options and the edit of the library's that it does.

#include "tool/Commands.h"
#include "tool/Frames.h"
#include "tool/edit/Reshaping.h"

namespace Tool {

namespace {

/// An edit that is made with the parameter, the span, and what options say.
template <class Edit, class... Settings> CurveEdit::Make making(const Settings&... settings) {
    return [=](Prm::ParameterWithoutType& parameter, const Prm::KeyframeSpan& span) {
        return std::make_unique<Edit>(parameter, span, settings...);
    };
}

std::unique_ptr<Prm::ParameterReshapeEdit> noEdit(Prm::ParameterWithoutType& /*parameter*/,
                                                  const Prm::KeyframeSpan& /*span*/) {
    return {};
}

double positiveOption(const Arguments& arguments, const QString& option, double otherwise) {
    const double number = numberOption(arguments, option, otherwise);
    if (!(number > 0.0))
        throw WrongUse("--%1 must be above 0", option);
    return number;
}

/// The error, which is no less than 0.
double errorOption(const Arguments& arguments) {
    const double error = numberOption(arguments, "error", 0.0);
    if (!(error >= 0.0))
        throw WrongUse("--error must not be negative");
    return error;
}

QStringList easingNames() {
    QStringList names;
    for (const Prm::Easing& preset : Prm::Easing::presets())
        names.append(preset.name);
    return names;
}

Prm::Easing easingOf(const Arguments& arguments) {
    const QString name = arguments.value("as");
    if (const Prm::Easing* const preset = Prm::Easing::find(name))
        return *preset;
    const QString problem =
        name.isEmpty() ? QStringLiteral("--as is needed") : message("no easing is named '%1'", name);
    throw WrongUse("%1; there are %2", problem, easingNames().join(QLatin1String(", ")));
}

} // namespace

int insertKeyframe(Arguments& arguments) {
    Project::declareWithPatterns(arguments);
    arguments.option("at", "The frame of the new keyframe.", "FRAME")
        .option("view", "Only in this view; in all unless given.", "N")
        .option("strict", "Refuses where the curve needs more keyframes than one.");
    declareOutput(arguments);
    arguments.example("prm insert project.prm blur.size --at 12 --in-place");
    if (!arguments.read())
        return Fine;
    if (!arguments.has("at"))
        throw WrongUse("--at is needed");
    const Prm::Time time = keyframeOption(arguments, "at");
    using Insert = Prm::ParameterInsertKeyframeEdit;
    const auto inexact = arguments.has("strict") ? Insert::Refuse : Insert::AddOrRound;
    const auto span = Prm::KeyframeSpan().in(viewOption(arguments, Prm::View::INVALID()));
    const auto make = [=](Prm::ParameterWithoutType& parameter, const Prm::KeyframeSpan& in) {
        return std::make_unique<Insert>(parameter, Prm::Context(time, in.view), inexact);
    };
    return reshapeCurves(arguments, span, {make, "changed", {}, 0.0, true});
}

int simplify(Arguments& arguments) {
    Project::declareWithPatterns(arguments);
    arguments.option("error", "How far a value may move, 0 unless given.", "E")
        .option("linear", "Leaves straight segments only.");
    declareSpan(arguments);
    arguments.example("prm simplify project.prm 'blur.*' --error 0.01 --in-place");
    if (!arguments.read())
        return Fine;
    using Simplify = Prm::ParameterSimplifyEdit;
    const auto curves = arguments.has("linear") ? Simplify::Linear : Simplify::Bezier;
    const double error = errorOption(arguments);
    return reshapeCurves(arguments, spanOption(arguments), {making<Simplify>(error, curves), "changed", noEdit, error});
}

int bake(Arguments& arguments) {
    Project::declareWithPatterns(arguments);
    arguments.option("step", "The frames between two keyframes, 1 unless given.", "FRAMES")
        .option("linear", "Makes straight segments, not curves.");
    declareSpan(arguments);
    arguments.example("prm bake project.prm blur.size --from 0 --to 100 -o baked.prm");
    if (!arguments.read())
        return Fine;
    using Bake = Prm::ParameterBakeEdit;
    const auto curves = arguments.has("linear") ? Bake::Linear : Bake::Bezier;
    const double step = positiveOption(arguments, "step", 1.0);
    const auto make = [=](Prm::ParameterWithoutType& parameter, const Prm::KeyframeSpan& span) {
        const bool isAnimated = !parameter.allKeyframes().isEmpty();
        return isAnimated ? std::make_unique<Bake>(parameter, span, step, curves) : std::unique_ptr<Bake>();
    };
    return reshapeCurves(arguments, spanOption(arguments), {make, "baked"});
}

int smoothen(Arguments& arguments) {
    Project::declareWithPatterns(arguments);
    arguments.option("radius", "The standard deviation of the weights, 2 unless given.", "FRAMES")
        .option("error", "How far a smoothed value may move, 0 unless given.", "E");
    declareSpan(arguments);
    arguments.example("prm smooth project.prm blur.size --radius 3 --error 0.01 --in-place");
    if (!arguments.read())
        return Fine;
    using Smooth = Prm::ParameterSmoothEdit;
    const double radius = positiveOption(arguments, "radius", 2.0);
    const double error = errorOption(arguments);
    return reshapeCurves(arguments, spanOption(arguments),
                         {making<Smooth>(radius, error), "smoothed", making<Smooth>(radius, 0.0), error});
}

int ease(Arguments& arguments) {
    Project::declareWithPatterns(arguments);
    arguments.option("as", "The name of the easing, such as ease-in-out or bounce-out.", "NAME", easingNames());
    declareSpan(arguments);
    arguments.example("prm ease project.prm blur.size --as sine-in-out --in-place");
    if (!arguments.read())
        return Fine;
    const CurveEdit::Make make = making<Prm::ParameterEaseEdit>(easingOf(arguments));
    return reshapeCurves(arguments, spanOption(arguments), {make, "eased"});
}

int reverse(Arguments& arguments) {
    Project::declareWithPatterns(arguments);
    arguments.option("pivot", "The frame that stays; the middle of the keyframes unless given.", "FRAME");
    declareSpan(arguments);
    arguments.example("prm reverse project.prm blur --pivot 50 --in-place");
    if (!arguments.read())
        return Fine;
    const Prm::Time pivot = timeOption(arguments, "pivot", Prm::Time(Prm::Time::INVALID));
    CurveEdit edit{making<Prm::ParameterReverseEdit>(pivot), "reversed"};
    edit.movesTimes = true;
    return reshapeCurves(arguments, spanOption(arguments), edit);
}

int adjustValues(Arguments& arguments) {
    Project::declareWithPatterns(arguments);
    arguments.option("scale", "Farther from the pivot by a factor; -1 mirrors.", "S")
        .option("pivot", "The value that stays, 0 unless given.", "VALUE")
        .option("offset", "More by so much, or less with a minus sign: --offset=-12.", "VALUE");
    declareSpan(arguments);
    arguments.example("prm adjust project.prm blur.size --scale 2 --in-place");
    if (!arguments.read())
        return Fine;
    const Prm::ValueScaling scaling{numberOption(arguments, "scale", 1.0), numberOption(arguments, "pivot"),
                                    numberOption(arguments, "offset")};
    const CurveEdit::Make make = making<Prm::ParameterScaleValuesEdit>(scaling);
    return reshapeCurves(arguments, spanOption(arguments), {make, "adjusted", {}, 0.0, true});
}

} // namespace Tool
