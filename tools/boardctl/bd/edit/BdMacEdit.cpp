#include <optional>

#include "bd/BdCommands.h"
#include "bd/edit/Edit.h"
#include "program/Command.h"

namespace boardctl {

namespace {

constexpr unsigned MAX_INTERFACE = 65535;

struct MacWords : EditWords {
    std::string index, mac, interface;
};

std::string macOf(const MacWords& words) {
    return orWrongCall([&] { return board::parseMac(words.mac); });
}

std::optional<unsigned> interfaceOf(const MacWords& words) {
    if (words.interface.empty())
        return std::nullopt;
    return orWrongCall(
        [&] { return board::parseNumber(words.interface, MAX_INTERFACE, "interface number"); });
}

int setAddress(const Options& options, const MacWords& words) {
    const unsigned index = orWrongCall(
        [&] { return board::parseNumber(words.index, board::MAX_IMAGE_SIZE, "address"); });
    const std::string mac = macOf(words);
    const std::optional<unsigned> interface = interfaceOf(words);
    return edit(options, words, [&](board::DescriptorEdit& descriptor) {
        descriptor.setMac(index, mac, interface);
    });
}

int addAddress(const Options& options, const MacWords& words) {
    const std::string mac = macOf(words);
    const unsigned interface = interfaceOf(words).value_or(0);
    return edit(options, words,
                [&](board::DescriptorEdit& descriptor) { descriptor.addMac(mac, interface); });
}

void addMacWord(CLI::App& command, MacWords& words) {
    addWord(command, "MAC", words.mac, "Such as 02:00:00:00:00:07")->required();
}

} // namespace

void addBdMacEdit(CLI::App& mac, Options& options) {
    {
        const auto [command, words] =
            addCommand<MacWords, setAddress>(mac, options, "set", "Overwrite an address");
        addWord(command, "INDEX", words.index, "Which address, counted from 0")->required();
        addMacWord(command, words);
        addWord(command, "INTERFACE", words.interface,
                "The interface number, 0 to 65535; by default it does not change");
        addEditOptions(command, words);
    }
    const auto [command, words] =
        addCommand<MacWords, addAddress>(mac, options, "add", "Add an address after the last one");
    addMacWord(command, words);
    addWord(command, "INTERFACE", words.interface,
            "The interface number, 0 to 65535; by default 0");
    addEditOptions(command, words);
}

} // namespace boardctl
