#pragma once

#include "host/Export.h"

#include <QString>
#include <QVariant>

#include <functional>

namespace Product {

/// The settings of the running product.
///
/// \snippet host_services.cpp settings
/// \threads Any; a source is called on the thread that asks, with no lock held.
class PRM_HOST_EXPORT Settings {
public:
    using Source = std::function<QVariant(const QString& key, const QVariant& defaultValue, bool systemWide)>;

    /// The value stored under a key, or the default when nothing usable is stored there. With `systemWide` a key that
    /// the user has not set for this product is also looked up in what the user has set for the whole organisation, and
    /// then in what the machine sets for all users.
    ///
    /// Reads the `QSettings` of the organisation and application that `QCoreApplication` names, afresh each time.
    static QVariant value(const QString& key, const QVariant& defaultValue = QVariant(), bool systemWide = true);

    /// From now on `value` asks this function, which may throw and may be called from several threads at once. An
    /// invalid answer counts as nothing stored. Null puts `QSettings` back.
    static void replaceSource(Source source);
};

} // namespace Product
