#include <algorithm>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

#include "base/Text.h"
#include "leds/check/LedCheck.h"
#include "leds/check/LedDeviceCheck.h"
#include "output/Json.h"
#include "program/Board.h"
#include "program/Command.h"
#include "program/Commands.h"
#include "program/Help.h"
#include "program/SysfsOption.h"
#include "sequencer/LedTables.h"

using board::LedFinding;
using nlohmann::ordered_json;

namespace boardctl {

namespace {

struct LedsCheckWords {
    std::string sysfs = "/sys";
    bool isStrict = false;
};

const char* nameOf(LedFinding::Level level) {
    return level == LedFinding::Level::MISTAKE ? "error" : "warning";
}

ordered_json findingsJson(const std::vector<LedFinding>& findings, bool seesFiles) {
    ordered_json mistakes = ordered_json::array(), list = ordered_json::array();
    for (const LedFinding& finding : findings) {
        if (finding.level == LedFinding::Level::MISTAKE)
            mistakes.push_back(finding.fault.text());
        list.push_back({{"place", finding.fault.place},
                        {"what", finding.fault.what},
                        {"level", nameOf(finding.level)}});
    }
    return {{"mistakes", std::move(mistakes)},
            {"findings", std::move(list)},
            {"files_checked", seesFiles}};
}

int checkTables(const Options& options, const LedsCheckWords& words) {
    const BoardProfile board(options);
    const board::LedSequencerProfile& tables = ledTablesOf(board);
    const board::DeviceLocator locator(words.sysfs);
    // Tables are designed on other machines too, so missing files are not mistakes if this machine
    // has none of the LEDs.
    const bool hasFiles = tables.access == LedCtrl::ACCESS_FILES;
    const bool seesFiles = hasFiles && board::mayHaveLeds(tables, locator);
    std::vector<LedFinding> findings = board::checkLeds(board.profile());
    if (seesFiles) {
        const auto found = board::checkLedDevices(tables, locator);
        std::copy(found.begin(), found.end(), std::back_inserter(findings));
    }
    if (options.json) {
        printJson(findingsJson(findings, seesFiles));
    } else {
        for (const LedFinding& finding : findings)
            std::cout << nameOf(finding.level) << ": " << board::printable(finding.fault.text())
                      << "\n";
        if (findings.empty())
            std::cout << "no mistakes\n";
        if (hasFiles && !seesFiles)
            std::cout << "this machine has none of the LEDs, so only the tables were checked\n";
    }
    return std::any_of(findings.begin(), findings.end(),
                       [&](const LedFinding& finding) {
                           return words.isStrict || finding.level == LedFinding::Level::MISTAKE;
                       })
               ? FOUND
               : DONE;
}

} // namespace

void addLedsCheck(CLI::App& leds, Options& options) {
    const auto [command, words] = addCommand<LedsCheckWords, checkTables>(
        leds, options, "check",
        "List mistakes and doubtful rows of the LED tables, and what is wrong with the LEDs' "
        "files; exits with 3 after a mistake");
    command.add_flag("--strict", words.isStrict, "Exit with 3 after a warning too");
    addSysfsOption(command, words.sysfs);
    addExamples(command, {"leds check --strict --board board.toml  before a table is released"});
}

} // namespace boardctl
