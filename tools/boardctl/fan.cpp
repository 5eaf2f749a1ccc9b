#include <iostream>

#include "CommandLine.h"
#include "Output.h"

namespace {

std::vector<std::string> fansOf(const board::Host& host, const std::string& name) {
    std::vector<std::string> fans;
    std::string known;
    for (const board::Device& device : host.devices())
        if (device.kind == "fan") {
            known += (known.empty() ? "" : ", ") + device.name;
            if (name.empty() || name == device.name)
                fans.push_back(device.name);
        }
    if (fans.empty())
        throw std::runtime_error(known.empty() ? "the board has no fan"
                                               : "there is no fan '" + name + "' (there are: " + known + ")");
    return fans;
}

int fan(const Options& options, const std::string& name, const std::string& word) {
    const Board board(options);
    const std::vector<std::string> fans = fansOf(board.host(), name);
    if (!word.empty() && fans.size() > 1)
        throw WrongCall("the board has several fans: say which one with --name");

    int status = DONE;
    nlohmann::ordered_json json = nlohmann::ordered_json::array();
    for (const std::string& each : fans) {
        const board::FanReading reading = word.empty()
                                              ? board::readFan(board.host(), each)
                                              : board::setFan(board.host(), each, board::speedOf(word));
        if (options.json)
            json.push_back(fanToJson(reading));
        else if (reading.fault.empty())
            std::cout << reading.name << ": " << board::speedName(reading.speed) << "\n";
        if (!reading.fault.empty()) {
            complain("fan '" + reading.name + "': " + reading.fault);
            status = FAILED;
        }
    }
    if (options.json)
        printJson(json);
    return status;
}

} // namespace

void addFan(CLI::App& app, Options& options) {
    auto* const command = app.add_subcommand("fan", "Read a fan's speed, or set it and read it back");
    struct Words {
        std::string name, speed;
    };
    const auto words = std::make_shared<Words>();
    command->add_option("SPEED", words->speed, "The speed to set")
        ->check(CLI::IsMember({"full", "high", "low", "off"}))
        ->option_text("full|high|low|off");
    command->add_option("--name", words->name, "Which of several fans")->check(notEmpty())->type_name("NAME");
    command->callback([&options, words] {
        options.command = [&options, words] { return fan(options, words->name, words->speed); };
    });
}
