#include "tool/Arguments.h"
#include "tool/Commands.h"
#include "tool/Problem.h"
#include "tool/ProjectDiff.h"
#include "tool/Streams.h"

namespace Tool {

namespace {

QByteArray plain(const std::vector<Difference>& differences) {
    QString text;
    for (const Difference& difference : differences)
        text += printable(difference.message) + QLatin1Char('\n');
    return text.toUtf8();
}

QByteArray table(const std::vector<Difference>& differences, TableForm form) {
    Table table({QStringLiteral("path"), QStringLiteral("view"), QStringLiteral("what"), QStringLiteral("change"),
                 QStringLiteral("frame"), QStringLiteral("from"), QStringLiteral("to"), QStringLiteral("message")});
    for (const Difference& difference : differences)
        table.add({difference.path, difference.view, difference.what, difference.change, difference.frame,
                   difference.from, difference.to, difference.message});
    return table.written(form);
}

} // namespace

int compare(Arguments& arguments) {
    arguments.positional(QStringLiteral("A"), QStringLiteral("A project text, - for standard input."))
        .positional(QStringLiteral("B"), QStringLiteral("What became of it."))
        .tableOptions()
        .example(QStringLiteral("prm diff before.prm after.prm"));
    if (!arguments.read(2, 2))
        return Fine;
    const TableForm form = arguments.tableForm();
    const QStringList names = arguments.rest();
    const ProjectText from(names[0]);
    const ProjectText to(names[1]);
    const std::vector<Difference> found = differences(from, to);
    print(form == TableForm::Plain ? plain(found) : table(found, form));
    const QString bytes = found.empty() ? differenceInBytes(from, to) : QString();
    const QString remark =
        QStringLiteral("%1 and %2 say the same, and differ only in %3").arg(names[0], names[1], bytes);
    if (!bytes.isEmpty() && form == TableForm::Plain)
        print(remark.toUtf8() + '\n');
    else if (!bytes.isEmpty())
        tell(remark);
    return found.empty() ? Fine : Findings;
}

} // namespace Tool
