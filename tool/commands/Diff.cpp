#include "tool/Arguments.h"
#include "tool/Commands.h"
#include "tool/ProjectDiff.h"
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
    const ProjectText from(names[0]);
    const ProjectText to(names[1]);
    const std::vector<Difference> found = differences(from, to);
    print(form == TableForm::Plain ? plainText(found) : table(found, form));
    const QString bytes = found.empty() ? differenceInBytes(from, to) : QString();
    const QString remark = message("%1 and %2 say the same, and differ only in %3", names[0], names[1], bytes);
    if (!bytes.isEmpty() && form == TableForm::Plain)
        print(remark.toUtf8() + '\n');
    else if (!bytes.isEmpty())
        tell("%1", remark);
    return found.empty() ? Fine : Findings;
}

} // namespace Tool
