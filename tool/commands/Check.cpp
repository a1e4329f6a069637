#include "tool/Arguments.h"
#include "tool/Checks.h"
#include "tool/Commands.h"
#include "tool/Streams.h"

#include <algorithm>

namespace Tool {

namespace {

/// None, and an exit code, for a file that cannot be used: the others are checked all the same.
std::vector<Finding> findingsOf(const QString& file, int& exitCode) {
    try {
        std::vector<Finding> findings = findingsIn(ProjectText(file));
        exitCode = std::max<int>(exitCode, findings.empty() ? Fine : Findings);
        return findings;
    } catch (const Problem& problem) {
        tell("%1", problem.text());
        exitCode = Unusable;
        return {};
    }
}

} // namespace

int check(Arguments& arguments) {
    arguments.positional("FILE", "Project texts, - for standard input.", "FILE...")
        .tableOptions()
        .example("prm check project.prm");
    if (!arguments.read())
        return Fine;
    const TableForm form = arguments.tableForm();
    Table table({"file", "line", "finding"});
    int exitCode = Fine;
    for (const QString& file : arguments.rest()) {
        QString text;
        for (const Finding& finding : findingsOf(file, exitCode)) {
            if (form == TableForm::Plain) // As compilers write it.
                text += message("%1:%2: %3\n", file, finding.line + 1, finding.message);
            else
                table.add({file, finding.line + 1, finding.message});
        }
        print(text.toUtf8());
    }
    if (form != TableForm::Plain)
        print(table.written(form));
    return exitCode;
}

} // namespace Tool
