#include "tool/edit/Editing.h"

#include "tool/Problem.h"
#include "tool/Progress.h"
#include "tool/Streams.h"
#include "tool/edit/ParameterPatch.h"

#include <algorithm>
#include <cmath>

namespace Tool {

namespace {

const QString inPlace = QStringLiteral("in-place");
const QString output = QStringLiteral("output");

template <class T> QString writtenAs(const T& value) {
    QString text;
    Prm::ValueType<T>::write(text, value);
    return text;
}

/// The format holds infinite values and such as are no number, but no curve goes through them.
double finiteFrom(const QString& text, const QString& path) {
    bool isNumber = false;
    const double number = text.toDouble(&isNumber);
    if (std::isinf(number))
        throw Problem(QStringLiteral("%1: '%2' is too large").arg(path, text));
    if (!isNumber || std::isnan(number))
        throw Problem(QStringLiteral("%1: '%2' is not a number").arg(path, text));
    return number;
}

QPointF pointFrom(const QString& text, const QString& path) {
    const QStringList parts = text.simplified().split(QLatin1Char(' '));
    if (parts.size() != 2)
        throw Problem(QStringLiteral("%1: '%2' is not a point (two numbers)").arg(path, text));
    return {finiteFrom(parts[0], path), finiteFrom(parts[1], path)};
}

bool switchFrom(const QString& text, const QString& path) {
    if (text != QLatin1String("0") && text != QLatin1String("1"))
        throw Problem(QStringLiteral("%1: '%2' is not a switch (0 or 1)").arg(path, text));
    return text == QLatin1String("1");
}

QString valueText(const QString& text, const QString& path, ValueKind kind) {
    switch (kind) {
    case ValueKind::Number:
    case ValueKind::NumberOrSwitch:
        return writtenAs(finiteFrom(text, path));
    case ValueKind::Point:
        return writtenAs(pointFrom(text, path));
    case ValueKind::Switch:
        return writtenAs(switchFrom(text, path));
    case ValueKind::Text:
        return writtenAs(text);
    case ValueKind::Opaque:
        break;
    }
    throw Problem(QStringLiteral("%1: its values are of no known type, so none can be set").arg(path));
}

bool hasKeyframe(const WrittenState::ViewData& data, double time) {
    const auto found = std::lower_bound(data.keys.begin(), data.keys.end(), time,
                                        [](const WrittenState::Keyframe& key, double at) { return key.time < at; });
    return found != data.keys.end() && found->time == time;
}

/// Times that the file will not give as they are now.
void tellMovedTimes(const QString& path, const WrittenState& before, const WrittenState& after) {
    for (const auto& [view, data] : after.views) {
        const auto former = before.views.find(view);
        for (const WrittenState::Keyframe& key : data.keys) {
            const QString saved = QString::number(key.time, 'g', 6);
            if (!(former != before.views.end() && hasKeyframe(former->second, key.time)) &&
                static_cast<double>(saved.toFloat()) != static_cast<double>(static_cast<float>(key.time)))
                tell(QStringLiteral("%1: frame %2 is written as %3")
                         .arg(path, plainText(key.time), plainText(saved.toDouble())));
        }
    }
}

LineChanges changesTo(Project& project, int node, const Edit& edit) {
    const ProjectText& text = project.text();
    WrittenParameter written(linesOf(text, node), text.version());
    const WrittenState before = written.state();
    const QString path = text.path(node);
    edit({written, path, project.kindOf(node)});
    const WrittenState after = written.state();
    if (before.views == after.views)
        return {};
    tellMovedTimes(path, before, after);
    return changedLines(text, node, before, written);
}

} // namespace

WrittenValue EditedParameter::value(const QString& text) const {
    return {written.text(valueText(text, path, kind).toUtf8()), WrittenValue::noLine};
}

WrittenValue EditedParameter::sum(const WrittenValue& value, double offset) const {
    if (kind != ValueKind::Number && kind != ValueKind::NumberOrSwitch)
        throw Problem(QStringLiteral("%1: only numbers have an offset").arg(path));
    const double number = finiteFrom(value.text.trimmed(), path) + offset;
    if (!std::isfinite(number))
        throw Problem(QStringLiteral("%1: %2 with that offset is too large").arg(path, value.text.trimmed()));
    return {writtenAs(number), value.line};
}

void EditedParameter::setValue(const WrittenValue& value, const Prm::Context& context) const {
    parameter().vSetValue(value, context);
}

void declareOutput(Arguments& arguments) {
    arguments
        .option({QStringLiteral("o"), output}, QStringLiteral("Writes to a file, - for standard output."),
                QStringLiteral("OUT"))
        .option({inPlace}, QStringLiteral("Writes to FILE itself."));
}

QString outputOf(const Arguments& arguments) {
    const bool isInPlace = arguments.has(inPlace);
    if (isInPlace == arguments.has(output))
        throw WrongUse(QStringLiteral("one of -o and --in-place is needed"));
    if (isInPlace && arguments.file() == QLatin1String("-"))
        throw WrongUse(QStringLiteral("--in-place needs a file, not standard input"));
    return isInPlace ? arguments.file() : arguments.value(output);
}

double numberOption(const Arguments& arguments, const QString& option) {
    bool isNumber = false;
    const double number = arguments.value(option).toDouble(&isNumber);
    if (!isNumber || !std::isfinite(number))
        throw WrongUse(QStringLiteral("--%1 needs a number").arg(option));
    return number;
}

bool isFrame(Prm::Time time) {
    return time.isValid() && time.toDouble() >= -Prm::Time::LARGEST_VALID_VALUE;
}

Prm::Time timeOption(const Arguments& arguments, const QString& option) {
    const Prm::Time time = Prm::Time::fromDouble(numberOption(arguments, option));
    if (!isFrame(time))
        throw WrongUse(QStringLiteral("'%1' is not a frame").arg(arguments.value(option)));
    return time;
}

int editProject(const Arguments& arguments, const QStringList& patterns, const Edit& edit) {
    outputOf(arguments);
    Project project(arguments);
    LineChanges changes;
    const std::vector<int> nodes = project.parameters(patterns);
    Progress progress("editing", nodes.size());
    for (const int node : nodes) {
        progress.step();
        changes.merge(changesTo(project, node, edit));
    }
    return writeEdited(arguments, project.text(), bytesWith(project.text(), changes));
}

int writeEdited(const Arguments& arguments, const ProjectText& text, const QByteArray& bytes) {
    const bool isChanged = bytes != text.bytes();
    if (!isChanged)
        tell(QStringLiteral("nothing changed"));
    if (isChanged || !arguments.has(inPlace))
        writeOutput(outputOf(arguments), bytes);
    return isChanged ? Fine : Findings;
}

} // namespace Tool
