#include "prm/ProjectMerge.h"
#include "prm/document/PathPattern.h"
#include "prm/document/ProjectText.h"
#include "tool/Arguments.h"
#include "tool/Commands.h"
#include "tool/OutputFile.h"
#include "tool/Project.h"
#include "tool/Streams.h"

namespace Tool {

namespace {

QString nameOf(const Arguments& arguments, const char* option) {
    return arguments.has("path") ? message("%1, %2", arguments.value("path"), QString(option))
                                 : arguments.value(option);
}

QByteArray textOption(const Arguments& arguments, const char* option) {
    if (!arguments.has(option))
        throw WrongUse("--%1 is needed", option);
    const QString file = arguments.value(option);
    if (isSameFile(arguments.value("conflicts"), file))
        throw WrongUse("--conflicts: %1 would be overwritten", file);
    return readProjectOrNothing(file, nameOf(arguments, option));
}

/// Without one, everything would count as deleted there.
QByteArray sideOption(const Arguments& arguments, const char* option) {
    QByteArray text = textOption(arguments, option);
    if (text.isEmpty())
        throw Problem("%1: not a project text, it is empty", inputName(nameOf(arguments, option)));
    return text;
}

struct Rule {
    Prm::MergeSide side;
    PathPattern pattern;
};

/// Each --take belongs to the pattern of its place; a single one to all patterns.
std::vector<Rule> rulesOf(const Arguments& arguments) {
    const QStringList sides = arguments.values("take");
    const QStringList patterns = arguments.rest();
    if (sides.size() != patterns.size() && (sides.size() != 1 || patterns.isEmpty()))
        throw WrongUse("each --take needs a pattern after it: --take theirs 'logo.*'");
    std::vector<Rule> rules;
    for (int i = 0; i < patterns.size(); ++i) {
        const QString& side = sides.at(std::min(i, sides.size() - 1));
        if (side != "ours" && side != "theirs")
            throw WrongUse("--take: '%1' is not ours or theirs", side);
        rules.push_back({side == "ours" ? Prm::MergeSide::Ours : Prm::MergeSide::Theirs, PathPattern(patterns.at(i))});
    }
    return rules;
}

Prm::MergeSettlement settlementOf(const Arguments& arguments) {
    return [rules = rulesOf(arguments)](const QString& path) {
        std::optional<Prm::MergeSide> side;
        for (const Rule& rule : rules) {
            if (rule.pattern.matches(path))
                side = rule.side;
        }
        return side;
    };
}

QByteArray written(const std::vector<Prm::ProjectConflict>& conflicts) {
    Table table({"path", "view", "what", "frame", "base", "ours", "theirs", "message"});
    for (const Prm::ProjectConflict& each : conflicts)
        table.add({each.path, each.view, each.what, each.frame, each.base, each.ours, each.theirs, each.message});
    return table.written(TableForm::Json);
}

} // namespace

int mergeProjects(Arguments& arguments) {
    arguments.positional("PATTERN", "The paths that --take is about.", "[PATTERN...]")
        .option("base", "The text that both come from; may be empty.", "FILE")
        .option("ours", "The text here. Where both have changed one thing, it stands.", "FILE")
        .option("theirs", "The text there.", "FILE")
        .option({"o", "output"}, "Writes to a file, - for standard output.", "OUT")
        .option("take", "Settles the conflicts of the paths that the next pattern names.", "ours|theirs")
        .option("conflicts", "Writes the conflicts that are left to a file, as JSON.", "FILE")
        .option("path", "What the file is called in messages.", "NAME")
        .example("prm merge --base base.prm --ours ours.prm --theirs theirs.prm -o merged.prm --take theirs 'logo.*'");
    if (!arguments.read())
        return Fine;
    if (!arguments.has("o"))
        throw WrongUse("-o is needed: where to write");
    if (isSameFile(arguments.value("conflicts"), arguments.value("o")) ||
        (arguments.value("conflicts") == "-" && arguments.value("o") == "-"))
        throw WrongUse("the merged text and the conflicts need different files");
    const Prm::MergeSettlement settlement = settlementOf(arguments);
    const Prm::MergedProject merged = Prm::mergeProjects(textOption(arguments, "base"), sideOption(arguments, "ours"),
                                                         sideOption(arguments, "theirs"), settlement);
    const QString place = arguments.has("path") ? arguments.value("path") + ": " : QString();
    for (const Prm::ProjectConflict& conflict : merged.conflicts)
        report(place + conflict.message);
    writeOutput(arguments.value("o"), merged.text);
    if (arguments.has("conflicts"))
        writeOutput(arguments.value("conflicts"), written(merged.conflicts));
    if (merged.conflicts.empty())
        return Fine;
    tell("%1%2 left, in which ours stands%3", place, counted(static_cast<qint64>(merged.conflicts.size()), "conflict"),
         arguments.has("path") ? QString() : QStringLiteral("; --take settles them"));
    return Findings;
}

} // namespace Tool
