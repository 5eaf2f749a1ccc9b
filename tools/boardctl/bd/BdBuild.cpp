#include <iostream>
#include <string>
#include <vector>

#include "base/File.h"
#include "base/FileReplacement.h"
#include "bd/BdCommands.h"
#include "descriptor/TagsJson.h"
#include "output/Json.h"
#include "output/Messages.h"
#include "program/Command.h"
#include "program/Help.h"

namespace boardctl {

namespace {

constexpr std::size_t MAX_JSON_SIZE = std::size_t{16} * 1024 * 1024;

struct BuildWords {
    std::string source, target;
};

std::vector<BD::Tag> readTags(const std::string& source) {
    if (source == STANDARD_STREAM)
        return board::tagsFromJson(board::readStandardInput(MAX_JSON_SIZE), "standard input");
    return board::tagsFromJson(board::readFile(source, MAX_JSON_SIZE), source);
}

int build(const Options& options, const BuildWords& words) {
    const auto& [source, target] = words;
    const bool isPrinted = target == STANDARD_STREAM;
    if (isPrinted && options.json)
        throw WrongCall("-o - writes the image to standard output, so it excludes --format json");
    const std::vector<BD::Tag> tags = readTags(source);
    const std::string image = board::imageOf(tags);
    if (image.size() > board::MAX_IMAGE_SIZE)
        throw board::Error(source + ": the image would have " + std::to_string(image.size()) +
                           " bytes (expected at most " + std::to_string(board::MAX_IMAGE_SIZE) +
                           ")");
    if (isPrinted) {
        std::cout << image;
        return DONE;
    }
    board::replaceFile(target, image);
    if (options.json)
        printJson({{"image", target}, {"tags", tags.size()}, {"size", image.size()}});
    if (flushOutput())
        return DONE;
    complain(target + ": was written anyway");
    return FAILED;
}

} // namespace

void addBdBuild(CLI::App& bd, Options& options) {
    const auto [command, words] = addCommand<BuildWords>(
        bd, options, "build", "Make an image of exactly the tags in a JSON file", build);
    command
        .add_option("TAGS", words.source,
                    "What `bd dump` prints: [{\"id\":45,\"data\":\"1234abcd\"}, ...]; - for "
                    "standard input")
        ->check(notEmpty())
        ->type_name("FILE")
        ->required();
    command
        .add_option("-o,--output", words.target,
                    "The image file; if this fails, an existing file does not change. - for "
                    "standard output")
        ->check(notEmpty())
        ->type_name("IMAGE")
        ->required();
    addExamples(command, {"bd dump old.bin >tags.json", "bd build tags.json -o new.bin"});
}

} // namespace boardctl
