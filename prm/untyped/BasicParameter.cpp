#include "prm/BasicParameter.h"

#include "prm/ParameterSet.h"

#include <algorithm>
#include <utility>

namespace Prm {

BasicParameter::BasicParameter(ParameterSet* parent) : m_parentSet(parent) {}

BasicParameter::BasicParameter(const BasicParameter& other)
    : Bsc::MementoUndoable(other), QObject(nullptr), detail::Mortal(other), m_parentSet(nullptr),
      m_streamable(other.m_streamable) {}

BasicParameter::~BasicParameter() {
    leaveSets();
}

void BasicParameter::leaveSets() noexcept {
    const QVector<ParameterSet*> sets = std::exchange(m_listedIn, {});
    for (ParameterSet* set : sets)
        set->forgetDeadMember(this);
}

bool BasicParameter::isListedIn(const ParameterSet* set) const {
    return std::find(m_listedIn.begin(), m_listedIn.end(), set) != m_listedIn.end();
}

QVariant BasicParameter::variantValue(const Context& context, const std::nothrow_t&) const {
    try {
        return variantValue(context);
    } catch (...) {
        return {};
    }
}

void BasicParameter::setVariantValue(const QVariant& value, const Context& context, const std::nothrow_t&) {
    try {
        setVariantValue(value, context);
    } catch (...) {
        // The caller asked for silence.
    }
}

int BasicParameter::qMetaType() const {
    return 0;
}

QVector<Context> BasicParameter::allKeyframes() const {
    return {};
}

void BasicParameter::calculateHash(Bsc::Hash&, const Context&) const {}

bool BasicParameter::streamOut(QTextStream& stream, const QString& prefix, bool withName) const {
    return !m_streamable || bStreamOut(stream, prefix, withName);
}

} // namespace Prm
