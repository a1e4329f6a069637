#include "tool/edit/Editing.h"

#include "tool/Frames.h"
#include "tool/Streams.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>

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
void tellMovedTimes(const QString& place, const FileViews& before, const FileViews& after) {
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
    const QString first = message("frame %1 is written as %2", frameText(moved.front().toDouble()),
                                  plainText(writtenFrame(moved.front())));
    tell("%1: %2%3", place, first,
         moved.size() == 1 ? QString() : message(", the first of %1 that are rounded", moved.size()));
}

LineChanges changesTo(const Project& project, const FileParameter& parameter, const Edit& edit,
                      const Account& account) {
    const ProjectText& text = project.text();
    const FileViews before = parameter.views();
    edit(project, parameter);
    const FileViews after = parameter.views();
    if (before == after)
        return {};
    LineChanges changes = changedLines(text, before, parameter, text.version());
    if (account)
        tell("%1: %2", project.place(parameter), account(before, after));
    tellMovedTimes(project.place(parameter), before, after);
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

QString outputFor(const Arguments& arguments, const QString& file) {
    if (arguments.has("in-place"))
        return file;
    const QString output = arguments.value("o");
    return arguments.hasSeveralFiles() ? QDir(output).filePath(QFileInfo(file).fileName()) : output;
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
        .option("in-place", "Writes to FILE itself.")
        .severalFiles();
}

void checkOutput(const Arguments& arguments) {
    const bool isElsewhere = arguments.hasFirstOf("o", "in-place");
    const QStringList files = arguments.files();
    if (!isElsewhere && files.contains("-"))
        throw WrongUse("--in-place needs a file, not standard input");
    for (const QString& file : isElsewhere ? QStringList() : files) {
        if (QFileInfo::exists(file) && !QFileInfo(file).isFile() && !QFileInfo(file).isDir())
            throw WrongUse("--in-place needs a file, which '%1' is not", file);
    }
    if (!isElsewhere || !arguments.hasSeveralFiles())
        return;
    if (!QFileInfo(arguments.value("o")).isDir())
        throw WrongUse("-o must be a folder for several files, which '%1' is not", arguments.value("o"));
    QHash<QString, QString> sources;
    for (const QString& file : files) {
        QString& source = sources[QFileInfo(file).fileName()];
        if (file == "-")
            throw WrongUse("standard input has no name for the folder '%1'", arguments.value("o"));
        if (!source.isNull())
            throw WrongUse("%1 and %2 would be written to one file of the folder", source, file);
        source = file;
    }
}

int editProject(const Arguments& arguments, const QStringList& patterns, const Edit& edit, const Account& account) {
    return editLines(arguments, patterns, [&](const Project& project, const FileParameter& parameter) {
        return changesTo(project, parameter, edit, account);
    });
}

int editLines(const Arguments& arguments, const QStringList& patterns, const LineEdit& edit) {
    checkOutput(arguments);
    return forEachProject(arguments, [&](Project& project) {
        LineChanges changes;
        int code = Fine;
        project.forEach(project.parameters(patterns), "editing", [&](const FileParameter& parameter) {
            try {
                changes.merge(edit(project, parameter));
            } catch (const Refusal& refusal) {
                tell("%1: %2", project.place(parameter), refusal.text());
                code = Findings;
            }
        });
        return std::max(code, writeEdited(arguments, project, changes));
    });
}

QString withoutData(const Prm::View& view) {
    return message("view %1 has no data of its own; prm split gives it some", view.id());
}

bool hasKeyframes(const Arguments& arguments, const Project& project, const FileParameter& parameter,
                  const Prm::KeyframeSpan& span) {
    const QString reason = reasonForNone(parameter, span);
    if (!reason.isEmpty() && arguments.patterns().contains(parameter.path()))
        tell("%1: %2", project.place(parameter), reason);
    return reason.isEmpty();
}

int writeEdited(const Arguments& arguments, const Project& project, const LineChanges& changes) {
    const QByteArray bytes = bytesWith(project.text(), changes);
    const bool isChanged = bytes != project.text().bytes();
    if (!isChanged)
        tell("%1: nothing changed", inputName(project.file()));
    if (isChanged || !arguments.has("in-place"))
        writeOutput(outputFor(arguments, project.file()), bytes);
    return isChanged ? Fine : Findings;
}

} // namespace Tool
