#include "prm/RangeHash.h"

#include "prm/CompoundParameter.h"
#include "prm/MovedParameter.h"
#include "prm/StaticParameter.h"
#include "prm/track/CanonicalTrack.h"
#include "prm/untyped/UntypedAnswers.h"

#include <QTextStream>

#include <typeinfo>

namespace Prm {

namespace {

using detail::HashMark;

/// The question to each member of a set: to those of one type by `typed`, to those of a host's own kind by `other`.
template <class Typed, class Other> class Hasher {
public:
    Hasher(Bsc::Hash& hash, const Typed& typed, const Other& other) : m_hash(hash), m_typed(typed), m_other(other) {}

    void add(const BasicParameter& parameter) const {
        const auto* const animated = dynamic_cast<const ParameterWithoutType*>(&parameter);
        const auto* const answers = animated ? detail::UntypedAnswers::of(*animated) : nullptr;
        if (answers)
            m_typed(*answers, *animated);
        else if (const auto* const compound = dynamic_cast<const CompoundParameter*>(&parameter))
            add(static_cast<const ParameterSet&>(*compound));
        else if (!addStatic<unsigned int>(parameter) && !addStatic<QString>(parameter))
            addOther(parameter);
    }
    void add(const ParameterSet& set) const {
        detail::addMark(m_hash, HashMark::Members);
        for (const ParameterSet::Member& member : set.members())
            member.set ? add(*member.set) : add(*member.parameter);
        detail::addMark(m_hash, HashMark::End);
    }

private:
    template <class T> bool addStatic(const BasicParameter& parameter) const {
        const auto* const typed = dynamic_cast<const StaticParameter<T>*>(&parameter);
        if (typed)
            detail::addConstant(m_hash, typed->value());
        return typed;
    }
    void addOther(const BasicParameter& parameter) const {
        detail::addMark(m_hash, HashMark::Other);
        if (dynamic_cast<const MovedParameter*>(&parameter))
            return;
        detail::addTextToHash(m_hash, QString::fromLatin1(typeid(parameter).name()));
        m_other(parameter);
    }

    Bsc::Hash& m_hash;
    const Typed& m_typed;
    const Other& m_other;
};

template <class Hashed> void addRange(Bsc::Hash& hash, const Hashed& hashed, View view, const TimeSpan& span) {
    const auto typed = [&](const detail::UntypedAnswers& answers, const ParameterWithoutType& parameter) {
        answers.hashRange(hash, parameter, view, span);
    };
    const auto other = [&](const BasicParameter& parameter) {
        QString text;
        QTextStream stream(&text);
        parameter.bStreamOut(stream, {}, false);
        stream.flush();
        detail::addNumber(hash, view.id());
        detail::addSpan(hash, span);
        detail::addTextToHash(hash, text);
    };
    Hasher(hash, typed, other).add(hashed);
}

template <class Hashed> void addValues(Bsc::Hash& hash, const Hashed& hashed, const Context& context) {
    const auto typed = [&](const detail::UntypedAnswers& answers, const ParameterWithoutType& parameter) {
        answers.hashAt(hash, parameter, context);
    };
    const auto other = [&](const BasicParameter& parameter) { parameter.calculateHash(hash, context); };
    Hasher(hash, typed, other).add(hashed);
}

} // namespace

void hashRange(Bsc::Hash& hash, const BasicParameter& parameter, const View& view, const TimeSpan& span) {
    addRange(hash, parameter, view, span);
}

void hashRange(Bsc::Hash& hash, const ParameterSet& set, const View& view, const TimeSpan& span) {
    addRange(hash, set, view, span);
}

void hashRange(Bsc::Hash& hash, const CompoundParameter& compound, const View& view, const TimeSpan& span) {
    addRange(hash, static_cast<const ParameterSet&>(compound), view, span);
}

void hashAt(Bsc::Hash& hash, const BasicParameter& parameter, const Context& context) {
    addValues(hash, parameter, context);
}

void hashAt(Bsc::Hash& hash, const ParameterSet& set, const Context& context) {
    addValues(hash, set, context);
}

void hashAt(Bsc::Hash& hash, const CompoundParameter& compound, const Context& context) {
    addValues(hash, static_cast<const ParameterSet&>(compound), context);
}

} // namespace Prm
