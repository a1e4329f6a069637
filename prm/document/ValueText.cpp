#include "prm/document/ValueText.h"

#include "prm/ValueType.h"

#include <QByteArray>
#include <QPointF>
#include <QStringList>

#include <array>
#include <charconv>
#include <cmath>
#include <limits>

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

double decimalFrame(double time) {
    constexpr auto farthest = static_cast<double>(std::numeric_limits<float>::max());
    const auto single = static_cast<float>(std::abs(time) <= farthest ? time : 0.0);
    if (static_cast<double>(single) != time)
        return time;
    std::array<char, 64> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), single).ptr;
    return QByteArray(text.data(), static_cast<int>(end - text.data())).toDouble();
}

} // namespace Prm::document
