#include <iostream>

#include "bd/BdCommands.h"
#include "bd/BdSource.h"
#include "descriptor/TagsJson.h"
#include "program/Command.h"

namespace boardctl {

namespace {

struct DumpWords {
    std::string image;
};

int dump(const Options& options, const DumpWords& words) {
    return printImage(options, words.image, [](const board::TagImage& image) {
        std::cout << board::tagsToJson(image, worksOnSimulatedBoard());
        return DONE;
    });
}

} // namespace

void addBdDump(CLI::App& bd, Options& options) {
    const auto [command, words] = addCommand<DumpWords, dump>(
        bd, options, "dump", "Print all tags as JSON, for `bd build`; --format has no effect");
    addImageWord(command, words.image);
}

} // namespace boardctl
