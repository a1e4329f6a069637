#pragma once

// All of the library, and the short words in which tests and fuzz targets speak of it.

#include "host/bsc/CompositeCommand.h"
#include "host/bsc/Hash.h"
#include "prm/AnimationState.h"
#include "prm/CompoundParameter.h"
#include "prm/Explanation.h"
#include "prm/HandlesEdit.h"
#include "prm/KeyframeClipboard.h"
#include "prm/KeyframeSelectionEdit.h"
#include "prm/MoveKeyframeEdit.h"
#include "prm/MovedParameter.h"
#include "prm/NumericParameter.h"
#include "prm/ParameterEdits.h"
#include "prm/ParameterSet.h"
#include "prm/ParameterSetEdits.h"
#include "prm/ParameterTree.h"
#include "prm/ProjectFile.h"
#include "prm/ReshapingEdits.h"
#include "prm/SerialisedKeyframe.h"
#include "prm/StaticParameter.h"
#include "prm/Views.h"
#include "prm/project/Invariants.h"

#include <QDebug>
#include <QTextStream>
#include <boost/make_shared.hpp>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

namespace Prm {

using Number = NumericParameter<double>;
using Command = Bsc::CompositeCommand;

constexpr double infinity = std::numeric_limits<double>::infinity();

/// The context of a time in a view.
inline Context at(double time, quint32 view = 0) {
    return {Time::fromDouble(time), View(view)};
}

/// The context of the static value of a view.
inline Context still(quint32 view = 0) {
    return {Time::INVALID, View(view)};
}

/// Sets a value at each time.
template <class T>
void key(Parameter<T>& parameter, std::initializer_list<std::pair<double, T>> keyframes, quint32 view = 0) {
    for (const auto& [time, value] : keyframes)
        parameter.vSetValue(value, at(time, view));
}

/// What a parameter or a set writes after a prefix, with or without its own name or its subsets' prefixes.
template <class Writer> std::string lines(Writer& writer, const QString& prefix = {}, bool with = true) {
    QString text;
    QTextStream stream(&text);
    writer.bStreamOut(stream, prefix, with);
    return text.toStdString();
}

/// "time=value" of each keyframe.
inline std::string keyframesOf(const Number& number, quint32 view = 0) {
    QString text;
    for (unsigned i = 0; i < number.keyframeCount(View(view)); ++i) {
        const auto keyframe = number.keyframe(i, View(view));
        text += QString("%1=%2 ").arg(keyframe.time.toDouble()).arg(keyframe.value);
    }
    return text.toStdString();
}

inline ProjectFileVersion version(quint32 number = StreamVersion::latest) {
    ProjectFileVersion version;
    version.streamVersion = number;
    return version;
}

/// What is added to a hash, in hexadecimal digits.
template <class Add> QString hashOf(const Add& add) {
    Bsc::Hash hash;
    add(hash);
    return hash.result().toString();
}

/// As Qt prints the values one after another.
template <class... Values> std::string debugText(const Values&... values) {
    QString text;
    QDebug stream(&text);
    static_cast<void>((stream << ... << values));
    return text.trimmed().toStdString();
}

/// The message of the error that it throws, else nothing.
template <class Act> std::string errorOf(const Act& act) {
    try {
        act();
    } catch (const std::exception& error) {
        return error.what();
    }
    return {};
}

/// Keeps what Qt prints, one line each, while it lives. One at a time.
class Warnings {
public:
    Warnings() : m_former(qInstallMessageHandler(keep)) { text().clear(); }
    ~Warnings() { qInstallMessageHandler(m_former); }
    Q_DISABLE_COPY(Warnings)

    static QString& text() {
        static QString kept;
        return kept;
    }

private:
    static void keep(QtMsgType, const QMessageLogContext&, const QString& message) { text() += message + '\n'; }

    QtMessageHandler m_former;
};

} // namespace Prm
