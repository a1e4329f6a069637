#include "tool/Commands.h"

namespace Tool {

const std::vector<Command>& commands() {
    static const std::vector<Command> all{
        {"import", "Makes project text of an animation.", importAnimation},
        {"ls", "Shows the tree of groups and parameters.", listParameters},
        {"keys", "Lists the keyframes of parameters.", listKeyframes},
        {"eval", "Evaluates parameters at frames.", evaluate},
        {"plot", "Draws curves, in the terminal or as SVG.", plot},
        {"diff", "Compares two project texts by what they say.", compare},
        {"check", "Reports what is malformed, unknown, or will not survive a save.", check},
    };
    return all;
}

} // namespace Tool
