#include "tool/Commands.h"
#include "tool/edit/Editing.h"
#include "tool/edit/Upgrading.h"

namespace Tool {

int upgrade(Arguments& arguments) {
    Project::declare(arguments);
    declareOutput(arguments);
    arguments.example("prm upgrade project.prm -o upgraded.prm");
    if (!arguments.read())
        return Fine;
    outputOf(arguments);
    const Project project(arguments);
    const ProjectText& text = project.text();
    writeEdited(arguments, text, upgradingChanges(text, arguments.file()));
    return Fine;
}

} // namespace Tool
