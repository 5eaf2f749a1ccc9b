#include "BdCommands.h"
#include "Help.h"

namespace {

using Words = std::shared_ptr<BdWords>;
using Command = int (*)(const Options&, const BdWords&);

CLI::App* addCommand(CLI::App& parent, Options& options, const Words& words, const char* name,
                     const char* text, Command command) {
    auto* const sub = parent.add_subcommand(name, text);
    sub->callback([&options, words, command] {
        options.command = [&options, words, command] { return command(options, *words); };
    });
    return sub;
}

void addImage(CLI::App& command, const Words& words) {
    command
        .add_option("-i,--image", words->image, "Image file; without it the board's own descriptor")
        ->check(notEmpty())
        ->type_name("IMAGE");
}

void addManner(CLI::App& command, const Words& words) {
    addImage(command, words);
    command.add_flag(
        "--force", words->manner.force,
        "Edit a corrupt image too: the tags before the fault stay, the rest is dropped");
    command
        .add_option("--backup", words->manner.backup,
                    "The new file that keeps the old image; by default a dated one in the user's "
                    "state folder")
        ->check(notEmpty())
        ->type_name("FILE");
    command.add_flag("--dry-run", words->manner.dryRun, "Show the change, write nothing");
    command.add_flag("-y,--yes", words->yes, "Change a board's device without a question");
}

CLI::Option* addWord(CLI::App& command, const char* name, std::string& word, const char* text) {
    return command.add_option(name, word, text)->check(notEmpty())->type_name("");
}

void addAssignments(CLI::App& command, const Words& words, const char* text) {
    command.add_option("ASSIGNMENT", words->assignments, text)
        ->type_name("ID=TYPE:VALUE")
        ->required()
        ->check(notEmpty());
}

constexpr char TAG[] = "ID or ID.N: decimal, 0x hexadecimal or a name; N counts from 0";

void addMacCommands(CLI::App& bd, Options& options, const Words& words) {
    auto* const mac = bd.add_subcommand("mac", "The MAC addresses of the descriptor");
    mac->require_subcommand(1);

    auto* sub = addCommand(*mac, options, words, "list",
                           "Each with its place and its interface's number", bdMacList);
    addImage(*sub, words);
    sub =
        addCommand(*mac, options, words, "get", "One address and its interface's number", bdMacGet);
    addWord(*sub, "INDEX", words->position, "Which one, counted from 0")->required();
    addImage(*sub, words);
    sub = addCommand(*mac, options, words, "set", "Overwrite an address", bdMacSet);
    addWord(*sub, "INDEX", words->position, "Which one, counted from 0")->required();
    addWord(*sub, "MAC", words->mac, "Such as 02:00:00:00:00:07")->required();
    addWord(*sub, "INTERFACE", words->interface,
            "The interface's number, 0 to 65535; by default as it was");
    addManner(*sub, words);
    sub = addCommand(*mac, options, words, "add", "Add an address behind the last one", bdMacAdd);
    addWord(*sub, "MAC", words->mac, "Such as 02:00:00:00:00:07")->required();
    addWord(*sub, "INTERFACE", words->interface,
            "The interface's number, 0 to 65535; by default 0");
    addManner(*sub, words);
}

} // namespace

void addBdEdit(CLI::App& bd, Options& options) {
    const auto words = std::make_shared<BdWords>();

    auto* sub = addCommand(bd, options, words, "get", "Read one tag", bdGet);
    addWord(*sub, "TAG", words->tag, TAG)->required();
    sub->add_option("--type", words->type, "Read it as this; hex without")
        ->option_text("u8|u16|u32|uint|text|hex");
    addImage(*sub, words);
    addExamples(*sub,
                {"bd get ProductID", "bd get MacAddress.1 -i image.bin", "bd get 2 --type u32"});

    constexpr char ASSIGNMENT[] =
        "TYPE is u8, u16, u32, uint (4 bytes), text or hex. Several are one write, all or nothing";
    sub = addCommand(bd, options, words, "set", "Replace the data of tags where they stand", bdSet);
    addAssignments(*sub, words, ASSIGNMENT);
    addManner(*sub, words);
    addExamples(*sub, {"bd set ProductID=hex:1234abcd -i image.bin",
                       "bd set DspChannels=u32:64 5=text:SN-000123 --dry-run",
                       "bd set MacAddress.1=hex:0200000000090001"});
    sub = addCommand(bd, options, words, "add", "Add tags in front of the terminator", bdAdd);
    addAssignments(*sub, words, ASSIGNMENT);
    addManner(*sub, words);
    addExamples(*sub, {"bd add DspChannels=u32:64 5=text:SN-000123 -i image.bin"});
    sub =
        addCommand(bd, options, words, "insert", "Insert tags at a position of the list", bdInsert);
    addWord(*sub, "POSITION", words->position,
            "Among all tags, counted from 0; never behind the terminator")
        ->required();
    addAssignments(*sub, words, ASSIGNMENT);
    addManner(*sub, words);
    addExamples(*sub, {"bd insert 0 ProductID=hex:1234abcd -i image.bin"});
    sub = addCommand(bd, options, words, "remove", "Remove a tag", bdRemove);
    addWord(*sub, "TAG", words->tag, TAG)->required();
    addManner(*sub, words);

    addMacCommands(bd, options, words);

    sub = addCommand(
        bd, options, words, "check",
        "Say what is wrong with an image; status 1 when it is corrupt, warnings leave it 0",
        bdCheck);
    addWord(*sub, "IMAGE", words->image, "Image file; without it the board's own descriptor")
        ->type_name("FILE");
}
