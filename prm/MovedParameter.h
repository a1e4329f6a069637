#pragma once

#include "prm/BasicParameter.h"
#include "prm/Export.h"
#include "prm/ProjectFileVersion.h"

#include <QPointer>
#include <QString>
#include <boost/function.hpp>

namespace Prm {

/// Stands in a set under a parameter's old script name: takes the lines that old files carry under it, and passes them
/// to the parameter that now holds the value, its target, as soon as both are known. Writes nothing itself.
///
/// Of several lines the last one is kept; while a target is set, each is passed on. A target that has died counts as
/// none.
///
/// \snippet moved_parameter.cpp converted
/// \threads The owning thread, which is that of its target as well.
class PRM_EXPORT MovedParameter : public BasicParameter {
public:
    /// Gets the target, the line under the target's own name, and the version of the file; returns whether it was
    /// taken.
    using Migration = boost::function<bool(BasicParameter*, const QString&, const ProjectFileVersion&)>;

    explicit MovedParameter(const QString& oldScriptName);
    /// Warns of a line that was read and never passed on for want of a target.
    ~MovedParameter() override;

    const QString& scriptName() const override;
    bool setFromScriptString(const QString& line, const ProjectFileVersion& version) override;
    /// Passes a line that was read before on at once, and returns whether it was taken. A target that would lead back
    /// here, through other moved parameters, is refused with a warning.
    bool setTargetParam(BasicParameter& target);
    /// Replaces the target's own `setFromScriptString`; a line that was read is passed on at once, if there is a
    /// target.
    bool setMigrationFunction(Migration migration);
    /// Throws `boost::bad_function_call` for an empty migration function. False without a target.
    bool passValueToTargetParameter() const;
    /// Whether a line was read for which there has never been a target.
    bool isWaiting() const { return !m_hadTarget && !m_streamedText.isEmpty(); }

    bool bStreamOut(QTextStream& stream, const QString& prefix, bool withName) const override;
    using BasicParameter::setVariantValue;
    using BasicParameter::variantValue;
    // The target's; nothing without one.
    QVariant variantValue(const Context& context) const override;
    void setVariantValue(const QVariant& value, const Context& context) override;
    QVector<Context> allKeyframes() const override;
    /// Null: there is no state.
    boost::shared_ptr<Bsc::MementoBase> exportState() const override;
    void doImportState(boost::shared_ptr<Bsc::MementoBase> snapshot) override;

private:
    bool leadsBack(const BasicParameter& target) const;

    QString m_scriptName;
    QPointer<BasicParameter> m_target;
    bool m_hadTarget = false;
    QString m_streamedText;
    ProjectFileVersion m_streamedVersion;
    Migration m_migration;
};

} // namespace Prm
