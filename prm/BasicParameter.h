#pragma once

#include "host/bsc/MementoUndoable.h"
#include "prm/Context.h"
#include "prm/Export.h"
#include "prm/change/Mortal.h"
#include "prm/untyped/Listings.h"

#include <QObject>
#include <QString>
#include <QVariant>
#include <QVector>

#include <new>

class QTextStream;

namespace Bsc {
class Hash;
}

namespace Prm {

class ParameterSet;
class ProjectFileVersion;

namespace detail {
class Invariants;
class ReachOfChange;
class State;
} // namespace detail

/// The base of all parameters, animatable or not: a named value that is read and written as a `QVariant` and as project
/// text, and has snapshots for undo.
///
/// \snippet parameter_panel.cpp basic
/// \threads The owning thread only, unless a derived class says more.
class PRM_EXPORT BasicParameter : public QObject, virtual public Bsc::MementoUndoable, public detail::Mortal {
    Q_OBJECT

public:
    /// The parent set may be null. It is not the Qt parent.
    explicit BasicParameter(ParameterSet* parent);
    ~BasicParameter() override;

    /// Writes the parameter's lines, each after `prefix` and, if `withName`, the script name and a dot.
    virtual bool bStreamOut(QTextStream& stream, const QString& prefix, bool withName) const = 0;
    /// Reads one line that begins with the script name and a dot; returns whether it did.
    virtual bool setFromScriptString(const QString& line, const ProjectFileVersion& version) = 0;
    /// The name in project text and scripts.
    virtual const QString& scriptName() const = 0;
    /// The value at the context. May throw.
    virtual QVariant variantValue(const Context& context) const = 0;
    /// Sets the value at the context. May throw.
    virtual void setVariantValue(const QVariant& value, const Context& context) = 0;
    /// The same without exceptions: an invalid variant if the throwing form throws.
    virtual QVariant variantValue(const Context& context, const std::nothrow_t&) const;
    /// The same without exceptions: those of the throwing form are swallowed.
    virtual void setVariantValue(const QVariant& value, const Context& context, const std::nothrow_t&);
    /// The Qt meta-type id of the parameter's class, 0 if it has none. Here: 0.
    virtual int qMetaType() const;
    /// The keyframes of all views, ascending in time within a view. Here: none.
    virtual QVector<Context> allKeyframes() const;
    /// Adds the bytes of the value at the context. Here: nothing.
    virtual void calculateHash(Bsc::Hash& hash, const Context& context) const;

    /// Calls `bStreamOut` if the parameter is streamable; otherwise writes nothing and returns true.
    bool streamOut(QTextStream& stream, const QString& prefix, bool withName) const;

    /// Whether the parameter is written to project text. True for a new parameter.
    bool isStreamable() const { return m_streamable; }
    /// Sets whether the parameter is written to project text. Emits nothing.
    void setStreamable(bool streamable) { m_streamable = streamable; }

    /// The set given to the constructor, otherwise the first set that the parameter was added to; may be null.
    ParameterSet* parentSet() const { return m_parentSet; }
    /// The names of the sets that contain the parameter, from the topmost on, and its own, joined by dots. Empty names
    /// are left out. Of several sets that list it, the parent set, otherwise the first.
    QString path() const;
    /// Sets the parent set; does not add the parameter to it.
    void setParentSet(ParameterSet* parent) { m_parentSet = parent; }

Q_SIGNALS:
    /// Emitted by static parameters after every change of their value. Animatable ones emit
    /// `ParameterWithoutType::changed` instead.
    void valueChanged();

protected:
    /// Copies whether the parameter is streamable. The copy has no set and no connections.
    BasicParameter(const BasicParameter& other);

    /// Removes the parameter from all sets. Destructors of concrete classes call it first, so that no set lists a
    /// parameter that is partly destroyed. Allocates nothing.
    void leaveSets() noexcept;
    /// To be called after a change of the script name, or of the names under which lines are read.
    void namesHaveChanged() noexcept;

private:
    friend class ParameterSet;
    friend class detail::Invariants;
    friend class detail::ReachOfChange;
    friend class detail::State;

    ParameterSet* m_parentSet;
    bool isListedIn(const ParameterSet* set) const { return m_listedIn.contains(set); }
    /// Every set that lists the parameter, which its destructor removes it from.
    detail::Listings m_listedIn;
    bool m_streamable = true;
};

} // namespace Prm
