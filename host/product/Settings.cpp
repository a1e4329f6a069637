#include "host/product/Settings.h"

#include "host/product/Replaceable.h"

#include <QSettings>

#include <utility>

namespace Product {

namespace {

QVariant storedValue(const QString& key, const QVariant& defaultValue, bool systemWide) {
    if (key.isEmpty())
        return defaultValue;
    QSettings settings;
    settings.setFallbacksEnabled(systemWide);
    return settings.value(key, defaultValue);
}

detail::Replaceable<QVariant(const QString&, const QVariant&, bool)>& source() {
    static detail::Replaceable<QVariant(const QString&, const QVariant&, bool)> instance(storedValue);
    return instance;
}

} // namespace

QVariant Settings::value(const QString& key, const QVariant& defaultValue, bool systemWide) {
    const QVariant answer = source()(key, defaultValue, systemWide);
    return answer.isValid() ? answer : defaultValue;
}

void Settings::replaceSource(Source newSource) {
    source().replace(std::move(newSource));
}

} // namespace Product
