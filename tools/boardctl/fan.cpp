#include "CommandLine.h"
#include "Output.h"

namespace {

int fan(const Options& options, const std::string& name, const std::string& word) {
    const Board board(options);
    const std::vector<std::string> fans = board.devices("fan", name);
    if (!word.empty() && fans.size() > 1)
        throw WrongCall("the board has several fans: say which one with --name");
    std::vector<board::FanReading> readings;
    for (const std::string& each : fans)
        readings.push_back(word.empty() ? board::readFan(board.host(), each)
                                        : board::setFan(board.host(), each, board::speedOf(word)));
    return show(readings, options.json);
}

} // namespace

void addFan(CLI::App& app, Options& options) {
    auto* const command =
        app.add_subcommand("fan", "Read a fan's speed, or set it and read it back");
    struct Words {
        std::string name, speed;
    };
    const auto words = std::make_shared<Words>();
    command->add_option("SPEED", words->speed, "The speed to set")
        ->check(oneOf({"full", "high", "low", "off"}))
        ->option_text("full|high|low|off");
    command->add_option("--name", words->name, "Which of several fans")
        ->check(notEmpty())
        ->type_name("NAME");
    command->callback([&options, words] {
        options.command = [&options, words] { return fan(options, words->name, words->speed); };
    });
}
