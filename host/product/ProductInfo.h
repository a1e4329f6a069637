#pragma once

#include "host/Export.h"

#include <QString>

#include <functional>

/// What Prm needs to know of the product that it is a part of.
namespace Product {

/// The name of the product, its version (dotted, such as "4.1.2") and its build number (digits), as they are written
/// into project files. May be called from any thread.
///
/// `application` names a product of the host; empty means the running program. Here a name that is given is returned,
/// and version and build number are always those of the running program:
/// - name: `QCoreApplication::applicationName`, or "unknown";
/// - version: `QCoreApplication::applicationVersion`, or "0.0.0";
/// - build number: the last digits in a row of that version ("4.1.2 build 812" gives "812"), or "0".
///
/// None is ever empty, even without an application object.
PRM_HOST_EXPORT QString qstrGetProductName(const QString& application);
PRM_HOST_EXPORT QString qstrGetProductVersion(const QString& application);
PRM_HOST_EXPORT QString qstrGetProductBuildNumber(const QString& application);

using ProductTextSource = std::function<QString(const QString& application)>;

/// Sets a function whose result the operation of that name returns from now on, empty texts included. The function may
/// throw, and may be called from several threads at once. Null restores the results above.
PRM_HOST_EXPORT void replaceProductName(ProductTextSource source);
PRM_HOST_EXPORT void replaceProductVersion(ProductTextSource source);
PRM_HOST_EXPORT void replaceProductBuildNumber(ProductTextSource source);

} // namespace Product
