#include "tool/Arguments.h"
#include "tool/Checks.h"
#include "tool/Commands.h"
#include "tool/Problem.h"
#include "tool/Streams.h"

#include <algorithm>

namespace Tool {

namespace {

/// "clip.prm:12: message", as compilers write it.
QByteArray plain(const QString& file, const std::vector<Finding>& findings) {
    QString text;
    for (const Finding& finding : findings)
        text += QStringLiteral("%1:%2: ").arg(file).arg(finding.line + 1) + finding.message + QLatin1Char('\n');
    return text.toUtf8();
}

/// Checks file after file; one that cannot be used does not keep the others from being checked.
class Checking {
public:
    explicit Checking(TableForm form) : m_form(form) {}

    void add(const QString& file) {
        std::vector<Finding> findings;
        try {
            findings = findingsIn(ProjectText(file));
        } catch (const Problem& problem) {
            tell(QString::fromUtf8(problem.what()));
            m_exitCode = Unusable;
            return;
        }
        if (!findings.empty())
            m_exitCode = std::max<int>(m_exitCode, Findings);
        if (m_form == TableForm::Plain)
            print(plain(file, findings));
        else
            addRows(file, findings);
    }

    int finish() {
        if (m_form != TableForm::Plain)
            print(m_table.written(m_form));
        return m_exitCode;
    }

private:
    void addRows(const QString& file, const std::vector<Finding>& findings) {
        for (const Finding& finding : findings)
            m_table.add({file, finding.line + 1, finding.message});
    }

    TableForm m_form;
    Table m_table{{QStringLiteral("file"), QStringLiteral("line"), QStringLiteral("finding")}};
    int m_exitCode = Fine;
};

} // namespace

int check(Arguments& arguments) {
    arguments
        .positional(QStringLiteral("FILE"), QStringLiteral("Project texts, - for standard input."),
                    QStringLiteral("FILE..."))
        .tableOptions()
        .example(QStringLiteral("prm check project.prm"));
    if (!arguments.read(1, -1))
        return Fine;
    Checking checking(arguments.tableForm());
    for (const QString& file : arguments.rest())
        checking.add(file);
    return checking.finish();
}

} // namespace Tool
