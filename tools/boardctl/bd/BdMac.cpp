#include <iostream>
#include <optional>

#include "bd/BdCommands.h"
#include "bd/BdImage.h"
#include "descriptor/DescriptorEdit.h"
#include "descriptor/DescriptorImage.h"
#include "output/Json.h"
#include "output/Messages.h"

using nlohmann::ordered_json;

namespace boardctl {

namespace {

constexpr BD::TagId MAC_TAG = 1;
constexpr unsigned MAX_INTERFACE = 65535;

std::optional<unsigned> interfaceOf(const BdWords& words) {
    if (words.interface.empty())
        return std::nullopt;
    return numberOrWrongCall(words.interface, MAX_INTERFACE, "interface number");
}

/// The MAC addresses from `first` on, `count` at most.
int showMacs(const Options& options, const BdWords& words, unsigned first, unsigned count,
             bool isList) {
    return withTags(options, words, [&](CBoardDescr& descriptor) {
        int status = DONE;
        ordered_json json = ordered_json::array();
        const unsigned present = descriptor.getNumberOfTag(MAC_TAG);
        const unsigned last = isList ? present : first + count;
        for (unsigned index = first; index < last; ++index) {
            String mac, error;
            unsigned interface = 0;
            ordered_json entry = {{"index", index}, {"mac", nullptr}, {"interface", nullptr}};
            if (descriptor.getMacAddress(index, mac, interface, error).isSuccess()) {
                entry["mac"] = mac.c_str();
                entry["interface"] = interface;
                if (!options.json)
                    std::cout << (isList ? std::to_string(index) + " " : "") << mac.c_str() << " "
                              << interface << "\n";
            } else {
                // The library has no text for a record of the wrong size.
                const std::string fault = error.isEmpty() ? "MAC address " + std::to_string(index) +
                                                                " is not 8 bytes long"
                                                          : error.c_str();
                entry["error"] = fault;
                complain(fault);
                status = FAILED;
            }
            json.push_back(std::move(entry));
        }
        if (options.json)
            printJson(isList ? json : json.front());
        return status;
    });
}

} // namespace

int bdMacList(const Options& options, const BdWords& words) {
    return showMacs(options, words, 0, 0, true);
}

int bdMacGet(const Options& options, const BdWords& words) {
    const unsigned index = numberOrWrongCall(words.position, board::MAX_IMAGE_SIZE, "address");
    return showMacs(options, words, index, 1, false);
}

int bdMacSet(const Options& options, const BdWords& words) {
    const unsigned index = numberOrWrongCall(words.position, board::MAX_IMAGE_SIZE, "address");
    const std::string mac = orWrongCall([&] { return board::parseMac(words.mac); });
    const std::optional<unsigned> interface = interfaceOf(words);
    return edit(options, words, [&](board::DescriptorEdit& descriptor) {
        descriptor.setMac(index, mac, interface);
    });
}

int bdMacAdd(const Options& options, const BdWords& words) {
    const std::string mac = orWrongCall([&] { return board::parseMac(words.mac); });
    const unsigned interface = interfaceOf(words).value_or(0);
    return edit(options, words,
                [&](board::DescriptorEdit& descriptor) { descriptor.addMac(mac, interface); });
}

} // namespace boardctl
