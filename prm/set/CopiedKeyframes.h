#pragma once

#include "prm/Interpolation.h"
#include "prm/KeyframeClipboard.h"
#include "prm/Time.h"
#include "prm/View.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace Prm {

class ParameterSet;
class ParameterWithoutType;

namespace detail {

/// What a text of copied keyframes has of one parameter.
struct CopiedParameter {
    struct OfView {
        View view;
        /// Lines of project text without view and name.
        QStringList keyframes;
        /// Null if there is none.
        QString staticText;
    };

    QString path;
    QString kind;
    std::vector<OfView> views;
    Extrapolation before = Extrapolation::Constant;
    Extrapolation after = Extrapolation::Constant;
};

/// A parameter that can take keyframes, with its path below a set. Part of a compound, or itself the whole.
struct PasteTarget {
    ParameterWithoutType* parameter;
    QString path;
    ParameterWithoutType* whole;
    /// The names from the whole to the parameter, each followed by a dot.
    QString nameInWhole;
    QString kind;
};

/// Those of the set and its subsets, in the order of project text.
std::vector<PasteTarget> pasteTargets(const ParameterSet& root);

/// The name of the type of a parameter's values.
QString valueKindOf(const ParameterWithoutType& parameter);

/// Whether project text can have a keyframe at the time.
bool mayBePasted(Time time);

} // namespace detail

struct KeyframeClipboard::Contents {
    std::vector<detail::CopiedParameter> parameters;
    /// Of all keyframes; invalid without any.
    Time first{Time::INVALID};
    Time last{Time::INVALID};
};

} // namespace Prm
