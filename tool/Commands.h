#pragma once

#include <vector>

namespace Tool {

class Arguments;

/// One command of the program. It declares its arguments, reads them and returns the exit code; it throws `Problem`
/// for what it cannot use.
struct Command {
    const char* name;
    const char* purpose;
    int (*run)(Arguments& arguments);
};

/// All commands, in the order of the help. Each is in tool/commands/, in the file of its name; those that reshape
/// curves are in Curves.cpp.
const std::vector<Command>& commands();

int importAnimation(Arguments& arguments);
int exportProject(Arguments& arguments);
int listParameters(Arguments& arguments);
int listKeyframes(Arguments& arguments);
int evaluate(Arguments& arguments);
int explain(Arguments& arguments);
int plot(Arguments& arguments);
int compare(Arguments& arguments);
int check(Arguments& arguments);
int setValue(Arguments& arguments);
int setInterpolation(Arguments& arguments);
int setExtrapolation(Arguments& arguments);
int deleteKeyframes(Arguments& arguments);
int moveKeyframes(Arguments& arguments);
int retime(Arguments& arguments);
int insertKeyframe(Arguments& arguments);
int simplify(Arguments& arguments);
int bake(Arguments& arguments);
int smoothen(Arguments& arguments);
int ease(Arguments& arguments);
int reverse(Arguments& arguments);
int adjustValues(Arguments& arguments);
int split(Arguments& arguments);
int upgrade(Arguments& arguments);
int mergeProjects(Arguments& arguments);
int useWithGit(Arguments& arguments);

} // namespace Tool
