#include <algorithm>
#include <chrono>
#include <iostream>
#include <optional>
#include <string>

#include "base/Text.h"
#include "button/ButtonBridge.h"
#include "button/InputKey.h"
#include "output/Json.h"
#include "output/Messages.h"
#include "program/Board.h"
#include "program/Command.h"
#include "program/Commands.h"
#include "program/StopSignals.h"
#include "program/WordChecks.h"

namespace boardctl {

namespace {

struct BridgeWords {
    std::string device;
    std::optional<unsigned> code;
};

int bridgeButton(const Options& options, const BridgeWords& words) {
    // A running host reads a message at once. If no host does, the bridge checks less and less
    // often whether the message has been read.
    constexpr auto FIRST_LOOK = std::chrono::milliseconds(2),
                   LAST_LOOK = std::chrono::milliseconds(256);
    StopSignals::expectAsEnd();
    const BoardProfile board(options);
    const board::NamedPath& button = board.button();
    board::InputKey key(words.device, words.code);
    std::optional<board::ButtonBridge> bridge;
    board::withPlaceInErrors(button,
                             [&](const std::string& pipe) { bridge.emplace(key.events(), pipe); });
    if (options.json)
        printJson({{"event", "ready"}, {"device", words.device}, {"code", key.code()}}, -1);
    else
        std::cout << "key " << key.code() << " of " << board::printable(words.device)
                  << " presses the button\n";
    if (!flushOutput())
        return FAILED;
    auto nextLook = FIRST_LOOK;
    for (bool isOver = false; !isOver;)
        if (bridge->carry()) {
            isOver = StopSignals::waitFor(nextLook);
            nextLook = std::min(2 * nextLook, LAST_LOOK);
        } else {
            nextLook = FIRST_LOOK;
            isOver = StopSignals::waitUntil(std::nullopt, key.descriptor());
        }
    return DONE;
}

} // namespace

void addButtonBridge(CLI::App& button, Options& options) {
    const auto [command, words] = addCommand<BridgeWords, bridgeButton>(
        button, options, "bridge",
        "Forward a key of an input device to the board's button, until a signal ends it");
    command.add_option("EVENT_DEVICE", words.device, "The input device, such as /dev/input/event0")
        ->check(notEmpty())
        ->required()
        ->type_name("");
    command.add_option("--code", words.code, "The key's code; default: the device's only key")
        ->transform(decimal(0, 767))
        ->option_text("N");
}

} // namespace boardctl
