#include "prm/exchange/ImportedSet.h"

#include "prm/CompoundParameter.h"
#include "prm/NumericParameter.h"
#include "prm/ParameterSet.h"

#include <boost/make_shared.hpp>
#include <boost/pointer_cast.hpp>

namespace Prm::document {

using Number = NumericParameter<double>;

ImportedSet::ImportedSet() : m_set(boost::make_shared<ParameterSet>()) {}

QString ImportedSet::pathOf(const QString& name) const {
    return m_path.isEmpty() ? name : m_path + '.' + name;
}

bool ImportedSet::isEmpty() const {
    return m_set->parameters().empty() && m_set->subsets().empty();
}

ImportedSet ImportedSet::makeSubset(const QString& wantedName, const QString& displayName) {
    const QString name = m_names.take(wantedName);
    ImportedSet subset;
    subset.m_set->setScriptName(name);
    subset.m_set->setDisplayName(onOneLine(displayName));
    subset.m_path = pathOf(name);
    return subset;
}

ImportedSet ImportedSet::makeCompound(const QString& wantedName) {
    const QString name = m_names.take(wantedName);
    ImportedSet compound;
    compound.m_set = boost::make_shared<CompoundParameter>(name);
    compound.m_path = pathOf(name);
    return compound;
}

void ImportedSet::add(const ImportedSet& made) {
    if (const auto compound = boost::dynamic_pointer_cast<CompoundParameter>(made.m_set))
        m_set->addParameter(compound);
    else
        m_set->addParameterSet(made.m_set);
}

template <class T> QString ImportedSet::addParameter(const boost::shared_ptr<T>& parameter) {
    m_set->addParameter(parameter);
    return pathOf(parameter->scriptName());
}

QString ImportedSet::addCurve(const QString& wantedName, const LottieCurve& curve) {
    const auto number = boost::make_shared<Number>(m_names.take(wantedName), curve.value);
    number->vSetValue(curve.value, Context(Time::INVALID));
    for (const auto& key : curve.keyframes) {
        const int index = number->vSetValue(key.value, key.time);
        number->vSetInterpolationData(key.interpolationData, static_cast<unsigned int>(index), View());
    }
    return addParameter(number);
}

QString ImportedSet::addStillNumber(const QString& wantedName, double value) {
    const auto number = boost::make_shared<Number>(m_names.take(wantedName), value, Splittable);
    number->vSetValue(value, Context());
    return addParameter(number);
}

QString ImportedSet::addText(const QString& wantedName, const QString& text) {
    const auto parameter = boost::make_shared<Parameter<QString>>(m_names.take(wantedName), text, Splittable);
    parameter->vSetValue(text, Context());
    return addParameter(parameter);
}

} // namespace Prm::document
