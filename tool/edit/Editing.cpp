#include "tool/edit/Editing.h"

#include "tool/Frames.h"
#include "tool/Streams.h"

#include <algorithm>

namespace Tool {

namespace {

bool hasKeyframe(const FileView& data, Prm::Time time) {
    const auto found = std::lower_bound(data.keys.begin(), data.keys.end(), time,
                                        [](const FileKeyframe& key, Prm::Time at) { return key.time < at; });
    return found != data.keys.end() && found->time == time;
}

/// Times that the file will not give as they are now.
void tellMovedTimes(const QString& path, const FileViews& before, const FileViews& after) {
    for (const auto& [view, data] : after) {
        const auto former = before.find(view);
        for (const FileKeyframe& key : data.keys) {
            const bool isNew = former == before.end() || !hasKeyframe(former->second, key.time);
            const Prm::Time read = Prm::Time::fromFloat(static_cast<float>(key.time.toDouble()));
            if (isNew && Prm::writtenTime(key.time) != read)
                tell("%1: frame %2 is written as %3", path, plainText(key.time.toDouble()),
                     plainText(writtenFrame(key.time)));
        }
    }
}

LineChanges changesTo(const ProjectText& text, const FileParameter& parameter, const Edit& edit) {
    const FileViews before = parameter.views();
    edit(parameter);
    const FileViews after = parameter.views();
    if (before == after)
        return {};
    tellMovedTimes(parameter.path(), before, after);
    return changedLines(text, before, parameter, text.version());
}

} // namespace

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

int editProject(const Arguments& arguments, const QStringList& patterns, const Edit& edit) {
    outputOf(arguments);
    Project project(arguments);
    LineChanges changes;
    project.forEach(project.parameters(patterns), "editing",
                    [&](const FileParameter& parameter) { changes.merge(changesTo(project.text(), parameter, edit)); });
    return writeEdited(arguments, project.text(), changes);
}

int writeEdited(const Arguments& arguments, const ProjectText& text, const LineChanges& changes) {
    const QByteArray bytes = bytesWith(text, changes);
    const bool isChanged = bytes != text.bytes();
    if (!isChanged)
        tell("nothing changed");
    if (isChanged || !arguments.has("in-place"))
        writeOutput(outputOf(arguments), bytes);
    return isChanged ? Fine : Findings;
}

} // namespace Tool
