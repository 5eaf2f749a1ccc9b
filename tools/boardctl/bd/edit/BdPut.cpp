#include "bd/Assignments.h"
#include "bd/BdCommands.h"
#include "bd/edit/Edit.h"
#include "program/Command.h"
#include "program/Help.h"

namespace boardctl {

namespace {

struct PutWords : EditWords {
    std::vector<std::string> assignments;
};

int put(const Options& options, const PutWords& words) {
    const auto assignments = parseToPut(words.assignments);
    return edit(options, words, [&](board::DescriptorEdit& descriptor) {
        for (const board::Assignment& each : assignments)
            descriptor.put(each);
    });
}

} // namespace

void addBdPut(CLI::App& bd, Options& options) {
    const auto [command, words] = addCommand<PutWords, put>(
        bd, options, "put", "Set tags, and add those that are missing; safe to repeat");
    addAssignments(command, words.assignments,
                   "Several assignments are written together or not at all")
        ->required();
    addEditOptions(command, words);
    addExamples(command, {"bd put 5=text:SN-000123 MacAddress=mac:02:00:00:00:00:07/3"});
}

} // namespace boardctl
