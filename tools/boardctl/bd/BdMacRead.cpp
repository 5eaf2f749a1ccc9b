#include <iostream>
#include <vector>

#include "bd/BdCommands.h"
#include "bd/BdSource.h"
#include "descriptor/TagWords.h"
#include "output/Json.h"
#include "output/Messages.h"
#include "program/Command.h"

using nlohmann::ordered_json;

namespace boardctl {

namespace {

struct MacReadWords {
    std::string image;
    std::string index;
};

std::vector<BD::Tag> macTags(const board::TagImage& image) {
    std::vector<BD::Tag> tags;
    for (const board::ImageTag& each : image.tags())
        if (each.tag.id == board::MAC_TAG)
            tags.push_back(each.tag);
    return tags;
}

/// Prints the address, unless the format is JSON. If there is none, prints the reason and sets
/// `status` to FAILED. Returns the JSON entry.
ordered_json printMac(const Options& options, const BD::Tag* tag, std::size_t index,
                      const std::string& prefix, int& status) {
    ordered_json entry = {{"index", index}, {"mac", nullptr}, {"interface", nullptr}};
    if (const auto address = tag ? board::macOf(*tag) : std::nullopt) {
        entry["mac"] = address->mac;
        entry["interface"] = address->interface;
        if (!options.json)
            std::cout << prefix << address->mac << " " << address->interface << "\n";
        return entry;
    }
    const std::string fault = tag ? "MAC address " + std::to_string(index) + " is not 8 bytes long"
                                  : board::missingTag(board::MAC_TAG);
    entry["error"] = fault;
    complain(fault);
    status = FAILED;
    return entry;
}

int listAddresses(const Options& options, const MacReadWords& words) {
    return printImage(options, words.image, [&](const board::TagImage& image) {
        int status = DONE;
        ordered_json json = ordered_json::array();
        for (const BD::Tag& tag : macTags(image)) {
            const std::size_t index = json.size();
            json.push_back(printMac(options, &tag, index, std::to_string(index) + " ", status));
        }
        if (options.json)
            printJson(json);
        return status;
    });
}

int getAddress(const Options& options, const MacReadWords& words) {
    const unsigned index = orWrongCall(
        [&] { return board::parseNumber(words.index, board::MAX_IMAGE_SIZE, "address"); });
    return printImage(options, words.image, [&](const board::TagImage& image) {
        int status = DONE;
        const std::vector<BD::Tag> tags = macTags(image);
        const ordered_json json =
            printMac(options, index < tags.size() ? &tags[index] : nullptr, index, "", status);
        if (options.json)
            printJson(json);
        return status;
    });
}

} // namespace

void addBdMacRead(CLI::App& mac, Options& options) {
    {
        const auto [command, words] = addCommand<MacReadWords, listAddresses>(
            mac, options, "list", "List each address with its index and interface number");
        addImageWord(command, words.image);
    }
    const auto [command, words] = addCommand<MacReadWords, getAddress>(
        mac, options, "get", "Print one address and its interface number");
    addWord(command, "INDEX", words.index, "Which address, counted from 0")->required();
    addImageOption(command, words.image);
}

} // namespace boardctl
