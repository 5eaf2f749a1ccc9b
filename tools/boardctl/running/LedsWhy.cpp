#include <string>
#include <vector>

#include "base/Suggestion.h"
#include "base/Text.h"
#include "output/Json.h"
#include "output/Rows.h"
#include "program/Command.h"
#include "program/Commands.h"
#include "program/WordChecks.h"
#include "running/RunningHost.h"

using nlohmann::ordered_json;

namespace boardctl {

namespace {

struct WhyWords {
    std::string led; ///< empty for all
};

ordered_json leds(board::StatusClient& client, const std::string& name) {
    try {
        return client.call("Leds", name.empty() ? nlohmann::ordered_json::object()
                                                : nlohmann::ordered_json{{"name", name}});
    } catch (const board::StatusClient::CallError& error) {
        if (error.name != "org.boarddrivers.Host.NoSuchLed")
            throw;
        std::vector<std::string> known;
        for (const ordered_json& each : listOf(error.parameters, "known"))
            if (each.is_string())
                known.push_back(each.get<std::string>());
        throw board::Error("the sequencer has no LED '" + name + "' (there are: " +
                           board::join(known) + ")" + board::didYouMean(name, known));
    }
}

InfoContainer rowsOf(const ordered_json& leds) {
    InfoContainer rows;
    for (const ordered_json& led : leds) {
        rows.add(0, 0, textOf(led, "name").c_str(), litText(led).c_str());
        const auto drive = led.find("drive");
        rows.add(1, 0, "driven by",
                 drive != led.end() && drive->is_object() ? driveText(*drive).c_str() : "nothing");
        for (const ordered_json& covered : listOf(led, "covers"))
            rows.add(1, 0, "covers", driveText(covered).c_str());
    }
    return rows;
}

int why(const Options& options, const WhyWords& words) {
    board::FoundHost host = runningHost(options);
    const ordered_json answer = leds(host.client, words.led);
    const ordered_json found = listOf(answer, "leds");
    if (found.empty())
        throw board::Error("the board has no LED sequencer");
    if (options.json)
        printJson(answer);
    else
        printRows(rowsOf(found));
    return DONE;
}

} // namespace

void addLedsWhy(CLI::App& leds, Options& options) {
    const auto [command, words] = addCommand<WhyWords, why>(
        leds, options, "why", "Show what drives each LED of the running host, and until when");
    command.add_option("LED", words.led, "Only this LED")->check(notEmpty())->type_name("");
}

} // namespace boardctl
