#include "prm/merge/Resolver.h"

#include "prm/document/ValueText.h"

namespace Prm::document {

namespace {

Resolver::Change changeOf(const Resolver::Subject& subject, const QVariant& base, const QVariant& value) {
    if (value.isNull())
        return {"removed", {}};
    const bool isTime = subject.what == QLatin1String("time");
    return {base.isNull() ? QString("set") : subject.verb, isTime ? frameText(value.toDouble()) : plainText(value)};
}

/// "moved to 25 here and to 45 there", "deleted here and edited there".
QString wordsOf(const Resolver::Change& ours, const Resolver::Change& theirs) {
    const auto result = [](const Resolver::Change& change) {
        return change.result.isEmpty() ? QString() : " to " + change.result;
    };
    const bool isSameVerb = ours.verb == theirs.verb && !theirs.result.isEmpty();
    return ours.verb + result(ours) + " here and" + (isSameVerb ? QString() : ' ' + theirs.verb) + result(theirs) +
           " there";
}

} // namespace

Side Resolver::choose(const Subject& subject, const Values& values) {
    const auto& [base, ours, theirs] = values;
    if (ours == theirs || theirs == base)
        return Side::Ours;
    if (ours == base)
        return Side::Theirs;
    return settle(subject, values, changeOf(subject, base, ours), changeOf(subject, base, theirs));
}

Side Resolver::chooseDeletion(const Subject& subject, const Values& values, bool isEdited, const Change& edit) {
    const bool isDeletedHere = values.ours.isNull();
    if (!isEdited)
        return isDeletedHere ? Side::Ours : Side::Theirs;
    const Change deletion{"deleted", {}};
    return settle(subject, values, isDeletedHere ? deletion : edit, isDeletedHere ? edit : deletion);
}

Side Resolver::settle(const Subject& subject, const Values& values, const Change& ours, const Change& theirs) {
    return settle(subject, values, message("%1 was %2", subject.words, wordsOf(ours, theirs)));
}

Side Resolver::settle(const Subject& subject, const Values& values, const QString& message) {
    if (const std::optional<Side> settled = m_settlement(subject.path))
        return *settled;
    const QString view = subject.view.isNull() ? QString() : " view " + subject.view.toString();
    const QString place = subject.path.isEmpty() ? QString() : subject.path + view + ": ";
    m_budget.spend(place.size() + message.size());
    m_conflicts.push_back({subject.path, subject.view, subject.what, subject.frame, values.base, values.ours,
                           values.theirs, place + message});
    return Side::Ours;
}

} // namespace Prm::document
