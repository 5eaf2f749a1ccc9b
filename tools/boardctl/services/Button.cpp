#include "program/Command.h"
#include "program/Commands.h"

namespace boardctl {

void addButton(CLI::App& app, Options& options) {
    CLI::App& button = addGroup(app, "button", "The service button");
    for (const auto add : {addButtonWatch, addButtonBridge})
        add(button, options);
}

} // namespace boardctl
