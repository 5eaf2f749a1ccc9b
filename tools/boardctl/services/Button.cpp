#include "program/Command.h"
#include "program/Commands.h"

namespace boardctl {

void addButton(CLI::App& app, Options& options) {
    CLI::App& button =
        addGroup(app, "button", "The service button: watch it, or let a key press it");
    addCommands(button, options, {{"watch", addButtonWatch}, {"bridge", addButtonBridge}});
}

} // namespace boardctl
