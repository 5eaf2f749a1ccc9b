#include "bd/Assignments.h"
#include "bd/BdCommands.h"
#include "bd/edit/Edit.h"
#include "program/Command.h"
#include "program/Help.h"

namespace boardctl {

namespace {

struct InsertWords : EditWords {
    std::string position;
    std::vector<std::string> assignments;
};

int insert(const Options& options, const InsertWords& words) {
    unsigned position = orWrongCall(
        [&] { return board::parseNumber(words.position, board::MAX_IMAGE_SIZE, "position"); });
    const auto assignments = parseForNewTags(words.assignments);
    return edit(options, words, [&](board::DescriptorEdit& descriptor) {
        for (const board::Assignment& each : assignments)
            descriptor.insert(position++, each);
    });
}

} // namespace

void addBdInsert(CLI::App& bd, Options& options) {
    const auto [command, words] = addCommand<InsertWords, insert>(
        bd, options, "insert", "Insert tags at a position of the list");
    addWord(command, "POSITION", words.position,
            "Counted from 0 among all tags; never after the terminator")
        ->required();
    addAssignments(command, words.assignments,
                   "Several assignments are written together or not at all")
        ->required();
    addEditOptions(command, words);
    addExamples(command, {"bd insert 0 ProductID=hex:1234abcd -i image.bin"});
}

} // namespace boardctl
