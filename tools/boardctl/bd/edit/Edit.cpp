#include "bd/edit/Edit.h"

#include <iostream>

#include "base/Text.h"
#include "bd/BdCommands.h"
#include "bd/BdSource.h"
#include "bd/edit/EditOutput.h"
#include "output/Messages.h"
#include "output/Prompt.h"

namespace boardctl {

void addStoreOptions(CLI::App& command, EditWords& words, const char* force) {
    addEditedImage(command, words.image);
    command.add_flag("--force", words.manner.force, force);
    command
        .add_option("--backup", words.manner.backup,
                    "New file for the old image; by default a dated one in the user's state folder")
        ->check(notEmpty())
        ->type_name("FILE");
    command.add_flag("--dry-run", words.manner.dryRun, "Show the change, write nothing");
    command.add_flag("-y,--yes", words.yes, "Write a board's device without asking");
    command.add_flag("-q,--quiet", words.quiet, "Print nothing for people if all went well");
}

void addEditOptions(CLI::App& command, EditWords& words) {
    addStoreOptions(command, words,
                    "Write tags of a wrong size; edit a corrupt image too: keep the tags before "
                    "the fault, drop the rest");
}

int edit(const Options& options, const EditWords& words,
         const std::function<void(board::DescriptorEdit&)>& step) {
    if (words.image == STANDARD_STREAM)
        throw WrongCall("-i -: standard input can't be edited (expected an image file)");
    const auto stepOnGoodTags = [&](board::DescriptorEdit& descriptor) {
        if (const auto& fault = descriptor.original().fault())
            complain(*fault + "; only the tags before the fault are kept");
        step(descriptor);
    };
    const auto storing = [&](const board::DescriptorSource& source,
                             const board::StoreManner& manner, const board::Confirm& confirm,
                             board::StoreOutcome& outcome) {
        board::editDescriptor(source, manner, stepOnGoodTags, confirm, outcome);
    };
    return store(options, words, true, storing, [](const auto&...) {});
}

int store(const Options& options, const EditWords& words, bool isEdit, const Storing& storing,
          const Recording& recording) {
    board::StoreOutcome outcome;
    std::string path = words.image;
    bool isShown = words.quiet;
    const auto show = [&](std::ostream& out) {
        if (isEdit)
            printChanges(out, outcome.changes);
        else
            out << board::printable(path) << ": " << sizeOf(outcome.image) << "\n";
        isShown = true;
    };
    int status = DONE;
    std::string error;
    try {
        const BdSource chosen(options, words.image);
        path = chosen.source().path();
        outcome.isDevice = chosen.source().isDevice();
        board::StoreManner manner = words.manner;
        if (chosen.isScratch()) {
            complain("--sim: this edits a simulated board that is removed after the command");
            manner.keepOld = !manner.backup.empty();
        }
        const auto confirm = [&](const board::StoreOutcome& outcomeSoFar) {
            if (outcomeSoFar.isTorn)
                complain(path + ": an earlier write was interrupted; this one repairs it");
            if (words.yes || chosen.isScratch())
                return;
            show(options.json ? std::cerr : std::cout);
            static_cast<void>(flushOutput());
            expectYes("Write this to " + path + "?", path + ": nothing was written",
                      path + ": is a board's device, and standard input is not a terminal to ask "
                             "on (expected -y); nothing was written");
        };
        storing(chosen.source(), manner, confirm, outcome);
        if (manner.dryRun && outcome.isTorn)
            complain(path + ": an earlier write was interrupted");
    } catch (const Declined& refusal) {
        outcome.result = board::StoreResult::DECLINED;
        error = refusal.what();
        status = DECLINED;
    } catch (const board::Error& failure) {
        error = failure.what();
        status = FAILED;
    }
    for (const std::string& each : outcome.notes)
        complain(each);
    const bool isWritten = outcome.result == board::StoreResult::WRITTEN;
    try {
        recording(path, outcome, error);
    } catch (const board::Error& failure) {
        status = error.empty() ? FAILED : status;
        error += (error.empty() ? "" : "; ") + std::string(failure.what());
    }
    if (!error.empty())
        complain(error);
    if (options.json) {
        printOutcomeAsJson(path, outcome, isEdit, error);
    } else if (error.empty()) {
        if (!isShown)
            show(std::cout);
        if (!words.quiet)
            printOutcome(path, outcome);
    }
    if (flushOutput())
        return status;
    if (isWritten) // standard output failed, so standard error has the result
        complain(path + ": was written anyway" + backupNote(outcome));
    return FAILED;
}

} // namespace boardctl
