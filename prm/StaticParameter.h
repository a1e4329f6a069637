#pragma once

#include "prm/BasicParameter.h"
#include "prm/Export.h"
#include "prm/ProjectFileVersion.h"

#include <QString>

namespace Prm {

/// A setting that never animates: one value for all times and views, in one line of project text. Every successful set
/// sends `valueChanged()` once, after the value is stored, also when it is equal to the former one.
///
/// Provided for `unsigned int` (decimal) and `QString` (between double quotes, unescaped: a text with a line break
/// does not survive in project text).
///
/// \snippet parameter_panel.cpp static
/// \threads The owning thread only.
template <class T> class PRM_EXPORT StaticParameter : public BasicParameter {
public:
    ~StaticParameter() override;

    /// One line: the prefix, the name and a dot if asked for, "value=" and the value.
    bool bStreamOut(QTextStream& stream, const QString& prefix, bool withName) const override;
    /// Takes "<name>.value=<text>"; the key is compared without regard to case. What is no number counts as 0.
    bool setFromScriptString(const QString& line, const ProjectFileVersion& version) override;
    const QString& scriptName() const override;
    using BasicParameter::setVariantValue;
    using BasicParameter::variantValue;
    QVariant variantValue(const Context& context) const override;
    /// A variant that does not convert gives 0, or the empty text.
    void setVariantValue(const QVariant& variant, const Context& context) override;

    /// Stores the value and nothing else.
    virtual void doSetValue(const T& value) = 0;
    virtual void setValue(const T& value);
    virtual T value() const = 0;
    /// Script name and value.
    boost::shared_ptr<Bsc::MementoBase> exportState() const override;
    /// Throws `std::bad_cast` for a snapshot of another kind, and for null.
    void doImportState(boost::shared_ptr<Bsc::MementoBase> snapshot) override;

protected:
    explicit StaticParameter(const QString& scriptName, ParameterSet* parent = nullptr);

private:
    class MementoImpl;

    QString m_scriptName;
};

/// A static parameter whose value lives in a variable of someone else, which must outlive it.
///
/// \snippet parameter_panel.cpp static
/// \threads The owning thread only; the variable is read and written without a lock.
template <class T> class PRM_EXPORT VirtualParameter : public StaticParameter<T> {
public:
    VirtualParameter(const QString& scriptName, T& target, ParameterSet* parent = nullptr);
    ~VirtualParameter() override;

    void doSetValue(const T& value) override { *m_target = value; }
    T value() const override { return *m_target; }

private:
    T* m_target;
};

/// A static parameter that keeps its value itself.
///
/// \snippet parameter_panel.cpp static
template <class T> class PRM_EXPORT OwnedStaticParameter : public StaticParameter<T> {
public:
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
