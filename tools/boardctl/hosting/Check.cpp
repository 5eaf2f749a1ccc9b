#include <iostream>
#include <string>
#include <vector>

#include "base/Text.h"
#include "board/BoardCheck.h"
#include "output/Json.h"
#include "program/Board.h"
#include "program/Command.h"
#include "program/Commands.h"
#include "program/Help.h"
#include "program/SysfsOption.h"

using board::BoardFinding;
using nlohmann::ordered_json;

namespace boardctl {

namespace {

struct CheckWords {
    std::string sysfs = "/sys";
};

const char* nameOf(BoardFinding::Level level) {
    return level == BoardFinding::Level::ERROR ? "error" : "warning";
}

/// Prints what was found about the board of the profile `path`. Returns the exit status.
int report(const Options& options, const std::string& path,
           const std::vector<BoardFinding>& findings) {
    if (options.json) {
        ordered_json list = ordered_json::array();
        for (const BoardFinding& finding : findings)
            list.push_back({{"place", finding.fault.place},
                            {"what", finding.fault.what},
                            {"level", nameOf(finding.level)}});
        printJson({{"board", path}, {"findings", std::move(list)}});
    } else {
        for (const BoardFinding& finding : findings)
            std::cout << nameOf(finding.level) << ": " << board::printable(finding.fault.text())
                      << "\n";
        if (findings.empty())
            std::cout << board::printable(path) << ": nothing wrong found\n";
    }
    return findings.empty() ? DONE : FOUND;
}

int check(const Options& options, const CheckWords& words) {
    try {
        const BoardProfile chosen(options);
        board::BoardCheck check{board::DeviceLocator(words.sysfs)};
        check.check(chosen.profile());
        return report(options, chosen.profilePath(), check.findings());
    } catch (const board::ProfileError& error) {
        return report(options, error.file(), {{BoardFinding::Level::ERROR, error.fault()}});
    }
}

} // namespace

void addCheck(CLI::App& app, Options& options) {
    const auto [command, words] = addCommand<CheckWords>(
        app, options, "check",
        "Look for mistakes in the profile, its devices, LED table and descriptor; exits with 3 if "
        "there are any",
        check);
    addSysfsOption(command, words.sysfs);
    addExamples(command, {"check --board board.toml  try a profile before a host uses it"});
}

} // namespace boardctl
