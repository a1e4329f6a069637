#include "tool/Arguments.h"
#include "tool/Commands.h"
#include "tool/DifferencesText.h"
#include "tool/Project.h"
#include "tool/Streams.h"

namespace Tool {

namespace {

QByteArray table(const std::vector<Difference>& differences, TableForm form) {
    Table table({"path", "view", "what", "change", "frame", "from", "to", "message"});
    for (const Difference& difference : differences)
        table.add({difference.path, difference.view, difference.what, difference.change, difference.frame,
                   difference.from, difference.to, difference.message});
    return table.written(form);
}

/// As git shows lines: red what is removed, green what is added, yellow what is changed or moved.
QByteArray colouredText(const std::vector<Difference>& differences) {
    QByteArray text;
    for (const Difference& each : differences) {
        const char* const colour = each.change == "removed" ? "31" : each.change == "added" ? "32" : "33";
        text += message("\x1b[%1m%2\x1b[0m\n", colour, printable(each.message)).toUtf8();
    }
    return text;
}

QByteArray written(const std::vector<Difference>& differences, TableForm form) {
    if (form != TableForm::Plain)
        return table(differences, form);
    return hasColours(stdout) ? colouredText(differences) : plainText(differences);
}

} // namespace

int compare(Arguments& arguments) {
    arguments.positional("A", "A project text, - for standard input.")
        .positional("B", "What became of it.")
        .tableOptions()
        .example("prm diff before.prm after.prm");
    if (!arguments.read())
        return Fine;
    const TableForm form = arguments.tableForm();
    const QStringList names = arguments.rest();
    const ProjectText from = readProject(names[0]);
    const ProjectText to = readProject(names[1]);
    const std::vector<Difference> found = differences(from, to);
    print(written(found, form));
    const QString bytes = found.empty() ? differenceInBytes(from, to) : QString();
    const QString remark = message("%1 and %2 say the same, and differ only in %3", names[0], names[1], bytes);
    if (!bytes.isEmpty() && form == TableForm::Plain)
        print(remark.toUtf8() + '\n');
    else if (!bytes.isEmpty())
        tell("%1", remark);
    return found.empty() ? Fine : Findings;
}

} // namespace Tool
