#pragma once

#include "prm/BasicParameter.h"
#include "prm/Export.h"
#include "prm/ProjectFileVersion.h"

#include <QString>

namespace Prm {

/// A parameter that does not animate: one value for all times and views, in one line of project text. Setting the value
/// emits `valueChanged()` once, after the value is stored, also if it is the same.
///
/// Provided for `unsigned int` (decimal) and `QString` (between double quotes, not escaped: a text with a line break
/// cannot be read back from project text).
///
/// \snippet parameter_panel.cpp static
/// \threads The owning thread only.
template <class T> class PRM_EXPORT StaticParameter : public BasicParameter {
public:
    ~StaticParameter() override;

    /// Writes one line: the prefix, if `withName` the name and a dot, "value=" and the value.
    bool bStreamOut(QTextStream& stream, const QString& prefix, bool withName) const override;
    /// Reads "<name>.value=<text>"; the key is not case-sensitive. A text that is no number is read as 0.
    bool setFromScriptString(const QString& line, const ProjectFileVersion& version) override;
    const QString& scriptName() const override;
    using BasicParameter::setVariantValue;
    using BasicParameter::variantValue;
    QVariant variantValue(const Context& context) const override;
    /// A variant that does not convert sets 0 or the empty text.
    void setVariantValue(const QVariant& variant, const Context& context) override;

    /// Stores the value; emits nothing.
    virtual void doSetValue(const T& value) = 0;
    /// Calls `doSetValue`, then emits `valueChanged()`.
    virtual void setValue(const T& value);
    /// The stored value.
    virtual T value() const = 0;
    /// A snapshot of script name and value.
    boost::shared_ptr<Bsc::MementoBase> exportState() const override;
    /// Restores a snapshot. Throws `std::bad_cast` for a snapshot of another kind, and for null.
    void doImportState(boost::shared_ptr<Bsc::MementoBase> snapshot) override;

protected:
    explicit StaticParameter(const QString& scriptName, ParameterSet* parent = nullptr);

private:
    class MementoImpl;

    QString m_scriptName;
};

/// A static parameter whose value is a variable of the host, which must outlive the parameter.
///
/// \snippet parameter_panel.cpp static
/// \threads The owning thread only; the variable is read and written without a lock.
template <class T> class PRM_EXPORT VirtualParameter : public StaticParameter<T> {
public:
    /// `target` must outlive the parameter; the parent set may be null.
    VirtualParameter(const QString& scriptName, T& target, ParameterSet* parent = nullptr);
    ~VirtualParameter() override;

    void doSetValue(const T& value) override { *m_target = value; }
    T value() const override { return *m_target; }

private:
    T* m_target;
};

/// A static parameter that stores its value itself.
///
/// \snippet parameter_panel.cpp static
template <class T> class PRM_EXPORT OwnedStaticParameter : public StaticParameter<T> {
public:
    /// The parent set may be null.
    explicit OwnedStaticParameter(const QString& scriptName, const T& value = T(), ParameterSet* parent = nullptr);
    ~OwnedStaticParameter() override;

    void doSetValue(const T& value) override { m_value = value; }
    T value() const override { return m_value; }

private:
    T m_value;
};

extern template class StaticParameter<unsigned int>;
extern template class StaticParameter<QString>;
extern template class VirtualParameter<unsigned int>;
extern template class VirtualParameter<QString>;
extern template class OwnedStaticParameter<unsigned int>;
extern template class OwnedStaticParameter<QString>;

} // namespace Prm
