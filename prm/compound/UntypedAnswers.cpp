// The questions of prm/Answers.h to parameters of any kind.

#include "prm/untyped/UntypedAnswers.h"

#include "prm/Answers.h"
#include "prm/CompoundParameter.h"
#include "prm/StaticParameter.h"

namespace Prm {

namespace {

bool isStatic(const BasicParameter& parameter) {
    return dynamic_cast<const StaticParameter<unsigned int>*>(&parameter) ||
           dynamic_cast<const StaticParameter<QString>*>(&parameter);
}

} // namespace

TimeSpan constantAround(const BasicParameter& parameter, const Context& context) {
    const auto* const animated = dynamic_cast<const ParameterWithoutType*>(&parameter);
    if (const auto* const answers = animated ? detail::UntypedAnswers::of(*animated) : nullptr)
        return answers->constantAround(*animated, context);
    const auto* const compound = dynamic_cast<const CompoundParameter*>(&parameter);
    TimeSpan span = compound || isStatic(parameter) ? TimeSpan::all() : TimeSpan::at(context.time);
    if (compound) {
        for (const auto& part : compound->parameters())
            span = span.intersected(constantAround(*part, context));
    }
    return span;
}

bool isConstant(const BasicParameter& parameter, const View& view, const TimeSpan& span) {
    const auto* const animated = dynamic_cast<const ParameterWithoutType*>(&parameter);
    if (const auto* const answers = animated ? detail::UntypedAnswers::of(*animated) : nullptr)
        return answers->isConstant(*animated, view, span);
    if (const auto* const compound = dynamic_cast<const CompoundParameter*>(&parameter)) {
        const auto& parts = compound->parameters();
        return std::all_of(parts.begin(), parts.end(), [&](const auto& part) { return isConstant(*part, view, span); });
    }
    const detail::Moments moments = detail::Moments::of(span);
    return isStatic(parameter) || !(moments.first < moments.last);
}

} // namespace Prm
