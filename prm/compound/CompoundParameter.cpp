#include "prm/CompoundParameter.h"

#include "prm/Explanation.h"
#include "prm/Parameter.h"
#include "prm/set/SetWalk.h"
#include "prm/text/LineParts.h"

#include <QDebug>
#include <QMetaType>

#include <typeinfo>
#include <utility>

namespace Prm {

namespace {

using Values = QVector<QVariant>;

struct MetaTypes {
    int values = qRegisterMetaType<Values>("QVector< QVariant >");
    int compound = qRegisterMetaType<CompoundParameter>("Prm::CompoundParameter");
    bool fromList =
        QMetaType::registerConverter<QVariantList, Values>([](const QVariantList& list) { return list.toVector(); });
};

const MetaTypes metaTypes;

} // namespace

CompoundParameter::CompoundParameter(const QString& name, bool keyframeTogether, ParameterSet* parent,
                                     ParameterTree* tree)
    : ParameterWithoutTypeBase(false, false, parent), ParameterSet(QString(), tree),
      m_keyframeTogether(keyframeTogether) {
    CompoundParameter::setScriptName(name);
}

CompoundParameter::CompoundParameter(const CompoundParameter& other)
    : Bsc::MementoUndoable(other), ParameterWithoutTypeBase(other), ParameterSet(other),
      m_keyframeTogether(other.m_keyframeTogether) {
    PartWalk(*this).forEach([this](ParameterWithoutType& parameter) { addUpstreamParameter(parameter); });
}

CompoundParameter::~CompoundParameter() {
    announceDeletion();
    leaveSets();
    disconnectUpstream();
    // Observers of parts that are deleted with it must not meet a compound that is half destroyed.
    clearAllLists();
}

QList<ParameterWithoutType*> CompoundParameter::subparameters() const {
    QList<ParameterWithoutType*> list;
    for (const auto& parameter : parameters())
        list.append(parameter.get());
    return list;
}

void CompoundParameter::subparametersNotification(bool on) {
    for (const auto& parameter : parameters())
        parameter->enableNotifications(on);
}

bool CompoundParameter::mayTake(const ParameterWithoutType& parameter) const {
    const auto* const compound = dynamic_cast<const CompoundParameter*>(&parameter);
    return !compound || !compound->isOrContains(*this);
}

void CompoundParameter::addParameter(const boost::shared_ptr<ParameterWithoutType>& parameter) {
    if (!parameter)
        return;
    if (!mayTake(*parameter)) {
        qWarning() << "CompoundParameter:" << parameter->scriptName() << "contains" << scriptName()
                   << "and cannot be a part of it.";
        return;
    }
    const bool isNew = addUpstreamParameter(*parameter);
    try {
        ParameterSet::addParameter(parameter);
    } catch (...) {
        if (isNew)
            removeUpstreamParameter(*parameter);
        throw;
    }
}

void CompoundParameter::addParameter(ParameterWithoutType& parameter) {
    addParameter(boost::shared_ptr<ParameterWithoutType>(&parameter, [](ParameterWithoutType*) {}));
}

void CompoundParameter::setScriptName(const QString& name) {
    ParameterWithoutTypeBase::setScriptName(name);
    ParameterSet::setScriptName(name);
}

void CompoundParameter::setDisplayName(const QString& name) {
    setDisplayName(name, name);
}

void CompoundParameter::setDisplayName(const QString& name, const QString& displayName) {
    ParameterWithoutTypeBase::setDisplayName(displayName);
    ParameterSet::setDisplayName(name, displayName);
}

void CompoundParameter::assignName(const QString& name) {
    ParameterSet::assignName(name);
    ParameterWithoutTypeBase::setDisplayName(ParameterSet::displayName());
}

QVariant CompoundParameter::variantValue(const Context& context) const {
    Values values;
    for (const auto& parameter : parameters())
        values.append(parameter->variantValue(context));
    return QVariant::fromValue(values);
}

void CompoundParameter::setVariantValue(const QVariant& value, const Context& context) {
    if (!value.canConvert<Values>()) {
        qWarning() << "virtual void Prm::CompoundParameter::setVariantValue(const QVariant&, const Prm::Context&)"
                   << ": wrong value type.";
        return;
    }
    const auto values = value.value<Values>();
    if (static_cast<std::size_t>(values.size()) != parameters().size()) {
        qWarning() << "CompoundParameter::setVariantValue() number of parameters is not the same as values.";
        return;
    }
    const Context at = context;
    PartWalk(*this).forEach([&](ParameterWithoutType& parameter, std::size_t i) {
        parameter.setVariantValue(values.at(static_cast<int>(i)), at);
    });
}

/// A class of a host may make something else of the parts.
void CompoundParameter::explainTo(Explanation& explanation, const Context& context) const {
    Explanation::Step step;
    step.kind = Explanation::Parts;
    Values values;
    for (const auto& parameter : parameters()) {
        step.parts.push_back(explain(*parameter, context));
        values.append(step.parts.back().value);
    }
    if (typeid(*this) != typeid(CompoundParameter))
        step.value = variantValue(context, std::nothrow);
    if (!step.value.isValid())
        step.value = QVariant::fromValue(values);
    explanation.steps.push_back(std::move(step));
}

int CompoundParameter::qMetaType() const {
    return metaTypes.compound;
}

void CompoundParameter::calculateHash(Bsc::Hash&, const Context&) const {}

void CompoundParameter::assignFrom(const ParameterWithoutType& other) {
    ParameterWithoutTypeBase::assignFrom(other);
    ParameterSet::setScriptName(scriptName());
    ParameterSet::setDisplayName(displayName());
    if (const auto* const compound = dynamic_cast<const CompoundParameter*>(&other))
        m_keyframeTogether = compound->m_keyframeTogether;
}

void CompoundParameter::attachObserver(const QObject* observer, const char* slot) const {
    ParameterWithoutTypeBase::attachObserver(observer, slot);
    ParameterSet::attachObserver(observer, slot, true);
}

void CompoundParameter::detachObserver(const QObject* observer) const {
    ParameterWithoutTypeBase::detachObserver(observer);
    ParameterSet::detachObserver(observer, true);
}

void CompoundParameter::detachAllObservers() const {
    ParameterWithoutTypeBase::detachAllObservers();
    ParameterSet::detachAllObservers(true);
}

bool CompoundParameter::bStreamOut(QTextStream& stream, const QString& prefix, bool withName) const {
    const QString start = detail::lineStart(prefix, scriptName(), true);
    for (const auto& parameter : parameters())
        parameter->streamOut(stream, start, withName);
    return true;
}

bool CompoundParameter::bStreamOut(QTextStream& stream, const QString& prefix, bool withName) {
    return std::as_const(*this).bStreamOut(stream, prefix, withName);
}

bool CompoundParameter::setFromScriptString(const QString& line, const ProjectFileVersion& version) {
    const detail::LifeGuard guard(life());
    if (scriptName().isEmpty() && readByMembers(line, version))
        return true;
    return guard.alive() && ParameterWithoutTypeBase::setFromScriptString(line, version);
}

bool CompoundParameter::streamInValue(const QString& line, const ProjectFileVersion& version, TextConversion convert) {
    const detail::LifeGuard guard(life());
    bool taken = false;
    if (!convert) {
        taken = readByMembers(line, version);
    } else {
        PartWalk(*this).forEach([&](ParameterWithoutType& parameter) {
            QString rest;
            if (!taken && detail::afterName(line, parameter.scriptName(), rest))
                taken = parameter.streamInValue(rest, version, convert);
        });
    }
    return taken || (guard.alive() && ParameterWithoutTypeBase::streamInValue(line, version, convert));
}

} // namespace Prm
