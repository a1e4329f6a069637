#include "tool/Commands.h"

namespace Tool {

const std::vector<Command>& commands() {
    static const std::vector<Command> all{
        {"import", "Makes project text of an animation or a table.", importAnimation},
        {"export", "Writes an animation, a table of values or a style sheet.", exportProject},
        {"ls", "Shows the tree of groups and parameters.", listParameters},
        {"keys", "Lists the keyframes of parameters.", listKeyframes},
        {"eval", "Evaluates parameters at frames.", evaluate},
        {"explain", "Shows the steps that lead to a value.", explain},
        {"plot", "Draws curves, in the terminal or as SVG.", plot},
        {"set", "Sets the value of parameters, or one of their keyframes.", setValue},
        {"delete", "Deletes keyframes.", deleteKeyframes},
        {"move", "Moves a keyframe to another frame.", moveKeyframes},
        {"retime", "Shifts or scales the times of keyframes.", retime},
        {"insert", "Inserts a keyframe without changing the curve.", insertKeyframe},
        {"simplify", "Removes keyframes as long as no value moves by more than an error.", simplify},
        {"bake", "Sets a keyframe at every step.", bake},
        {"smooth", "Replaces values by means of those around them.", smoothen},
        {"ease", "Gives segments an easing by its name.", ease},
        {"interpolation", "Sets the kind of segments.", setInterpolation},
        {"extrapolation", "Sets how curves continue outside their keyframes.", setExtrapolation},
        {"reverse", "Reverses the time of keyframes.", reverse},
        {"adjust", "Scales, mirrors or offsets the values of keyframes.", adjustValues},
        {"split", "Gives a view data of its own.", split},
        {"upgrade", "Writes a project text in the newest version of the format.", upgrade},
        {"diff", "Compares two project texts by what they say.", compare},
        {"merge", "Merges two project texts that come from one.", mergeProjects},
        {"git", "Lets git merge and compare project texts by what they say.", useWithGit},
        {"check", "Reports what is malformed, unknown, or will not survive a save.", check},
    };
    return all;
}

} // namespace Tool
