#include <iostream>
#include <string>

#include "base/File.h"
#include "base/Text.h"
#include "output/Json.h"
#include "program/Command.h"
#include "program/Commands.h"
#include "program/WordChecks.h"
#include "simulation/SimulatedBoard.h"
#include "snapshot/SnapshotBoard.h"

namespace boardctl {

namespace {

struct CreateWords {
    std::string folder;
    std::string from; ///< a snapshot; empty: the usual board
};

int create(const Options& options, const CreateWords& words) {
    constexpr std::size_t MOST_SNAPSHOT = std::size_t{64} << 20U;
    const auto board =
        words.from.empty() ? board::SimulatedBoard::create(words.folder)
        : words.from == "-"
            ? board::createFromSnapshot(words.folder, board::readStandardInput(MOST_SNAPSHOT),
                                        "standard input")
            : board::createFromSnapshot(words.folder, board::readFile(words.from, MOST_SNAPSHOT),
                                        words.from);
    if (options.json)
        printJson({{"profile", board.profile()}, {"simulated", true}});
    if (options.json)
        return DONE;
    const std::string profile = board::printable(board.profile());
    std::cout << "created " << profile << "; try: boardctl --board " << profile << " info\n";
    return DONE;
}

} // namespace

void addSimCreate(CLI::App& sim, Options& options) {
    const auto [command, words] = addCommand<CreateWords, create>(
        sim, options, "create", "Create a simulated board in a folder");
    command.add_option("DIR", words.folder, "A new or empty folder")
        ->check(notEmpty())
        ->type_name("")
        ->required();
    command
        .add_option("--from", words.from,
                    "Copy the board of a snapshot, which `boardctl snapshot` wrote; - reads it "
                    "from standard input")
        ->check(notEmpty())
        ->option_text("FILE");
}

} // namespace boardctl
