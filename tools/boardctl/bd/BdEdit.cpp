#include <functional>
#include <iostream>
#include <optional>
#include <set>

#include <unistd.h>

#include "base/File.h"
#include "base/Text.h"
#include "bd/BdCommands.h"
#include "descriptor/DescriptorCheck.h"
#include "descriptor/DescriptorImage.h"
#include "output/Json.h"
#include "output/Messages.h"
#include "output/Rows.h"
#include "program/Board.h"

using nlohmann::ordered_json;

namespace boardctl {

namespace {

std::vector<board::Assignment> assignmentsOf(const BdWords& words, bool toExisting) {
    std::vector<board::Assignment> assignments;
    std::set<std::pair<BD::TagId, unsigned>> places;
    for (const std::string& word : words.assignments) {
        const board::Assignment& each =
            assignments.emplace_back(orWrongCall([&] { return board::parseAssignment(word); }));
        if (!toExisting && each.hasIndex)
            throw WrongCall("a new tag takes its place in the list, not an occurrence (expected "
                            "ID=TYPE:VALUE)");
        if (toExisting && !places.insert({each.place.id, each.place.index}).second)
            throw WrongCall("tag " + std::to_string(each.place.id) + "." +
                            std::to_string(each.place.index) + " is assigned twice");
    }
    return assignments;
}

std::string shown(const BD::Tag& tag) {
    std::string text =
        std::string(BD::TAG_ID_TO_STRING(tag.id).c_str()) + " (" + std::to_string(tag.id) + ")";
    if (tag.data.length() == 0)
        return text + (tag.id == 0 ? ": the terminator" : ": empty");
    text += ": " + board::hexDigits(tag);
    const String plain = board::textOf(tag);
    const std::string safe = board::printable(textOf(plain));
    return safe.size() == plain.length() && !safe.empty() ? text + "  \"" + safe + "\"" : text;
}

void printChanges(std::ostream& out, const std::vector<board::TagChange>& changes) {
    for (const board::TagChange& change : changes) {
        if (change.before)
            out << "- " << change.position << " " << shown(*change.before) << "\n";
        if (change.after) {
            const std::string wrongSize = board::wrongSizeOf(*change.after);
            out << "+ " << change.position << " " << shown(*change.after)
                << (wrongSize.empty() ? "" : "  <- " + wrongSize) << "\n";
        }
    }
}

ordered_json changesToJson(const std::vector<board::TagChange>& changes) {
    ordered_json json = ordered_json::array();
    for (const board::TagChange& change : changes) {
        const BD::TagId id = change.before ? change.before->id : change.after->id;
        ordered_json entry = {{"position", change.position},
                              {"id", id},
                              {"name", BD::TAG_ID_TO_STRING(id).c_str()},
                              {"old", nullptr},
                              {"new", nullptr}};
        if (change.before)
            entry["old"] = board::hexDigits(*change.before);
        if (change.after)
            entry["new"] = board::hexDigits(*change.after);
        json.push_back(std::move(entry));
    }
    return json;
}

/// Asks on standard error, so that standard output holds results only.
void ask(const std::string& path) {
    if (::isatty(STDIN_FILENO) == 0)
        throw board::Error(path +
                           ": is a board's device, and standard input is no terminal to ask at "
                           "(expected -y); nothing was written");
    std::cerr << "Write this to " << path << "? [y/N] " << std::flush;
    std::string answer;
    std::getline(std::cin, answer);
    if (answer != "y" && answer != "Y" && answer != "yes")
        throw board::Error(path + ": nothing was written");
}

void printOutcome(const Options& options, const BdWords& words, const std::string& path,
                  const board::EditOutcome& outcome) {
    if (options.json) {
        ordered_json json = {{"image", path},
                             {"device", outcome.isDevice},
                             {"changes", changesToJson(outcome.changes)},
                             {"written", outcome.isWritten},
                             {"backup", nullptr}};
        if (!outcome.backup.empty())
            json["backup"] = outcome.backup;
        printJson(json);
    } else if (outcome.changes.empty()) {
        std::cout << path << ": holds this already; nothing was written\n";
    } else if (words.manner.dryRun) {
        std::cout << path << ": dry run; nothing was written\n";
    } else {
        std::cout << path << ": written";
        if (!outcome.backup.empty())
            std::cout << "; the old image is in " << outcome.backup;
        std::cout << "\n";
    }
}

/// The image that is to be edited, and what must outlive the edit.
struct Target {
    std::unique_ptr<BoardProfile> board; ///< of an image file none
    board::DescriptorPlace place;
    bool isSimulated() const { return board && board->isSimulated(); }
};

Target targetOf(const Options& options, const std::string& image) {
    Target target;
    if (!image.empty()) {
        target.place.path = image;
        return target;
    }
    // Without a host: programming the descriptor is no reason to connect the board's other drivers.
    target.board = std::make_unique<BoardProfile>(options);
    const board::Profile& profile = target.board->profile();
    if (!profile.descriptor)
        throw board::Error(target.board->profilePath() + ": the board has no descriptor");
    board::withPlaceInErrors(profile.descriptor->device, [&](const std::string& named) {
        target.place.path = board::DeviceLocator().locate(named);
        board::expectReadable(target.place.path);
    });
    target.place.boardDeviceSize = profile.descriptor->size;
    return target;
}

} // namespace

int edit(const Options& options, const BdWords& words,
         const std::function<void(board::DescriptorEdit&)>& step) {
    const Target target = targetOf(options, words.image);
    const std::string& path = target.place.path;
    board::EditManner manner = words.manner;
    if (target.isSimulated()) {
        complain(
            "no --board and no image: this edits a simulated board, which is gone after the call");
        manner.keepOld = !manner.backup.empty();
    }
    const auto stepOnWhatIsLeft = [&](board::DescriptorEdit& descriptor) {
        if (!descriptor.fault().empty())
            complain(descriptor.fault() + "; only the tags before the fault are kept");
        step(descriptor);
    };
    const bool asks = !words.yes && !target.isSimulated();
    bool isShown = false;
    const auto confirm = [&](const std::vector<board::TagChange>& changes) {
        if (!asks)
            return;
        printChanges(options.json ? std::cerr : std::cout, changes);
        static_cast<void>(flushOutput());
        isShown = true;
        ask(path);
    };
    const board::EditOutcome outcome =
        board::editDescriptor(target.place, manner, stepOnWhatIsLeft, confirm);
    if (!options.json && !isShown)
        printChanges(std::cout, outcome.changes);
    printOutcome(options, words, path, outcome);
    if (flushOutput())
        return DONE;
    if (outcome.isWritten) // what could not be said there
        complain(path + ": was written all the same" +
                 (outcome.backup.empty() ? "" : "; the old image is in " + outcome.backup));
    return FAILED;
}

int bdSet(const Options& options, const BdWords& words) {
    const auto assignments = assignmentsOf(words, true);
    return edit(options, words, [&](board::DescriptorEdit& descriptor) {
        for (const board::Assignment& each : assignments)
            descriptor.set(each);
    });
}

int bdAdd(const Options& options, const BdWords& words) {
    const auto assignments = assignmentsOf(words, false);
    return edit(options, words, [&](board::DescriptorEdit& descriptor) {
        for (const board::Assignment& each : assignments)
            descriptor.add(each);
    });
}

int bdInsert(const Options& options, const BdWords& words) {
    unsigned position = numberOrWrongCall(words.position, board::MAX_IMAGE_SIZE, "position");
    const auto assignments = assignmentsOf(words, false);
    return edit(options, words, [&](board::DescriptorEdit& descriptor) {
        for (const board::Assignment& each : assignments)
            descriptor.insert(position++, each);
    });
}

int bdRemove(const Options& options, const BdWords& words) {
    const board::TagPlace place = orWrongCall([&] { return board::parseTagPlace(words.tag); });
    return edit(options, words,
                [&](board::DescriptorEdit& descriptor) { descriptor.remove(place); });
}

} // namespace boardctl
