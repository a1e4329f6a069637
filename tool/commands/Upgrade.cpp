#include "prm/document/Upgrading.h"
#include "tool/Commands.h"
#include "tool/Streams.h"
#include "tool/edit/Editing.h"

namespace Tool {

int upgrade(Arguments& arguments) {
    Project::declare(arguments, "FILE...");
    declareOutput(arguments);
    arguments.example("prm upgrade project.prm -o upgraded.prm").example("prm upgrade shots/*.prm --in-place");
    if (!arguments.read())
        return Fine;
    checkOutput(arguments);
    return forEachProject(arguments, [&](const Project& project) {
        writeEdited(arguments, project, upgradingChanges(project.text(), inputName(project.file())));
        return Fine;
    });
}

} // namespace Tool
