#include "bd/BdCommands.h"
#include "bd/edit/Edit.h"
#include "program/Command.h"

namespace boardctl {

namespace {

struct RemoveWords : EditWords {
    std::string tag;
};

int removeTag(const Options& options, const RemoveWords& words) {
    const board::TagPlace place = orWrongCall([&] { return board::parseTagPlace(words.tag); });
    return edit(options, words,
                [&](board::DescriptorEdit& descriptor) { descriptor.remove(place); });
}

} // namespace

void addBdRemove(CLI::App& bd, Options& options) {
    const auto [command, words] =
        addCommand<RemoveWords, removeTag>(bd, options, "remove", "Remove a tag");
    addWord(command, "TAG", words.tag, TAG_HELP)->required();
    addEditOptions(command, words);
}

} // namespace boardctl
