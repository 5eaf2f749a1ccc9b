#include "program/Command.h"
#include "program/Commands.h"

namespace boardctl {

void addLeds(CLI::App& app, Options& options) {
    CLI::App& leds = addGroup(
        app, "leds", "The LED sequencer: check and preview its tables, send it lines, ask it why");
    addCommands(leds, options,
                {{"check", addLedsCheck},
                 {"preview", addLedsPreview},
                 {"send", addLedsSend},
                 {"why", addLedsWhy}});
}

} // namespace boardctl
