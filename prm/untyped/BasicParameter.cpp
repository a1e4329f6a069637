#include "prm/BasicParameter.h"

#include "prm/ParameterSet.h"

namespace Prm {

BasicParameter::BasicParameter(ParameterSet* parent) : m_parentSet(parent) {}

BasicParameter::BasicParameter(const BasicParameter& other)
    : QObject(nullptr), detail::Mortal(other), m_parentSet(nullptr), m_streamable(other.m_streamable) {}

BasicParameter::~BasicParameter() {
    leaveSets();
}

QString BasicParameter::path() const {
    const detail::Listing* const first = m_listedIn.isEmpty() ? nullptr : m_listedIn.begin();
    const detail::Listing* const parent = isListedIn(m_parentSet) ? m_listedIn.of(m_parentSet) : first;
    const QString above = parent ? parent->set->path() : QString();
    const bool isJoined = !above.isEmpty() && !scriptName().isEmpty();
    return isJoined ? above + QLatin1Char('.') + scriptName() : above + scriptName();
}

void BasicParameter::leaveSets() noexcept {
    while (!m_listedIn.isEmpty()) {
        const detail::Listing listing = m_listedIn.last();
        listing.set->removeListed(listing, this);
        m_listedIn.remove(listing.set);
    }
}

void BasicParameter::namesHaveChanged() noexcept {
    for (const detail::Listing& listing : m_listedIn)
        listing.set->relearn(listing.list, this);
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
