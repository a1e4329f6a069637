#include "tool/merge/Judge.h"

#include "tool/Table.h"

namespace Tool {

namespace {

Judge::Deed deedOf(const Judge::Subject& subject, const QVariant& base, const QVariant& value) {
    if (value.isNull())
        return {"removed", {}};
    return {base.isNull() ? QString("set") : subject.verb, plainText(value)};
}

/// "moved to 25 here and to 45 there", "deleted here and edited there".
QString wordsOf(const Judge::Deed& ours, const Judge::Deed& theirs) {
    const auto result = [](const Judge::Deed& deed) {
        return deed.result.isEmpty() ? QString() : " to " + deed.result;
    };
    const bool isSameVerb = ours.verb == theirs.verb && !theirs.result.isEmpty();
    return ours.verb + result(ours) + " here and" + (isSameVerb ? QString() : ' ' + theirs.verb) + result(theirs) +
           " there";
}

} // namespace

Side Judge::choose(const Subject& subject, const Values& values) {
    const auto& [base, ours, theirs] = values;
    if (ours == theirs || theirs == base)
        return Side::Ours;
    if (ours == base)
        return Side::Theirs;
    return settle(subject, values, deedOf(subject, base, ours), deedOf(subject, base, theirs));
}

Side Judge::settle(const Subject& subject, const Values& values, const Deed& ours, const Deed& theirs) {
    return settle(subject, values, message("%1 was %2", subject.words, wordsOf(ours, theirs)));
}

Side Judge::settle(const Subject& subject, const Values& values, const QString& message) {
    if (const std::optional<Side> settled = m_settlement(subject.path))
        return *settled;
    const QString view = subject.view.isNull() ? QString() : " view " + subject.view.toString();
    const QString place = subject.path.isEmpty() ? QString() : subject.path + view + ": ";
    m_budget.spend(place.size() + message.size());
    m_conflicts.push_back({subject.path, subject.view, subject.what, subject.frame, values.base, values.ours,
                           values.theirs, place + message});
    return Side::Ours;
}

} // namespace Tool
