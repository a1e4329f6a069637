#include "prm/ParameterStrings.h"

namespace Prm::ParameterStrings {

const QString keyframes = QStringLiteral("keyframes");
const QString isKeyframed = QStringLiteral("keyframed");
const QString views = QStringLiteral("views");
const QString value = QStringLiteral("value");
const QString hidden = QStringLiteral("hidden");
const QString before = QStringLiteral("before");
const QString after = QStringLiteral("after");
const QString masterParameterId = QStringLiteral("MasterParameterId");
const QString bezierKey = QStringLiteral("BezierKey");
const QString key = QStringLiteral("Key");
const QString constant = QStringLiteral("Constant");
const QString linear = QStringLiteral("Linear");
const QString bezier = QStringLiteral("Bezier");
const QString custom = QStringLiteral("Custom");

} // namespace Prm::ParameterStrings
