#include "program/Command.h"
#include "program/Commands.h"

namespace boardctl {

void addSim(CLI::App& app, Options& options) {
    CLI::App& sim = addGroup(app, "sim", "Simulated boards: create one, press its button");
    addCommands(sim, options, {{"create", addSimCreate}, {"press", addSimPress}});
}

} // namespace boardctl
