#pragma once

#include "tool/ProjectText.h"
#include "tool/ValueKind.h"

#include <QString>
#include <QStringList>

#include <map>
#include <vector>

namespace Tool {

/// All that the lines of a parameter say, as texts that are equal when they mean the same.
struct ParameterState {
    struct Keyframe {
        double time = 0;
        QString value;
        /// The kind of the segment behind it, with the numbers of its shape.
        QString curve;
    };
    struct ViewData {
        /// Empty without one.
        QString value;
        std::vector<Keyframe> keys;
    };

    std::map<quint32, ViewData> views;
    QString before;
    QString after;
    QString master;
    bool isHidden = false;
    /// The lines that the parameter could not read.
    QStringList refused;
};

ParameterState stateOf(const ProjectText& text, int node, ValueKind kind);

} // namespace Tool
