#pragma once

#include "prm/Export.h"
#include "prm/Time.h"
#include "prm/View.h"
#include "prm/document/FileValue.h"

#include <QVariant>
#include <QVector>
#include <boost/shared_ptr.hpp>

#include <functional>
#include <memory>

namespace Prm {
class ParameterWithoutType;
} // namespace Prm

namespace Prm::document {

class FileParameter;

/// The values at times, in their order: numbers, switches, texts, points.
using Sampler = std::function<QVector<QVariant>(const QVector<Time>& times, View view)>;

/// A parameter read as values of its kind.
struct TypedParameter {
    /// Gives nulls where values are of no known type.
    Sampler sample;
    /// A parameter of the library's; null where values are of no known type.
    std::shared_ptr<ParameterWithoutType> parameter;

    /// The view whose data the view shows: its own, otherwise those of the first view with data.
    PRM_EXPORT View viewWithData(View view) const;
};

/// How the values of a parameter are read: a row of one table.
struct PRM_EXPORT ValueKind {
    static const ValueKind& opaque;         ///< listed and kept, but not evaluated
    static const ValueKind& text;           ///< the first value is between double quotes
    static const ValueKind& number;         ///< one number each
    static const ValueKind& numberOrSwitch; ///< 0 and 1 alone: numbers until the user says what they are
    static const ValueKind& point;          ///< two numbers each

    /// With a "?" where it is not settled.
    const char* name;
    /// Whether a value, without blanks around it, looks like one of this kind. The first row that says so counts.
    bool (*isLike)(const QString& text);
    /// Whether the user can say that values are of this kind.
    bool canBeTold;
    /// Whether the values are one number each, to which an offset can be added.
    bool isNumeric;
    bool canBeDrawn;
    QVariant (*value)(const QString& text);
    /// The same text for all ways of writing a value.
    QString (*normalised)(const QString& text);
    /// What a person would write, as a file has it. Throws `Problem`.
    QString (*written)(const QString& given, const QString& path);
    TypedParameter (*typed)(const FileParameter& parameter);
    /// A parameter of that name without data; null where values are of no known type.
    boost::shared_ptr<ParameterWithoutType> (*made)(const QString& name);
};

using Kind = const ValueKind*;

/// The kind of one value, as a guess.
PRM_EXPORT Kind kindOfValue(const QString& text);
/// The kind of values of two kinds. A text that begins as one stays one.
PRM_EXPORT Kind commonKind(Kind a, Kind b);
/// The kind of that name, if the user can choose it, otherwise null.
PRM_EXPORT Kind kindToldAs(const QString& name);

/// The format holds infinite values and such as are no number, but no curve goes through them. Throws `Problem`.
PRM_EXPORT double finiteNumber(const QString& text, const QString& path);

} // namespace Prm::document
