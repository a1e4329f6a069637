#pragma once

#include "prm/exchange/ImportNames.h"
#include "prm/exchange/LottieProperty.h"

#include <QString>
#include <boost/shared_ptr.hpp>

namespace Prm {
class ParameterSet;
}

namespace Prm::document {

/// A set that is being filled: every member gets a name that nothing else in it has.
class ImportedSet {
public:
    /// The root: it has no name.
    ImportedSet();

    /// A set for this one, not listed yet.
    ImportedSet makeSubset(const QString& wantedName, const QString& displayName = {});
    /// The same as a compound, which takes numbers only.
    ImportedSet makeCompound(const QString& wantedName);
    /// Lists what was made for this one.
    void add(const ImportedSet& made);
    /// These return the path of what was added.
    QString addCurve(const QString& wantedName, const LottieCurve& curve);
    QString addStillNumber(const QString& wantedName, double value);
    QString addText(const QString& wantedName, const QString& text);

    const QString& path() const { return m_path; }
    bool isEmpty() const;
    const boost::shared_ptr<ParameterSet>& set() const { return m_set; }

private:
    QString pathOf(const QString& name) const;
    template <class T> QString addParameter(const boost::shared_ptr<T>& parameter);

    boost::shared_ptr<ParameterSet> m_set;
    QString m_path;
    ImportNames m_names;
};

} // namespace Prm::document
