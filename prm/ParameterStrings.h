#pragma once

#include "prm/Export.h"

#include <QString>

/// The key texts of the project format.
namespace Prm::ParameterStrings {

PRM_EXPORT extern const QString keyframes;
PRM_EXPORT extern const QString isKeyframed;
PRM_EXPORT extern const QString views;
PRM_EXPORT extern const QString value;
PRM_EXPORT extern const QString hidden;
PRM_EXPORT extern const QString before;
PRM_EXPORT extern const QString after;
PRM_EXPORT extern const QString masterParameterId;
PRM_EXPORT extern const QString bezierKey;
PRM_EXPORT extern const QString key;
PRM_EXPORT extern const QString constant;
PRM_EXPORT extern const QString linear;
PRM_EXPORT extern const QString bezier;
PRM_EXPORT extern const QString custom;

} // namespace Prm::ParameterStrings
