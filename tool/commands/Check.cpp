#include "tool/Arguments.h"
#include "tool/Checks.h"
#include "tool/Commands.h"
#include "tool/Problem.h"
#include "tool/Streams.h"

namespace Tool {

namespace {

/// "clip.prm:12: message", as compilers write it.
QByteArray plain(const QString& file, const std::vector<Finding>& findings) {
    QString text;
    for (const Finding& finding : findings)
        text += QStringLiteral("%1:%2: ").arg(file).arg(finding.line + 1) + finding.message + QLatin1Char('\n');
    return text.toUtf8();
}

QByteArray table(const QString& file, const std::vector<Finding>& findings, TableForm form) {
    Table table({QStringLiteral("file"), QStringLiteral("line"), QStringLiteral("finding")});
    for (const Finding& finding : findings)
        table.add({file, finding.line + 1, finding.message});
    return table.written(form);
}

} // namespace

int check(Arguments& arguments) {
    arguments.positional(QStringLiteral("FILE"), QStringLiteral("A project text, - for standard input."))
        .tableOptions()
        .example(QStringLiteral("prm check project.prm"));
    if (!arguments.read(1, 1))
        return Fine;
    const TableForm form = arguments.tableForm();
    const std::vector<Finding> findings = findingsIn(ProjectText(readInput(arguments.file())));
    print(form == TableForm::Plain ? plain(arguments.file(), findings) : table(arguments.file(), findings, form));
    return findings.empty() ? Fine : Findings;
}

} // namespace Tool
