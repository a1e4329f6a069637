#include "prm/ParameterWithoutType.h"

#include "host/bsc/CompositeCommand.h"
#include "prm/Explanation.h"
#include "prm/text/LineNotes.h"
#include "prm/text/LineParts.h"
#include "prm/untyped/MayWarn.h"
#include "prm/untyped/VirtualTable.h"

#include <QDebug>

namespace Prm {

namespace {

/// Of this class alone, as it is while its constructor runs.
std::atomic<const char*> ownTable{nullptr};

constexpr quint32 allTypes = (1u << ParameterChange::NUM_CHANGE_TYPES) - 1;

bool hasSwitch(ParameterChange::ChangeType type) {
    return type >= 0 && type < ParameterChange::NUM_CHANGE_TYPES;
}

bool isOn(quint32 switches, ParameterChange::ChangeType type) {
    return hasSwitch(type) && (switches & (1u << type)) != 0;
}

bool setSwitch(quint32& switches, ParameterChange::ChangeType type, bool on) {
    if (!hasSwitch(type))
        return false;
    const bool previous = isOn(switches, type);
    const quint32 bit = 1u << type;
    switches = on ? switches | bit : switches & ~bit;
    return previous;
}

/// Opens a parameter's signals for one emission, whatever the observers do to it.
class OpenSignals {
public:
    explicit OpenSignals(ParameterWithoutType& parameter) : m_parameter(parameter), m_guard(parameter) {
        m_parameter.blockSignals(false);
    }
    ~OpenSignals() {
        if (m_guard.alive())
            m_parameter.blockSignals(true);
    }
    Q_DISABLE_COPY(OpenSignals)

private:
    ParameterWithoutType& m_parameter;
    detail::LifeGuard m_guard;
};

} // namespace

bool ParameterWithoutType::s_processNotifications = true;

ParameterWithoutType::ParameterWithoutType(bool locked, bool hidden, ParameterSet* parent)
    : BasicParameter(parent), m_locked(locked), m_hidden(hidden), m_notificationEnabled(allTypes) {
    ownTable.store(detail::virtualTableOf(this), std::memory_order_relaxed);
}

ParameterWithoutType::ParameterWithoutType(const ParameterWithoutType& other)
    : BasicParameter(other), m_locked(false), m_hidden(false), m_notificationEnabled(allTypes) {
    initialise(other);
}

void ParameterWithoutType::initialise(bool locked, bool hidden, ParameterSet* parent) {
    m_locked = m_locked || locked;
    m_hidden = m_hidden || hidden;
    if (parent)
        setParentSet(parent);
}

void ParameterWithoutType::initialise(const ParameterWithoutType& other) {
    setStreamable(other.isStreamable());
    m_displayName = other.m_displayName;
    m_scriptName = other.m_scriptName;
    if (!other.extraData().additionalScriptNames.isEmpty())
        ownExtraData().additionalScriptNames = other.extraData().additionalScriptNames;
    copyOwnAttributes(other, NamePrefix::Copy);
}

ParameterWithoutType::~ParameterWithoutType() {
    dropLinks();
    leaveSets();
    announceDeletion();
    dropLinks();
    delete m_extraData.load();
}

const detail::ExtraData& ParameterWithoutType::extraData() const {
    // Never destroyed: parameters may outlive it at the end of a program.
    static const detail::ExtraData& none = *new detail::ExtraData;
    const detail::ExtraData* const made = m_extraData.load(std::memory_order_acquire);
    return made ? *made : none;
}

detail::ExtraData& ParameterWithoutType::ownExtraData() {
    detail::ExtraData* made = m_extraData.load(std::memory_order_relaxed);
    if (!made) {
        made = new detail::ExtraData;
        m_extraData.store(made, std::memory_order_release);
    }
    return *made;
}

void ParameterWithoutType::setExtraName(const QString& name) {
    if (!name.isNull() || !extraData().extraName.isNull())
        ownExtraData().extraName = name;
}

void ParameterWithoutType::setPendingMasterParameterId(const QString& id) {
    if (!id.isNull() || !extraData().pendingMasterParameterId.isNull())
        ownExtraData().pendingMasterParameterId = id;
    if (!id.isEmpty())
        detail::LineNotes::addMaster(*this, id);
}

void ParameterWithoutType::announceDeletion() noexcept {
    if (m_deletionAnnounced)
        return;
    m_deletionAnnounced = true;
    try {
        ParameterChange::parameterDeleted(*this);
    } catch (...) {
        if (detail::mayWarn())
            qWarning() << "ParameterWithoutType: an observer of the deletion of" << m_scriptName
                       << "threw an exception.";
    }
    leaveSets();
}

void ParameterWithoutType::takeOwnAttributes(const OwnAttributes& attributes) {
    m_locked = attributes.locked;
    m_hidden = attributes.hidden;
    setExtraName(attributes.extraName);
    m_namePrefix = attributes.namePrefix;
}

void ParameterWithoutType::copyOwnAttributes(const ParameterWithoutType& other, NamePrefix prefix) {
    OwnAttributes attributes = other.ownAttributes();
    if (prefix == NamePrefix::Keep)
        attributes.namePrefix = m_namePrefix;
    takeOwnAttributes(attributes);
}

void ParameterWithoutType::assignFrom(const ParameterWithoutType& other) {
    if (&other == this)
        return;
    copyOwnAttributes(other, NamePrefix::Keep);
    m_displayName = other.m_displayName;
    m_scriptName = other.m_scriptName;
    namesHaveChanged();
    if (!m_extraData.load() && !other.m_extraData.load())
        return;
    ownExtraData().viewSelector = other.extraData().viewSelector;
    ownExtraData().viewSelectorCompanion = other.extraData().viewSelectorCompanion;
}

const QString& ParameterWithoutType::scriptName() const {
    return m_scriptName;
}

bool ParameterWithoutType::setFromScriptString(const QString& line, const ProjectFileVersion& version) {
    // A copy: observers may change the caller's text. NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
    const QString whole = line;
    return readNamed(whole, version);
}

bool ParameterWithoutType::readLine(QStringView line, const ProjectFileVersion& version) {
    constexpr auto operation = &ParameterWithoutType::setFromScriptString;
    const char* const table = ownTable.load(std::memory_order_relaxed);
    const void* const byName = detail::implementationIn<ParameterWithoutType>(table, operation);
    const bool readsByName = byName && detail::implementationOf<ParameterWithoutType>(*this, operation) == byName;
    return readsByName ? readNamed(line, version) : setFromScriptString(line.toString(), version);
}

bool ParameterWithoutType::readNamed(QStringView line, const ProjectFileVersion& version) {
    QStringView rest;
    if (detail::afterName(line, m_scriptName, rest))
        return readRest(rest, version, {});
    // A copy: reading may notify observers, and those may add names.
    const QMap<QString, TextConversion> additionalNames = extraData().additionalScriptNames;
    for (auto name = additionalNames.cbegin(); name != additionalNames.cend(); ++name) {
        if (detail::afterName(line, name.key(), rest))
            return readRest(rest, version, name.value());
    }
    return false;
}

bool ParameterWithoutType::readRest(QStringView rest, const ProjectFileVersion& version,
                                    const TextConversion& convert) {
    return streamInValue(rest.toString(), version, convert);
}

void ParameterWithoutType::onUpstreamParameterChanged(Prm::ParameterChange&) {}

void ParameterWithoutType::setDisplayName(const QString& name) {
    m_displayName = name;
}

void ParameterWithoutType::setScriptName(const QString& name) {
    const QLatin1Char underscore('_');
    m_scriptName = name;
    m_scriptName.replace(QLatin1Char(' '), underscore).replace(QLatin1Char('\''), underscore);
    namesHaveChanged();
}

QString ParameterWithoutType::extendedName() const {
    return m_namePrefix + QLatin1Char('.') + m_scriptName;
}

void ParameterWithoutType::addAdditionalScriptName(const QString& name, const TextConversion& convert) {
    ownExtraData().additionalScriptNames.insert(name, convert);
    namesHaveChanged();
}

void ParameterWithoutType::hide(bool hidden) {
    if (m_hidden == hidden)
        return;
    m_hidden = hidden;
    ParameterChange::hiddenParameterChanged(*this);
}

void ParameterWithoutType::setLocked(bool locked) {
    if (m_locked == locked)
        return;
    m_locked = locked;
    ParameterChange::lockedParameterChanged(*this);
}

void ParameterWithoutType::forEachKeyframeTime(boost::function<void(const Context&)> function, const View& view) const {
    const View ofView = view;
    const unsigned int count = keyframeCount(ofView);
    for (unsigned int i = 0; i < count; ++i)
        function(keyframeTime(i, ofView));
}

void ParameterWithoutType::forEachKeyframeTime(boost::function<void(const Context&)> function) const {
    const std::vector<View> views = viewList();
    for (const View view : views)
        forEachKeyframeTime(function, view);
}

quint64 ParameterWithoutType::keyframeRevision() const {
    return 0;
}

boost::shared_ptr<Bsc::MementoBase> ParameterWithoutType::exportStateAround(const detail::Places&) const {
    return exportState();
}

const void* ParameterWithoutType::asTyped(const std::type_info&) const {
    return nullptr;
}

void ParameterWithoutType::explainTo(Explanation& explanation, const Context& context) const {
    Explanation::Step step;
    step.value = variantValue(context, std::nothrow);
    explanation.steps.push_back(std::move(step));
}

bool ParameterWithoutType::keyframeTogether() const {
    return false;
}

void ParameterWithoutType::retimeKeyframes(const boost::function<Time(Time)>& mapping) {
    adjustKeyframesTime(mapping);
}

void ParameterWithoutType::attachObserver(const QObject* observer, const char* slot) const {
    if (observer)
        connect(this, SIGNAL(changed(Prm::ParameterChange&)), observer, slot, Qt::DirectConnection);
}

void ParameterWithoutType::detachObserver(const QObject* observer) const {
    if (observer)
        disconnect(this, SIGNAL(changed(Prm::ParameterChange&)), observer, nullptr);
}

void ParameterWithoutType::detachAllObservers() const {
    disconnect(this, SIGNAL(changed(Prm::ParameterChange&)), nullptr, nullptr);
}

/// Connections are counted by `connectNotify`, unless a class overrides that.
bool ParameterWithoutType::mayHaveReceivers() const {
    constexpr auto operation = &ParameterWithoutType::connectNotify;
    const char* const table = ownTable.load(std::memory_order_relaxed);
    const void* const counts = detail::implementationIn<ParameterWithoutType>(table, operation);
    return m_lastConnected.load(std::memory_order_relaxed) != 0 || !counts ||
           detail::implementationOf<ParameterWithoutType>(*this, operation) != counts;
}

bool ParameterWithoutType::emits(ParameterChange::ChangeType type) const {
    return mayHaveReceivers() && notificationsEnabled(type) && (!signalsBlocked() || overridesBlockedSignals(type));
}

void ParameterWithoutType::emitChange(ParameterChange& change) {
    countChange(change.type);
    change.m_number = m_changes;
    if (!emits(change.type))
        return;
    if (!signalsBlocked()) {
        Q_EMIT changed(change);
    } else {
        const OpenSignals open(*this);
        Q_EMIT changed(change);
    }
}

void ParameterWithoutType::enableNotifications(bool enabled) {
    m_notificationEnabled = enabled ? allTypes : 0;
}

bool ParameterWithoutType::enableNotifications(ParameterChange::ChangeType type, bool enabled) {
    return setSwitch(m_notificationEnabled, type, enabled);
}

bool ParameterWithoutType::notificationsEnabled(ParameterChange::ChangeType type) const {
    return isOn(m_notificationEnabled, type);
}

bool ParameterWithoutType::overrideBlockedSignals(ParameterChange::ChangeType type, bool enabled) {
    return setSwitch(m_blockedSignalOverride, type, enabled);
}

bool ParameterWithoutType::overridesBlockedSignals(ParameterChange::ChangeType type) const {
    return isOn(m_blockedSignalOverride, type);
}

void ParameterWithoutType::AttachCommandRegistrationObserver(QObject* observer, const char* slot) {
    connect(this, SIGNAL(commandRegistrationChanged(Prm::ParameterChange&)), observer, slot, Qt::DirectConnection);
}

void ParameterWithoutType::DetachCommandRegistrationObserver(QObject* observer) {
    if (observer)
        disconnect(this, SIGNAL(commandRegistrationChanged(Prm::ParameterChange&)), observer, nullptr);
}

bool ParameterWithoutType::hasCommandRegistrationObserver() const {
    return receivers(SIGNAL(commandRegistrationChanged(Prm::ParameterChange&))) > 0;
}

void ParameterWithoutType::registerCompositeCommand(Bsc::CompositeCommand& command, const Context& context) {
    if (hasCommandRegistrationObserver())
        ParameterChange::commandRegistered(*this, command, context);
    else
        command.doIt();
}

} // namespace Prm
