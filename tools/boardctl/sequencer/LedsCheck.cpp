#include <iostream>
#include <string>
#include <vector>

#include "leds/LedCheck.h"
#include "output/Json.h"
#include "output/Messages.h"
#include "program/Board.h"
#include "program/Command.h"
#include "program/Commands.h"
#include "sequencer/LedTables.h"

namespace boardctl {

namespace {

int checkTables(const Options& options) {
    const BoardProfile board(options);
    std::vector<std::string> mistakes;
    for (const board::ProfileFault& mistake : board::checkLeds(ledTablesOf(board)))
        mistakes.push_back(mistake.text());
    if (options.json)
        printJson({{"mistakes", mistakes}});
    for (const std::string& mistake : mistakes)
        complain(mistake);
    if (mistakes.empty() && !options.json)
        std::cout << "no mistakes\n";
    return mistakes.empty() ? DONE : FOUND;
}

} // namespace

void addLedsCheck(CLI::App& leds, Options& options) {
    addCommand(leds, options, "check",
               "Look for mistakes in the command table; exit status 3 if there are any",
               checkTables);
}

} // namespace boardctl
