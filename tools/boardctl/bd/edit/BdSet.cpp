#include "bd/Assignments.h"
#include "bd/BdCommands.h"
#include "bd/edit/Edit.h"
#include "program/Command.h"
#include "program/Help.h"

namespace boardctl {

namespace {

struct SetWords : EditWords {
    std::vector<std::string> assignments;
};

int set(const Options& options, const SetWords& words) {
    const auto assignments = parseForExistingTags(words.assignments);
    return edit(options, words, [&](board::DescriptorEdit& descriptor) {
        for (const board::Assignment& each : assignments)
            descriptor.set(each);
    });
}

} // namespace

void addBdSet(CLI::App& bd, Options& options) {
    const auto [command, words] =
        addCommand<SetWords, set>(bd, options, "set", "Replace the data of existing tags");
    addAssignments(command, words.assignments,
                   "Several assignments are written together or not at all")
        ->required();
    addEditOptions(command, words);
    addExamples(command, {"bd set ProductID=hex:1234abcd -i image.bin",
                          "bd set DspChannels=u32:64 5=text:SN-000123 --dry-run",
                          "bd set MacAddress.1=hex:0200000000090001"});
}

} // namespace boardctl
