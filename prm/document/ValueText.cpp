#include "prm/document/ValueText.h"

#include "prm/ValueType.h"

#include <QPointF>
#include <QStringList>

namespace Prm::document {

namespace {

template <class T> QString valueText(const QVariant& value) {
    QString text;
    ValueType<T>::write(text, value.value<T>());
    return text;
}

} // namespace

QString plainText(const QVariant& value) {
    switch (value.userType()) {
    case QMetaType::Bool:
        return valueText<bool>(value);
    case QMetaType::Double:
        return valueText<double>(value);
    case QMetaType::QPointF:
        return valueText<QPointF>(value);
    case QMetaType::QVariantList: {
        QStringList texts;
        for (const QVariant& part : value.toList())
            texts.append(plainText(part));
        return texts.join(", ");
    }
    default:
        return value.toString();
    }
}

} // namespace Prm::document
