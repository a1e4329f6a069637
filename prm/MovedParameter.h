#pragma once

#include "prm/BasicParameter.h"
#include "prm/Export.h"
#include "prm/ProjectFileVersion.h"

#include <QPointer>
#include <QString>
#include <boost/function.hpp>

namespace Prm {

/// A placeholder in a set under a parameter's old script name. It reads the lines that old files have under that name,
/// and passes them to its target, the parameter that has the value now, as soon as both are known. It writes nothing.
///
/// While a target is set, each line is passed on. Without one the last line is kept; `ProjectFile` reports those that
/// it has replaced. A target that was deleted counts as none.
///
/// \snippet moved_parameter.cpp converted
/// \threads The owning thread, which is that of its target as well.
class PRM_EXPORT MovedParameter : public BasicParameter {
public:
    /// Receives the target, the line under the target's own name, and the version of the file; returns whether the line
    /// was taken.
    using Migration = boost::function<bool(BasicParameter*, const QString&, const ProjectFileVersion&)>;

    /// Without a target.
    explicit MovedParameter(const QString& oldScriptName);
    /// Warns of a line that no target has taken, unless there is a target.
    ~MovedParameter() override;

    const QString& scriptName() const override;
    bool setFromScriptString(const QString& line, const ProjectFileVersion& version) override;
    /// Sets the target. Passes on a line that was read before, and returns whether the target took it. Ignores a target
    /// that leads back to this one, directly or through other moved parameters, with a warning.
    bool setTargetParam(BasicParameter& target);
    /// Sets a function to be called instead of the target's `setFromScriptString`. Passes on a line that was read
    /// before if there is a target, and returns whether it was taken.
    bool setMigrationFunction(Migration migration);
    /// Passes on the line that was read; returns whether it was taken, false without a target. Throws
    /// `boost::bad_function_call` for an empty migration function.
    bool passValueToTargetParameter() const;
    /// Whether a line was read without a target, and none has taken it since.
    bool isWaiting() const { return m_isWaiting; }

    bool bStreamOut(QTextStream& stream, const QString& prefix, bool withName) const override;
    using BasicParameter::setVariantValue;
    using BasicParameter::variantValue;
    /// \name Values
    /// Those of the target; without one, queries return nothing and edits do nothing.
    //@{
    QVariant variantValue(const Context& context) const override;
    void setVariantValue(const QVariant& value, const Context& context) override;
    QVector<Context> allKeyframes() const override;
    //@}
    /// Null: there is no state.
    boost::shared_ptr<Bsc::MementoBase> exportState() const override;
    void doImportState(boost::shared_ptr<Bsc::MementoBase> snapshot) override;

private:
    bool leadsBack(const BasicParameter& target) const;

    QString m_scriptName;
    QPointer<BasicParameter> m_target;
    mutable bool m_isWaiting = false;
    QString m_streamedText;
    ProjectFileVersion m_streamedVersion;
    Migration m_migration;
};

} // namespace Prm
