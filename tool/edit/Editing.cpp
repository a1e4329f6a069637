#include "tool/edit/Editing.h"

#include "tool/Frames.h"
#include "tool/Streams.h"

#include <algorithm>
#include <functional>
#include <numeric>

namespace Tool {

namespace {

bool hasKeyframe(const FileView& data, Prm::Time time) {
    const auto found = std::lower_bound(data.keys.begin(), data.keys.end(), time,
                                        [](const FileKeyframe& key, Prm::Time at) { return key.time < at; });
    return found != data.keys.end() && found->time == time;
}

/// Times that the file will not give as they are now.
void tellMovedTimes(const QString& path, const FileViews& before, const FileViews& after) {
    std::vector<Prm::Time> moved;
    for (const auto& [view, data] : after) {
        const auto former = before.find(view);
        for (const FileKeyframe& key : data.keys) {
            const bool isNew = former == before.end() || !hasKeyframe(former->second, key.time);
            const Prm::Time read = Prm::Time::fromFloat(static_cast<float>(key.time.toDouble()));
            if (isNew && Prm::writtenTime(key.time) != read)
                moved.push_back(key.time);
        }
    }
    if (moved.empty())
        return;
    const QString first = message("frame %1 is written as %2", plainText(moved.front().toDouble()),
                                  plainText(writtenFrame(moved.front())));
    tell("%1: %2%3", path, first,
         moved.size() == 1 ? QString() : message(", the first of %1 that are rounded", moved.size()));
}

LineChanges changesTo(const ProjectText& text, const FileParameter& parameter, const Edit& edit,
                      const Account& account) {
    const FileViews before = parameter.views();
    edit(parameter);
    const FileViews after = parameter.views();
    if (before == after)
        return {};
    LineChanges changes = changedLines(text, before, parameter, text.version());
    if (account)
        tell("%1: %2", parameter.path(), account(before, after));
    tellMovedTimes(parameter.path(), before, after);
    return changes;
}

/// Why a parameter has no keyframes in the span; empty if it has some.
QString reasonForNone(const FileParameter& parameter, const Prm::KeyframeSpan& span) {
    const auto keyframes = parameter.data().allKeyframes();
    if (keyframes.isEmpty())
        return parameter.master().isEmpty() ? QStringLiteral("has no keyframes")
                                            : message("shows %1, whose keyframes are to be edited", parameter.master());
    if (span.view.isValid() && !parameter.data().hasViewData(span.view))
        return withoutData(span.view);
    const bool hasSome = std::any_of(keyframes.begin(), keyframes.end(), [&](const Prm::Context& key) {
        return (!span.view.isValid() || key.view == span.view) && key.time >= span.first && key.time <= span.last;
    });
    return hasSome ? QString() : QStringLiteral("has no keyframes there, prm keys lists them");
}

std::vector<FileKeyframe> keyframesOf(const FileViews& views) {
    std::vector<FileKeyframe> all;
    for (const auto& [view, data] : views)
        all.insert(all.end(), data.keys.begin(), data.keys.end());
    return all;
}

} // namespace

Account accountBy(const QString& verb) {
    return [=](const FileViews& before, const FileViews& after) {
        const std::vector<FileKeyframe> former = keyframesOf(before);
        const std::vector<FileKeyframe> now = keyframesOf(after);
        if (former.size() != now.size())
            return message("%1 keyframes to %2", former.size(), now.size());
        if (now.empty())
            return message("value %1", verb);
        const auto same = std::inner_product(former.begin(), former.end(), now.begin(), std::size_t{0}, std::plus<>(),
                                             std::equal_to<>());
        return message("%1 of %2 keyframes %3", now.size() - same, now.size(), verb);
    };
}

void declareOutput(Arguments& arguments) {
    arguments.option({"o", "output"}, "Writes to a file, - for standard output.", "OUT")
        .option("in-place", "Writes to FILE itself.");
}

QString outputOf(const Arguments& arguments) {
    if (arguments.hasFirstOf("o", "in-place"))
        return arguments.value("o");
    if (arguments.file() == "-")
        throw WrongUse("--in-place needs a file, not standard input");
    return arguments.file();
}

int editProject(const Arguments& arguments, const QStringList& patterns, const Edit& edit, const Account& account) {
    return editLines(arguments, patterns, [&](const ProjectText& text, const FileParameter& parameter) {
        return changesTo(text, parameter, edit, account);
    });
}

int editLines(const Arguments& arguments, const QStringList& patterns, const LineEdit& edit) {
    outputOf(arguments);
    Project project(arguments);
    LineChanges changes;
    project.forEach(project.parameters(patterns), "editing",
                    [&](const FileParameter& parameter) { changes.merge(edit(project.text(), parameter)); });
    return writeEdited(arguments, project.text(), changes);
}

QString withoutData(const Prm::View& view) {
    return message("view %1 has no data of its own; prm split gives it some", view.id());
}

bool hasKeyframes(const Arguments& arguments, const FileParameter& parameter, const Prm::KeyframeSpan& span) {
    const QString reason = reasonForNone(parameter, span);
    if (!reason.isEmpty() && arguments.patterns().contains(parameter.path()))
        tell("%1: %2", parameter.path(), reason);
    return reason.isEmpty();
}

int writeEdited(const Arguments& arguments, const ProjectText& text, const LineChanges& changes) {
    const QByteArray bytes = bytesWith(text, changes);
    const bool isChanged = bytes != text.bytes();
    if (!isChanged)
        tell("%1: nothing changed", inputName(arguments.file()));
    if (isChanged || !arguments.has("in-place"))
        writeOutput(outputOf(arguments), bytes);
    return isChanged ? Fine : Findings;
}

} // namespace Tool
