#include "prm/MovedParameter.h"

#include "prm/text/LineNotes.h"
#include "prm/text/LineParts.h"
#include "prm/untyped/MayWarn.h"

#include <QDebug>

#include <utility>

namespace Prm {

namespace {

bool readByTarget(BasicParameter* target, const QString& line, const ProjectFileVersion& version) {
    return target->setFromScriptString(line, version);
}

} // namespace

MovedParameter::MovedParameter(const QString& oldScriptName)
    : BasicParameter(nullptr), m_scriptName(oldScriptName), m_migration(readByTarget) {}

MovedParameter::~MovedParameter() {
    leaveSets();
    if (m_isWaiting && !m_target && detail::mayWarn())
        qWarning() << "MovedParameter[" << m_scriptName << "]: streamed in" << m_streamedText
                   << "but never given target parameter";
}

const QString& MovedParameter::scriptName() const {
    return m_scriptName;
}

bool MovedParameter::setFromScriptString(const QString& line, const ProjectFileVersion& version) {
    QString rest;
    if (!detail::afterName(line, m_scriptName, rest))
        return false;
    m_streamedVersion = version;
    m_streamedText = rest;
    m_isWaiting = !m_target;
    if (m_target)
        return passValueToTargetParameter();
    detail::LineNotes::addWaiting(*this);
    return true;
}

bool MovedParameter::leadsBack(const BasicParameter& target) const {
    const BasicParameter* next = &target;
    while (next && next != this) {
        const auto* const moved = dynamic_cast<const MovedParameter*>(next);
        next = moved ? moved->m_target.data() : nullptr;
    }
    return next == this;
}

bool MovedParameter::setTargetParam(BasicParameter& target) {
    if (leadsBack(target)) {
        qWarning() << "MovedParameter[" << m_scriptName << "]: the target" << target.scriptName() << "leads back to it";
        return false;
    }
    m_target = &target;
    return !m_streamedText.isEmpty() && passValueToTargetParameter();
}

bool MovedParameter::setMigrationFunction(Migration migration) {
    m_migration = std::move(migration);
    return m_target && !m_streamedText.isEmpty() && passValueToTargetParameter();
}

bool MovedParameter::passValueToTargetParameter() const {
    if (!m_target)
        return false;
    const Migration migrate = m_migration;
    const QString line = m_target->scriptName() + QLatin1Char('.') + m_streamedText;
    const ProjectFileVersion version = m_streamedVersion;
    const detail::LifeGuard guard(*this);
    const bool isTaken = migrate(m_target, line, version);
    if (isTaken && guard.alive())
        m_isWaiting = false;
    return isTaken;
}

bool MovedParameter::bStreamOut(QTextStream&, const QString&, bool) const {
    return true;
}

QVariant MovedParameter::variantValue(const Context& context) const {
    return m_target ? m_target->variantValue(context) : QVariant();
}

void MovedParameter::setVariantValue(const QVariant& value, const Context& context) {
    if (m_target)
        m_target->setVariantValue(value, context);
}

QVector<Context> MovedParameter::allKeyframes() const {
    return m_target ? m_target->allKeyframes() : QVector<Context>();
}

boost::shared_ptr<Bsc::MementoBase> MovedParameter::exportState() const {
    return {};
}

void MovedParameter::doImportState(boost::shared_ptr<Bsc::MementoBase>) {}

} // namespace Prm
