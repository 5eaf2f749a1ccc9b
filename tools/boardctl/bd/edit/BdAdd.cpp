#include "bd/Assignments.h"
#include "bd/BdCommands.h"
#include "bd/edit/Edit.h"
#include "program/Command.h"
#include "program/Help.h"

namespace boardctl {

namespace {

struct AddWords : EditWords {
    std::vector<std::string> assignments;
};

int add(const Options& options, const AddWords& words) {
    const auto assignments = parseForNewTags(words.assignments);
    return edit(options, words, [&](board::DescriptorEdit& descriptor) {
        for (const board::Assignment& each : assignments)
            descriptor.add(each);
    });
}

} // namespace

void addBdAdd(CLI::App& bd, Options& options) {
    const auto [command, words] =
        addCommand<AddWords, add>(bd, options, "add", "Add tags before the terminator");
    addAssignments(command, words.assignments,
                   "Several assignments are written together or not at all")
        ->required();
    addEditOptions(command, words);
    addExamples(command, {"bd add DspChannels=u32:64 5=text:SN-000123 -i image.bin"});
}

} // namespace boardctl
