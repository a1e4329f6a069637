#pragma once

#include "prm/KeyframeData.h"

#include <QString>
#include <QStringList>
#include <QVector>

#include <vector>

class QJsonObject;

namespace Tool {

/// One number over time, in the file's own frames; without keyframes, `value` throughout.
struct LottieCurve {
    double value = 0.0;
    QVector<Prm::KeyframeData<double>> keyframes;
};

/// An animatable property of a Lottie file as curves, one for each component.
struct LottieProperty {
    std::vector<LottieCurve> components;
    /// What is not as the file has it, in plain words.
    QStringList changes;
    /// Why it cannot be held; then there are no components.
    QString obstacle;
};

/// What project text, which writes six digits, makes of a property's keyframes.
struct LossInText {
    int shiftedTimes = 0;
    int mergedTimes = 0;
    double greatestShift = 0.0;
    int roundedHandles = 0;
};

/// Whether the object has the form of an animatable property: a value or keyframes, or the name of a shared one.
bool isLottieProperty(const QJsonObject& object);
/// Takes present and older forms of keyframes.
LottieProperty readLottieProperty(const QJsonObject& json);
LossInText lossInText(const LottieProperty& property);

} // namespace Tool
