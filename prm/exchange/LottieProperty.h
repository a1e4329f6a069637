#pragma once

#include "prm/KeyframeData.h"

#include <QString>
#include <QStringList>
#include <QVector>

#include <vector>

class QJsonObject;

namespace Prm::document {

/// One number over time, in the file's own frames; without keyframes, `value` throughout.
struct LottieCurve {
    double value = 0.0;
    QVector<KeyframeData<double>> keyframes;
};

/// An animatable property of a Lottie file as curves, one for each component.
struct LottieProperty {
    std::vector<LottieCurve> components;
    /// What is not as the file has it, in plain words.
    QStringList changes;
};

/// What project text, which writes six digits, makes of a property's keyframes.
struct LottieLosses {
    /// In plain words.
    QStringList texts;
    int movedKeyframes = 0;
    double farthestMove = 0.0;
};

/// Whether the object has the form of an animatable property: a value or keyframes, or the name of a shared one.
bool isLottieProperty(const QJsonObject& object);
/// Takes present and older forms of keyframes. Throws `Problem` with what keeps the property from being held.
LottieProperty readLottieProperty(const QJsonObject& json);
LottieLosses lossesInText(const LottieProperty& property);

} // namespace Prm::document
