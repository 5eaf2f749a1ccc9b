#include "program/Command.h"
#include "program/Commands.h"

namespace boardctl {

void addLeds(CLI::App& app, Options& options) {
    CLI::App& leds =
        addGroup(app, "leds", "The LED sequencer: check its tables, preview them, send it lines");
    for (const auto add : {addLedsCheck, addLedsPreview, addLedsSend})
        add(leds, options);
}

} // namespace boardctl
