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
class State;
} // namespace detail

/// What every kind of parameter is, animated or not: a named value that can be read and written as a `QVariant`, sent
/// through project text, and captured for undo.
///
/// \snippet parameter_panel.cpp basic
/// \threads One at a time, that of the host which owns the parameter, except where a class says more.
class PRM_EXPORT BasicParameter : public QObject, virtual public Bsc::MementoUndoable, public detail::Mortal {
    Q_OBJECT

public:
    /// The set that owns the parameter may be null; it does not become the Qt parent.
    explicit BasicParameter(ParameterSet* parent);
    ~BasicParameter() override;

    /// Writes the parameter's lines, each after `prefix` and, if asked for, the script name and a dot.
    virtual bool bStreamOut(QTextStream& stream, const QString& prefix, bool withName) const = 0;
    /// Reads one line that begins with the script name and a dot; returns whether it was this parameter's.
    virtual bool setFromScriptString(const QString& line, const ProjectFileVersion& version) = 0;
    virtual const QString& scriptName() const = 0;
    virtual QVariant variantValue(const Context& context) const = 0;
    virtual void setVariantValue(const QVariant& value, const Context& context) = 0;
    /// As the throwing form; an invalid variant where that throws anything.
    virtual QVariant variantValue(const Context& context, const std::nothrow_t&) const;
    /// As the throwing form; every exception is swallowed.
    virtual void setVariantValue(const QVariant& value, const Context& context, const std::nothrow_t&);
    /// The id of the parameter's own type, 0 where none is registered.
    virtual int qMetaType() const;
    /// Views in their order, keyframes in the order of time within a view.
    virtual QVector<Context> allKeyframes() const;
    /// Adds the bytes of the value at the context.
    virtual void calculateHash(Bsc::Hash& hash, const Context& context) const;

    /// `bStreamOut`, but only for a streamable parameter; otherwise writes nothing and returns true.
    bool streamOut(QTextStream& stream, const QString& prefix, bool withName) const;

    bool isStreamable() const { return m_streamable; }
    void setStreamable(bool streamable) { m_streamable = streamable; }

    ParameterSet* parentSet() const { return m_parentSet; }
    void setParentSet(ParameterSet* parent) { m_parentSet = parent; }

Q_SIGNALS:
    /// Sent by static and virtual parameters after every change of their value; animated ones send
    /// `ParameterWithoutType::changed` instead.
    void valueChanged();

protected:
    /// Copies whether the parameter is streamable; a copy is in no set and has no connections.
    BasicParameter(const BasicParameter& other);

    /// Takes the parameter off all sets. Called by destructors of concrete classes, so that no set lists a parameter of
    /// which a part is gone. Allocates nothing.
    void leaveSets() noexcept;
    /// For whatever changes the script name, or the names under which lines are read.
    void namesHaveChanged() noexcept;

private:
    friend class ParameterSet;
    friend class detail::Invariants;
    friend class detail::State;

    ParameterSet* m_parentSet;
    bool isListedIn(const ParameterSet* set) const { return m_listedIn.contains(set); }
    /// Every set that lists the parameter, so that it can leave them when it dies.
    detail::Listings m_listedIn;
    bool m_streamable = true;
};

} // namespace Prm
