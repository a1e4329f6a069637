#include "prm/StaticParameter.h"

#include "prm/ValueType.h"
#include "prm/text/LineNotes.h"
#include "prm/text/LineParts.h"
#include "prm/text/PlainNumbers.h"

#include <QDebug>
#include <boost/make_shared.hpp>

#include <algorithm>
#include <typeinfo>

namespace Prm {

namespace {

QString textOf(unsigned int value) {
    return QString::number(value);
}

QString textOf(const QString& value) {
    if (value.contains(QLatin1Char('\n')) || value.contains(QLatin1Char('\r')))
        qWarning() << "StaticParameter: a text with a line break will not be read back:" << value;
    return QLatin1Char('"') + value + QLatin1Char('"');
}

void readInto(unsigned int& value, const QString& text) {
    QString copy = text;
    QTextStream stream(&copy, QIODevice::ReadOnly);
    stream >> value;
    const bool isNumber = stream.status() == QTextStream::Ok && !text.contains(QLatin1Char('-'));
    if (!isNumber || !stream.readAll().trimmed().isEmpty())
        detail::LineNotes::addLoss("value", text, "is not a whole number from 0 on");
}

void readInto(QString& value, const QString& text) {
    const QLatin1Char quote('"');
    const bool quoted = text.startsWith(quote) && text.endsWith(quote);
    value = quoted ? text.mid(1, std::max(0, text.size() - 2)) : text;
}

} // namespace

template <class T> class StaticParameter<T>::MementoImpl : public Bsc::MementoBase {
public:
    MementoImpl(const QString& name, const T& held) : scriptName(name), value(held) {}

    const QString scriptName;
    const T value;
};

template <class T>
StaticParameter<T>::StaticParameter(const QString& name, ParameterSet* parent)
    : BasicParameter(parent), m_scriptName(name) {}

template <class T> StaticParameter<T>::~StaticParameter() {
    leaveSets();
}

template <class T>
bool StaticParameter<T>::bStreamOut(QTextStream& stream, const QString& prefix, bool withName) const {
    QString text = prefix;
    if (withName)
        text += m_scriptName + QLatin1Char('.');
    text += ParameterStrings::value + QLatin1Char('=') + textOf(value());
    const detail::PlainNumbers plain(stream);
    stream << text << Qt::endl;
    return true;
}

template <class T> const QString& StaticParameter<T>::scriptName() const {
    return m_scriptName;
}

template <class T> bool StaticParameter<T>::setFromScriptString(const QString& line, const ProjectFileVersion&) {
    QString rest;
    if (!detail::afterName(line, scriptName(), rest) || !detail::hasKey(rest, ParameterStrings::value))
        return false;
    T read{};
    readInto(read, detail::textAfter(line));
    setValue(read);
    return true;
}

template <class T> QVariant StaticParameter<T>::variantValue(const Context&) const {
    return ValueType<T>::toVariant(value());
}

template <class T> void StaticParameter<T>::setVariantValue(const QVariant& variant, const Context&) {
    setValue(ValueType<T>::fromVariant(variant));
}

template <class T> void StaticParameter<T>::setValue(const T& value) {
    doSetValue(value);
    Q_EMIT valueChanged();
}

template <class T> boost::shared_ptr<Bsc::MementoBase> StaticParameter<T>::exportState() const {
    return boost::make_shared<MementoImpl>(m_scriptName, value());
}

template <class T> void StaticParameter<T>::doImportState(boost::shared_ptr<Bsc::MementoBase> snapshot) {
    const auto* const memento = dynamic_cast<const MementoImpl*>(snapshot.get());
    if (!memento)
        throw std::bad_cast();
    m_scriptName = memento->scriptName;
    namesHaveChanged();
    setValue(memento->value);
}

template <class T>
VirtualParameter<T>::VirtualParameter(const QString& name, T& target, ParameterSet* parent)
    : StaticParameter<T>(name, parent), m_target(&target) {}

template <class T> VirtualParameter<T>::~VirtualParameter() = default;

template <class T>
OwnedStaticParameter<T>::OwnedStaticParameter(const QString& name, const T& value, ParameterSet* parent)
    : StaticParameter<T>(name, parent), m_value(value) {}

template <class T> OwnedStaticParameter<T>::~OwnedStaticParameter() = default;

template class StaticParameter<unsigned int>;
template class StaticParameter<QString>;
template class VirtualParameter<unsigned int>;
template class VirtualParameter<QString>;
template class OwnedStaticParameter<unsigned int>;
template class OwnedStaticParameter<QString>;

} // namespace Prm
