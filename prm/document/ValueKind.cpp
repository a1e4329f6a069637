#include "prm/document/ValueKind.h"

#include "prm/NumericParameter.h"
#include "prm/document/FileParameter.h"
#include "prm/document/Problem.h"
#include "prm/text/NumberText.h"

#include <boost/make_shared.hpp>

#include <algorithm>
#include <cmath>

namespace Prm::document {

namespace {

template <class T> QVariant valueOf(const QString& text) {
    return QVariant::fromValue(ValueType<T>::read(text));
}

template <class T> QString writtenAs(const T& value) {
    QString text;
    ValueType<T>::write(text, value);
    return text;
}

template <class T> QString rewritten(const QString& text) {
    return writtenAs(ValueType<T>::read(text));
}

QString trimmed(const QString& text) {
    return text.trimmed();
}

QString refused(const QString& /*given*/, const QString& path) {
    throw Problem("%1: its values are of no known type, so none can be set; --type gives one", path);
}

QString writtenText(const QString& given, const QString& /*path*/) {
    return writtenAs(given);
}

QString writtenNumber(const QString& given, const QString& path) {
    return writtenAs(finiteNumber(given, path));
}

QString writtenPoint(const QString& given, const QString& path) {
    const QStringList parts = given.simplified().split(' ');
    if (parts.size() != 2)
        throw Problem("%1: '%2' is not a point (two numbers)", path, given);
    return writtenAs(QPointF(finiteNumber(parts[0], path), finiteNumber(parts[1], path)));
}

QString writtenSwitch(const QString& given, const QString& path) {
    if (given != "0" && given != "1")
        throw Problem("%1: '%2' is not a switch (0 or 1)", path, given);
    return given;
}

/// A parameter of the library's, with the keyframes and values of the file as what they mean.
template <class Parameter, class T> std::shared_ptr<Parameter> typed(const FileParameter& file) {
    const auto valueOf = [&](const FileValue& value) {
        return value.text.isNull() ? T() : ValueType<T>::read(file.shown(value.text));
    };
    auto parameter = std::make_shared<Parameter>();
    const FileViews views = file.views();
    for (const auto& [id, data] : views) {
        const View view(id);
        parameter->vSetValue(valueOf(data.value), {Time::INVALID, view});
        for (const FileKeyframe& key : data.keys)
            parameter->vSetValue(valueOf(key.value), {key.time, view});
        // Appending a keyframe shapes the segment before it.
        for (std::size_t i = 0; i < data.keys.size(); ++i)
            parameter->vSetInterpolationData(data.keys[i].interpolationData, static_cast<unsigned int>(i), view);
    }
    // The first view that is given data brings view 0 along.
    if (views.count(View::defaultViewId()) == 0)
        parameter->deleteView(View());
    parameter->vSetExtrapolationBefore(file.data().extrapolationBefore());
    parameter->vSetExtrapolationAfter(file.data().extrapolationAfter());
    return parameter;
}

template <class Parameter, class T> TypedParameter asTyped(const FileParameter& file) {
    const std::shared_ptr<Parameter> parameter = typed<Parameter, T>(file);
    const auto sample = [parameter](const QVector<Time>& times, View view) {
        QVector<T> values(times.size());
        parameter->sampleValues(times.constData(), times.size(), view, values.data());
        QVector<QVariant> variants;
        variants.reserve(times.size());
        for (const T& value : values)
            variants.append(QVariant::fromValue(value));
        return variants;
    };
    return {sample, parameter};
}

TypedParameter asOpaque(const FileParameter& /*file*/) {
    return {[](const QVector<Time>& times, View /*view*/) { return QVector<QVariant>(times.size()); }, {}};
}

template <class Parameter> boost::shared_ptr<ParameterWithoutType> makeNamed(const QString& name) {
    return boost::make_shared<Parameter>(name);
}

boost::shared_ptr<ParameterWithoutType> makeNone(const QString& /*name*/) {
    return {};
}

bool isAnything(const QString& /*text*/) {
    return true;
}

/// Known only when the user says so.
bool isNothing(const QString& /*text*/) {
    return false;
}

bool isQuoted(const QString& text) {
    return text.startsWith('"');
}

bool isZeroOrOne(const QString& text) {
    return text == "0" || text == "1";
}

bool isNumber(const QString& text) {
    bool isOne = false;
    detail::toDouble(text, &isOne);
    return isOne;
}

bool isPoint(const QString& text) {
    const QStringList parts = text.simplified().split(' ');
    return parts.size() == 2 && isNumber(parts[0]) && isNumber(parts[1]);
}

using Text = Parameter<QString>;
using Number = NumericParameter<double>;
using Point = PointParameter;
using Switch = Parameter<bool>;

// clang-format off
constexpr ValueKind rows[] = {
//   name       isLike       told   numeric drawn  value             normalised          written        typed                   made
    {"text",    isQuoted,    true,  false,  false, valueOf<QString>, rewritten<QString>, writtenText,   asTyped<Text, QString>,  makeNamed<Text>},
    {"number?", isZeroOrOne, false, true,   true,  valueOf<double>,  rewritten<double>,  writtenNumber, asTyped<Number, double>, makeNamed<Number>},
    {"number",  isNumber,    true,  true,   true,  valueOf<double>,  rewritten<double>,  writtenNumber, asTyped<Number, double>, makeNamed<Number>},
    {"point",   isPoint,     true,  false,  true,  valueOf<QPointF>, rewritten<QPointF>, writtenPoint,  asTyped<Point, QPointF>, makeNamed<Point>},
    {"switch",  isNothing,   true,  false,  true,  valueOf<bool>,    rewritten<bool>,    writtenSwitch, asTyped<Switch, bool>,   makeNamed<Switch>},
    {"opaque",  isAnything,  false, false,  false, valueOf<QString>, trimmed,            refused,       asOpaque,                makeNone},
};
// clang-format on

template <class Matches> Kind firstRow(const Matches& matches) {
    const auto* const row = std::find_if(std::begin(rows), std::end(rows), matches);
    return row == std::end(rows) ? nullptr : row;
}

} // namespace

const ValueKind& ValueKind::text = rows[0];
const ValueKind& ValueKind::numberOrSwitch = rows[1];
const ValueKind& ValueKind::number = rows[2];
const ValueKind& ValueKind::point = rows[3];
const ValueKind& ValueKind::opaque = rows[5];

View TypedParameter::viewWithData(View view) const {
    const std::vector<View>& views = parameter->viewList();
    return views.empty() || std::find(views.begin(), views.end(), view) != views.end() ? view : views.front();
}

Kind kindOfValue(const QString& text) {
    const QString trimmed = text.trimmed();
    return firstRow([&](const ValueKind& kind) { return kind.isLike(trimmed); });
}

Kind commonKind(Kind a, Kind b) {
    if (a == b || a == &ValueKind::text)
        return a;
    return a->isNumeric && b->isNumeric ? &ValueKind::number : &ValueKind::opaque;
}

Kind kindToldAs(const QString& name) {
    return firstRow([&](const ValueKind& kind) { return kind.canBeTold && name == kind.name; });
}

double finiteNumber(const QString& text, const QString& path) {
    bool isNumber = false;
    const double number = text.toDouble(&isNumber);
    if (std::isinf(number))
        throw Problem("%1: '%2' is too large", path, text);
    if (!isNumber || std::isnan(number))
        throw Problem("%1: '%2' is not a number", path, text);
    return number;
}

} // namespace Prm::document
