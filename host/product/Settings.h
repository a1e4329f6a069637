#pragma once

#include "host/Export.h"

#include <QString>
#include <QVariant>

#include <functional>

namespace Product {

/// The settings of the running product.
///
/// \snippet host_services.cpp settings
/// \threads Any. A source is called on the calling thread, without a lock.
class PRM_HOST_EXPORT Settings {
public:
    using Source = std::function<QVariant(const QString& key, const QVariant& defaultValue, bool systemWide)>;

    /// The value stored under a key, or the default if nothing usable is stored there. With `systemWide`, a key that
    /// the user has not set for this product is searched in the user's settings for the whole organisation, and then in
    /// the settings for all users of the machine.
    ///
    /// Reads the `QSettings` of the organisation and application that `QCoreApplication` names, at each call.
    static QVariant value(const QString& key, const QVariant& defaultValue = QVariant(), bool systemWide = true);

    /// Sets a function that `value` calls from now on. It may throw, and may be called from several threads at once. An
    /// invalid result means that nothing is stored. Null restores `QSettings`.
    static void replaceSource(Source source);
};

} // namespace Product
