#include "tool/Checks.h"
#include "tool/Commands.h"
#include "tool/Project.h"
#include "tool/Streams.h"

namespace Tool {

namespace {

constexpr const char* bold = "\x1b[1m";
constexpr const char* plain = "\x1b[0m";

/// As compilers write it.
QByteArray textOf(const QString& file, const std::vector<Finding>& findings) {
    static const bool isColoured = hasColours(stdout);
    QString text;
    for (const Finding& finding : findings) {
        const QString place = message("%1:%2:", printable(file), finding.line + 1);
        text += message("%1 %2\n", isColoured ? bold + place + plain : place, printable(finding.message));
    }
    return text.toUtf8();
}

} // namespace

int check(Arguments& arguments) {
    arguments.positional("FILE", "Project texts, - for standard input.", "FILE...")
        .severalFiles()
        .tableOptions()
        .example("prm check project.prm");
    if (!arguments.read())
        return Fine;
    const TableForm form = arguments.tableForm();
    Table table({"file", "line", "finding"});
    const auto use = [&](const Project& project) {
        const std::vector<Finding> findings = findingsIn(project.text());
        if (form == TableForm::Plain)
            print(textOf(project.file(), findings));
        for (const Finding& finding : form == TableForm::Plain ? std::vector<Finding>() : findings)
            table.add({project.file(), finding.line + 1, finding.message});
        return findings.empty() ? Fine : Findings;
    };
    return forEachProject(arguments, use, [&] {
        if (form != TableForm::Plain)
            print(table.written(form));
    });
}

} // namespace Tool
