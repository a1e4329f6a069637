#include "tool/Arguments.h"
#include "tool/Checks.h"
#include "tool/Commands.h"
#include "tool/Streams.h"

#include <algorithm>

namespace Tool {

namespace {

/// Checks file after file; one that cannot be used does not keep the others from being checked.
class Checking {
public:
    explicit Checking(TableForm form) : m_form(form) {}

    void add(const QString& file) {
        std::vector<Finding> findings;
        try {
            findings = findingsIn(ProjectText(file));
        } catch (const Problem& problem) {
            tell("%1", problem.text());
            m_exitCode = Unusable;
            return;
        }
        if (!findings.empty())
            m_exitCode = std::max<int>(m_exitCode, Findings);
        QString text;
        for (const Finding& finding : findings) {
            if (m_form == TableForm::Plain) // As compilers write it.
                text += message("%1:%2: %3\n", file, finding.line + 1, finding.message);
            else
                m_table.add({file, finding.line + 1, finding.message});
        }
        print(text.toUtf8());
    }

    int finish() {
        if (m_form != TableForm::Plain)
            print(m_table.written(m_form));
        return m_exitCode;
    }

private:
    TableForm m_form;
    Table m_table{{"file", "line", "finding"}};
    int m_exitCode = Fine;
};

} // namespace

int check(Arguments& arguments) {
    arguments.positional("FILE", "Project texts, - for standard input.", "FILE...")
        .tableOptions()
        .example("prm check project.prm");
    if (!arguments.read())
        return Fine;
    Checking checking(arguments.tableForm());
    for (const QString& file : arguments.rest())
        checking.add(file);
    return checking.finish();
}

} // namespace Tool
