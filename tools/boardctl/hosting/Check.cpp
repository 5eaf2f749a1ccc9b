#include <iostream>
#include <string>
#include <vector>

#include "base/Text.h"
#include "board/BoardCheck.h"
#include "client/StatusClient.h"
#include "output/Json.h"
#include "program/Board.h"
#include "program/Command.h"
#include "program/Commands.h"
#include "program/Help.h"
#include "program/StopSignals.h"
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

/// The faults that the board's running host reports about its services, or the reason why it can't
/// be asked. Empty if no host is running.
std::vector<BoardFinding> findingsOfHost(const BoardProfile& chosen) {
    std::vector<BoardFinding> findings;
    const auto add = [&](const char* service, const ordered_json& fault) {
        if (fault.is_string())
            findings.push_back(
                {BoardFinding::Level::ERROR,
                 {std::string("running host: ") + service, fault.get<std::string>()}});
    };
    try {
        const ordered_json status =
            board::findHost(chosen.profilePath(), chosen.isSimulated(), StopSignals::waitUntil)
                .status;
        const ordered_json none = ordered_json::object();
        for (const ordered_json& fault :
             status.value(ordered_json::json_pointer("/leds/faults"), none))
            add("leds", fault);
        add("button", status.value(ordered_json::json_pointer("/button/fault"), none));
    } catch (const board::NoHost&) {
    } catch (const board::Error& error) {
        if (!StopSignals::isAsked())
            findings.push_back({BoardFinding::Level::WARNING, {"running host", error.what()}});
    } catch (const ordered_json::exception&) { // a host of another version
    }
    return findings;
}

int check(const Options& options, const CheckWords& words) {
    try {
        const BoardProfile chosen(options);
        board::BoardCheck check{board::DeviceLocator(words.sysfs)};
        check.check(chosen.profile());
        std::vector<BoardFinding> findings = check.findings();
        const std::vector<BoardFinding> ofHost = findingsOfHost(chosen);
        findings.insert(findings.end(), ofHost.begin(), ofHost.end());
        return report(options, chosen.profilePath(), findings);
    } catch (const board::ProfileError& error) {
        return report(options, error.file(), {{BoardFinding::Level::ERROR, error.fault()}});
    }
}

} // namespace

void addCheck(CLI::App& app, Options& options) {
    const auto [command, words] = addCommand<CheckWords, check>(
        app, options, "check",
        "Look for mistakes in the profile, its devices, LED table and descriptor, and in the "
        "services of the running host; exits with 3 if there are any");
    addSysfsOption(command, words.sysfs);
    addExamples(command, {"check --board board.toml  try a profile before a host uses it"});
}

} // namespace boardctl
