#include "bd/edit/Edit.h"

#include <iostream>
#include <set>

#include "bd/BdCommands.h"
#include "bd/BdSource.h"
#include "bd/edit/EditOutput.h"
#include "output/Messages.h"
#include "output/Prompt.h"

namespace boardctl {

void addEditOptions(CLI::App& command, EditWords& words) {
    addEditedImage(command, words.image);
    command.add_flag("--force", words.manner.force,
                     "Edit a corrupt image too: keep the tags before the fault, drop the rest");
    command
        .add_option("--backup", words.manner.backup,
                    "New file for the old image; by default a dated one in the user's state folder")
        ->check(notEmpty())
        ->type_name("FILE");
    command.add_flag("--dry-run", words.manner.dryRun, "Show the change, write nothing");
    command.add_flag("-y,--yes", words.yes, "Write a board's device without asking");
}

int edit(const Options& options, const EditWords& words,
         const std::function<void(board::DescriptorEdit&)>& step) {
    if (words.image == STANDARD_STREAM)
        throw WrongCall("-i -: standard input can't be edited (expected an image file)");
    const BdSource chosen(options, words.image);
    const std::string& path = chosen.source().path();
    board::EditManner manner = words.manner;
    if (chosen.isScratch()) {
        complain("--sim: this edits a simulated board that is removed after the command");
        manner.keepOld = !manner.backup.empty();
    }
    const auto stepOnGoodTags = [&](board::DescriptorEdit& descriptor) {
        if (const auto& fault = descriptor.original().fault())
            complain(*fault + "; only the tags before the fault are kept");
        step(descriptor);
    };
    const bool asks = !words.yes && !chosen.isScratch();
    bool isShown = false;
    const auto confirm = [&](const std::vector<board::TagChange>& changes) {
        if (!asks)
            return;
        printChanges(options.json ? std::cerr : std::cout, changes);
        static_cast<void>(flushOutput());
        isShown = true;
        expectYes("Write this to " + path + "?", path + ": nothing was written",
                  path + ": is a board's device, and standard input is not a terminal to ask on "
                         "(expected -y); nothing was written");
    };
    const board::EditOutcome outcome =
        board::editDescriptor(chosen.source(), manner, stepOnGoodTags, confirm);
    if (options.json) {
        printOutcomeAsJson(path, outcome);
    } else {
        if (!isShown)
            printChanges(std::cout, outcome.changes);
        printOutcome(path, outcome, manner.dryRun);
    }
    if (flushOutput())
        return DONE;
    if (outcome.isWritten) // standard output failed, so the message goes here
        complain(path + ": was written anyway" + backupNote(outcome));
    return FAILED;
}

void addAssignments(CLI::App& command, std::vector<std::string>& assignments) {
    command
        .add_option("ASSIGNMENT", assignments,
                    "TYPE is u8, u16, u32, uint (4 bytes), text, hex or mac (ADDRESS/INTERFACE). "
                    "Several assignments are written together or not at all")
        ->type_name("ID=TYPE:VALUE")
        ->required()
        ->check(notEmpty());
}

std::vector<board::Assignment> parseForExistingTags(const std::vector<std::string>& words) {
    std::vector<board::Assignment> assignments;
    std::set<std::pair<BD::TagId, unsigned>> places;
    for (const std::string& word : words) {
        assignments.push_back(orWrongCall([&] { return board::parseAssignment(word); }));
        const board::TagPlace& place = assignments.back().place;
        if (!places.insert({place.id, place.index}).second)
            throw WrongCall("tag " + std::to_string(place.id) + "." + std::to_string(place.index) +
                            " is assigned twice");
    }
    return assignments;
}

std::vector<board::Assignment> parseToPut(const std::vector<std::string>& words) {
    std::vector<board::Assignment> assignments;
    std::set<std::string> places;
    for (const std::string& word : words) {
        assignments.push_back(orWrongCall([&] { return board::parseAssignment(word); }));
        const std::string place = board::placeWords(assignments.back());
        if (!places.insert(place).second)
            throw WrongCall(place + " is assigned twice");
    }
    return assignments;
}

std::vector<board::Assignment> parseForNewTags(const std::vector<std::string>& words) {
    std::vector<board::Assignment> assignments;
    for (const std::string& word : words) {
        assignments.push_back(orWrongCall([&] { return board::parseAssignment(word); }));
        if (assignments.back().hasIndex)
            throw WrongCall("a new tag has a position in the list, not an occurrence (expected "
                            "ID=TYPE:VALUE)");
    }
    return assignments;
}

} // namespace boardctl
