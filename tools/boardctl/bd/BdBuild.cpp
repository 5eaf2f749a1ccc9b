#include <string>

#include "base/Error.h"
#include "base/File.h"
#include "base/FileReplacement.h"
#include "descriptor/DescriptorImage.h"
#include "descriptor/TagsJson.h"
#include "output/Json.h"
#include "output/Messages.h"
#include "program/Command.h"
#include "program/Commands.h"
#include "program/Help.h"
#include "program/WordChecks.h"

namespace boardctl {

namespace {

constexpr std::size_t MAX_JSON_SIZE = std::size_t{16} * 1024 * 1024;

struct BuildWords {
    std::string source, target;
};

int build(const Options& options, const BuildWords& words) {
    const auto& [source, target] = words;
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

void addBdBuild(CLI::App& bd, Options& options) {
    const auto [command, words] = addCommand<BuildWords>(
        bd, options, "build", "Make an image of exactly the tags in a JSON file", build);
    command
        .add_option("TAGS", words.source,
                    "What `bd dump` prints: [{\"id\":45,\"data\":\"1234abcd\"}, ...]")
        ->check(notEmpty())
        ->type_name("FILE")
        ->required();
    command.add_option("-o,--output", words.target, "The image; replaced whole or left as it was")
        ->check(notEmpty())
        ->type_name("IMAGE")
        ->required();
    addExamples(command, {"bd dump old.bin >tags.json", "bd build tags.json -o new.bin"});
}

} // namespace boardctl
