#include <iostream>

#include "base/File.h"
#include "base/Text.h"
#include "bd/BdCommands.h"
#include "descriptor/TagWords.h"
#include "descriptor/store/ImageBackup.h"
#include "output/Json.h"
#include "output/Messages.h"
#include "program/Command.h"
#include "program/Help.h"

using nlohmann::ordered_json;

namespace boardctl {

namespace {

struct BackupsWords {
    std::string keep;
    bool quiet = false;
};

ordered_json toJson(const board::Backup& backup) {
    return {{"file", backup.file},
            {"device", backup.device},
            {"serial", backup.serial.empty() ? ordered_json(nullptr) : ordered_json(backup.serial)},
            {"time", backup.time},
            {"size", backup.size},
            {"tags", backup.tags}};
}

void print(const board::Backup& backup, const char* start) {
    std::cout << start << backup.time << "  " << board::printable(backup.device) << "  "
              << (backup.serial.empty() ? "-" : backup.serial) << "  " << backup.tags
              << (backup.tags == 1 ? " tag" : " tags") << "  " << board::printable(backup.file)
              << "\n";
}

/// Removes a backup. Returns whether that worked.
bool remove(const board::Backup& backup) {
    const std::string fault = board::discard(backup.file);
    if (!fault.empty())
        complain(fault.substr(2)); // without "; ", which joins it to another message
    return fault.empty();
}

int backups(const Options& options, const BackupsWords& words) {
    constexpr unsigned MOST = 1000000;
    const bool isPruning = !words.keep.empty();
    const unsigned keep = orWrongCall(
        [&] { return isPruning ? board::parseNumber(words.keep, MOST, "--keep:") : MOST; });
    const board::BackupList all = board::listBackups();
    std::vector<board::Backup> listed = all.backups;
    for (const board::UnreadableBackup& each : all.unreadable)
        complain(each.error);
    int status = all.unreadable.empty() ? DONE : FAILED;
    if (isPruning) {
        listed = board::backupsBeyond(listed, keep);
        std::vector<board::Backup> removed;
        for (const board::Backup& each : listed)
            if (remove(each))
                removed.push_back(each);
            else
                status = FAILED;
        listed = std::move(removed);
    }
    if (options.json) {
        ordered_json json = ordered_json::array();
        for (const board::Backup& each : listed)
            json.push_back(toJson(each));
        for (const board::UnreadableBackup& each : all.unreadable)
            json.push_back({{"file", each.file}, {"error", each.error}});
        printJson(json);
    } else if (!words.quiet) {
        for (const board::Backup& each : listed)
            print(each, isPruning ? "removed " : "");
    }
    return status;
}

} // namespace

void addBdBackups(CLI::App& bd, Options& options) {
    const auto [command, words] = addCommand<BackupsWords, backups>(
        bd, options, "backups", "List the images that edits and writes have kept, newest first");
    command
        .add_option("--keep", words.keep,
                    "Remove all but the newest N of each device, and list those that are removed")
        ->check(notEmpty())
        ->type_name("N");
    command.add_flag("-q,--quiet", words.quiet, "List nothing");
    addExamples(command, {"bd backups", "bd backups --keep 100"});
}

} // namespace boardctl
