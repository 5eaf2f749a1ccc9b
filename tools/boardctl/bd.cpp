#include <iostream>

#include "CommandLine.h"
#include "Help.h"
#include "Output.h"
#include "base/Error.h"
#include "base/File.h"
#include "base/FileReplacement.h"
#include "board/Report.h"
#include "descriptor/DescriptorImage.h"
#include "descriptor/TagsJson.h"

namespace {

constexpr std::size_t MAX_JSON_SIZE = std::size_t{16} * 1024 * 1024;

/// What `use` shows of the descriptor in `image`, or of the board's own without one. A corrupt
/// image is shown as far as it is good; the status then is FAILED.
int withDescriptor(const Options& options, const std::string& image,
                   const std::function<void(const CBoardDescr&)>& use) {
    std::string fault;
    if (image.empty()) {
        const Board board(options);
        if (!board.host().descriptor())
            throw board::Error(board.profilePath() + ": the board has no descriptor");
        fault = board::loadDescriptor(board.host());
        use(*board.host().descriptor());
    } else {
        CBoardDescr descriptor;
        String error;
        if (!descriptor.importBD(board::readImage(image), error).isSuccess())
            fault = error.c_str();
        use(descriptor);
    }
    if (fault.empty())
        return DONE;
    static_cast<void>(flushOutput()); // what was good stands before what was not
    complain(fault);
    return FAILED;
}

using ReportOperation = InfoContainer& (CBoardDescr::*)(InfoContainer&, unsigned, unsigned,
                                                        unsigned, unsigned, const String&) const;

int report(const Options& options, const std::string& image, ReportOperation operation) {
    return withDescriptor(options, image, [&](const CBoardDescr& descriptor) {
        InfoContainer rows;
        (descriptor.*operation)(rows, 2, 0, 0, 0, String::EMPTY());
        if (options.json)
            printJson(rowsToJson(rows));
        else
            printRows(rows);
    });
}

int dump(const Options& options, const std::string& image) {
    return withDescriptor(options, image, [](const CBoardDescr& descriptor) {
        std::cout << board::tagsToJson(descriptor.getTags());
    });
}

int build(const Options& options, const std::string& source, const std::string& target) {
    CBoardDescr descriptor;
    board::tagsFromJson(board::readFile(source, MAX_JSON_SIZE), source, descriptor);
    TString<char> image;
    String error;
    static_cast<void>(descriptor.exportBD(image, error)); // always succeeds
    if (image.length() > board::MAX_IMAGE_SIZE)
        throw board::Error(source + ": the image would have " + std::to_string(image.length()) +
                           " bytes (expected at most " + std::to_string(board::MAX_IMAGE_SIZE) +
                           ")");
    board::replaceFile(target, std::string(image.data(), image.length()));
    if (options.json)
        printJson(
            {{"image", target}, {"tags", descriptor.getTags().size()}, {"size", image.length()}});
    if (flushOutput())
        return DONE;
    complain(target + ": was written all the same");
    return FAILED;
}

} // namespace

void addBd(CLI::App& app, Options& options) {
    auto* const bd =
        app.add_subcommand("bd", "The board descriptor: show, check, take apart, build, edit");
    bd->require_subcommand(1);
    const auto image = std::make_shared<std::string>();
    const auto add = [&](const char* name, const char* text, const std::function<int()>& command) {
        auto* const sub = bd->add_subcommand(name, text);
        sub->add_option("IMAGE", *image, "Image file; without it the board's own descriptor")
            ->check(notEmpty())
            ->type_name("FILE");
        sub->callback([&options, command] { options.command = command; });
    };
    add("show", "The report for people: each tag by what it means",
        [&options, image] { return report(options, *image, &CBoardDescr::getInfo); });
    add("raw", "The report of all tags as bytes",
        [&options, image] { return report(options, *image, &CBoardDescr::getRawInfo); });
    add("dump", "All tags as JSON, whatever --format says; `bd build` makes an image of it again",
        [&options, image] { return dump(options, *image); });

    struct Words {
        std::string source, target;
    };
    const auto words = std::make_shared<Words>();
    auto* const sub =
        bd->add_subcommand("build", "Make an image of exactly the tags in a JSON file");
    sub->add_option("TAGS", words->source,
                    "What `bd dump` prints: [{\"id\":45,\"data\":\"1234abcd\"}, ...]")
        ->check(notEmpty())
        ->type_name("FILE")
        ->required();
    sub->add_option("-o,--output", words->target, "The image; replaced whole or left as it was")
        ->check(notEmpty())
        ->type_name("IMAGE")
        ->required();
    addExamples(*sub, {"bd dump old.bin >tags.json", "bd build tags.json -o new.bin"});
    sub->callback([&options, words] {
        options.command = [&options, words] {
            return build(options, words->source, words->target);
        };
    });

    addBdEdit(*bd, options);
}
