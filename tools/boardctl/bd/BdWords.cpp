#include "bd/BdCommands.h"
#include "program/Command.h"
#include "program/Commands.h"
#include "program/Help.h"
#include "program/WordChecks.h"

namespace boardctl {

namespace {

void addImage(CLI::App& command, BdWords& words) {
    command
        .add_option("-i,--image", words.image, "Image file; without it the board's own descriptor")
        ->check(notEmpty())
        ->type_name("IMAGE");
}

void addManner(CLI::App& command, BdWords& words) {
    addImage(command, words);
    command.add_flag(
        "--force", words.manner.force,
        "Edit a corrupt image too: the tags before the fault stay, the rest is dropped");
    command
        .add_option("--backup", words.manner.backup,
                    "The new file that keeps the old image; by default a dated one in the user's "
                    "state folder")
        ->check(notEmpty())
        ->type_name("FILE");
    command.add_flag("--dry-run", words.manner.dryRun, "Show the change, write nothing");
    command.add_flag("-y,--yes", words.yes, "Change a board's device without a question");
}

CLI::Option* addWord(CLI::App& command, const char* name, std::string& word, const char* text) {
    return command.add_option(name, word, text)->check(notEmpty())->type_name("");
}

void addAssignments(CLI::App& command, BdWords& words) {
    command
        .add_option("ASSIGNMENT", words.assignments,
                    "TYPE is u8, u16, u32, uint (4 bytes), text or hex. Several are one write, all "
                    "or nothing")
        ->type_name("ID=TYPE:VALUE")
        ->required()
        ->check(notEmpty());
}

constexpr char TAG[] = "ID or ID.N: decimal, 0x hexadecimal or a name; N counts from 0";

void addMacCommands(CLI::App& bd, Options& options) {
    CLI::App& mac = addGroup(bd, "mac", "The MAC addresses of the descriptor");
    {
        const auto [command, words] = addCommand<BdWords>(
            mac, options, "list", "Each with its place and its interface's number", bdMacList);
        addImage(command, words);
    }
    {
        const auto [command, words] = addCommand<BdWords>(
            mac, options, "get", "One address and its interface's number", bdMacGet);
        addWord(command, "INDEX", words.position, "Which one, counted from 0")->required();
        addImage(command, words);
    }
    {
        const auto [command, words] =
            addCommand<BdWords>(mac, options, "set", "Overwrite an address", bdMacSet);
        addWord(command, "INDEX", words.position, "Which one, counted from 0")->required();
        addWord(command, "MAC", words.mac, "Such as 02:00:00:00:00:07")->required();
        addWord(command, "INTERFACE", words.interface,
                "The interface's number, 0 to 65535; by default as it was");
        addManner(command, words);
    }
    {
        const auto [command, words] = addCommand<BdWords>(
            mac, options, "add", "Add an address behind the last one", bdMacAdd);
        addWord(command, "MAC", words.mac, "Such as 02:00:00:00:00:07")->required();
        addWord(command, "INTERFACE", words.interface,
                "The interface's number, 0 to 65535; by default 0");
        addManner(command, words);
    }
}

} // namespace

void addBdEdit(CLI::App& bd, Options& options) {
    {
        const auto [command, words] =
            addCommand<BdWords>(bd, options, "get", "Read one tag", bdGet);
        addWord(command, "TAG", words.tag, TAG)->required();
        command.add_option("--type", words.type, "Read it as this; hex without")
            ->option_text("u8|u16|u32|uint|text|hex");
        addImage(command, words);
        addExamples(command, {"bd get ProductID", "bd get MacAddress.1 -i image.bin",
                              "bd get 2 --type u32"});
    }
    {
        const auto [command, words] = addCommand<BdWords>(
            bd, options, "set", "Replace the data of tags where they stand", bdSet);
        addAssignments(command, words);
        addManner(command, words);
        addExamples(command, {"bd set ProductID=hex:1234abcd -i image.bin",
                              "bd set DspChannels=u32:64 5=text:SN-000123 --dry-run",
                              "bd set MacAddress.1=hex:0200000000090001"});
    }
    {
        const auto [command, words] =
            addCommand<BdWords>(bd, options, "add", "Add tags in front of the terminator", bdAdd);
        addAssignments(command, words);
        addManner(command, words);
        addExamples(command, {"bd add DspChannels=u32:64 5=text:SN-000123 -i image.bin"});
    }
    {
        const auto [command, words] = addCommand<BdWords>(
            bd, options, "insert", "Insert tags at a position of the list", bdInsert);
        addWord(command, "POSITION", words.position,
                "Among all tags, counted from 0; never behind the terminator")
            ->required();
        addAssignments(command, words);
        addManner(command, words);
        addExamples(command, {"bd insert 0 ProductID=hex:1234abcd -i image.bin"});
    }
    {
        const auto [command, words] =
            addCommand<BdWords>(bd, options, "remove", "Remove a tag", bdRemove);
        addWord(command, "TAG", words.tag, TAG)->required();
        addManner(command, words);
    }
    addMacCommands(bd, options);
    const auto [command, words] = addCommand<BdWords>(
        bd, options, "check",
        "Say what is wrong with an image; status 1 when it is corrupt, warnings leave it 0",
        bdCheck);
    addWord(command, "IMAGE", words.image, "Image file; without it the board's own descriptor")
        ->type_name("FILE");
}

} // namespace boardctl
