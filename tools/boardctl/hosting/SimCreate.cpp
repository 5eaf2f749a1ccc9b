#include <iostream>
#include <string>

#include "output/Json.h"
#include "program/Command.h"
#include "program/Commands.h"
#include "program/WordChecks.h"
#include "simulation/SimulatedBoard.h"

namespace boardctl {

namespace {

struct CreateWords {
    std::string folder;
};

int create(const Options& options, const CreateWords& words) {
    const auto board = board::SimulatedBoard::create(words.folder);
    if (options.json)
        printJson({{"profile", board.profile()}, {"simulated", true}});
    else
        std::cout << "created " << board.profile() << "; try: boardctl --board " << board.profile()
                  << " info\n";
    return DONE;
}

} // namespace

void addSimCreate(CLI::App& sim, Options& options) {
    const auto [command, words] = addCommand<CreateWords>(
        sim, options, "create", "Create a simulated board in a folder", create);
    command.add_option("DIR", words.folder, "A new or empty folder")
        ->check(notEmpty())
        ->type_name("")
        ->required();
}

} // namespace boardctl
