#include <iostream>

#include "base/Text.h"
#include "bd/BdCommands.h"
#include "bd/BdSource.h"
#include "descriptor/TagWords.h"
#include "output/Json.h"
#include "output/Messages.h"
#include "program/Command.h"
#include "program/Help.h"

using nlohmann::ordered_json;

namespace boardctl {

namespace {

struct GetWords {
    std::string image;
    std::string tag;
    std::string type = "hex";
};

/// Throws board::Error if the tag does not have the size of `type`.
ordered_json valueOf(const BD::Tag& tag, board::TagType type) {
    const auto numberIf = [&tag](bool fits) -> ordered_json {
        if (!fits)
            throw board::Error(CBoardDescr::ERR_WRONG_TAG_SIZE);
        return tag.getDataUInt();
    };
    switch (type) {
    case board::TagType::U8:
        return numberIf(tag.length == 1);
    case board::TagType::U16:
        return numberIf(tag.length == 2);
    case board::TagType::U32:
        return numberIf(tag.length == 4);
    case board::TagType::UINT:
        return numberIf(tag.length <= 4);
    case board::TagType::TEXT:
        return board::textOf(tag);
    case board::TagType::MAC:
        if (const auto address = board::macOf(tag))
            return address->word();
        throw board::Error(CBoardDescr::ERR_WRONG_TAG_SIZE);
    case board::TagType::HEX:
        break;
    }
    return board::hexDigits(tag);
}

int get(const Options& options, const GetWords& words) {
    const board::TagPlace place = orWrongCall([&] { return board::parseTagPlace(words.tag); });
    const board::TagType type = orWrongCall([&] { return board::parseTagType(words.type); });
    return printImage(options, words.image, [&](const board::TagImage& image) {
        ordered_json json = {{"id", place.id},
                             {"name", board::tagName(place.id)},
                             {"index", place.index},
                             {"type", words.type},
                             {"value", nullptr}};
        std::string fault;
        try {
            const BD::Tag& tag = image.find(place.id, place.index);
            json["length"] = tag.length;
            json["data"] = board::hexDigits(tag);
            json["value"] = valueOf(tag, type);
        } catch (const board::Error& error) {
            fault = error.what();
            json["error"] = fault;
        }
        const ordered_json& value = json["value"];
        if (options.json)
            printJson(json);
        else if (fault.empty())
            std::cout << board::printable(value.is_string() ? value.get<std::string>()
                                                            : value.dump())
                      << "\n";
        if (fault.empty())
            return DONE;
        complain(fault);
        return FAILED;
    });
}

} // namespace

void addBdGet(CLI::App& bd, Options& options) {
    const auto [command, words] = addCommand<GetWords, get>(bd, options, "get", "Read one tag");
    addWord(command, "TAG", words.tag, TAG_HELP)->required();
    command.add_option("--type", words.type, "How to read the data; by default hex")
        ->option_text("u8|u16|u32|uint|text|hex|mac");
    addImageOption(command, words.image);
    addExamples(command,
                {"bd get ProductID", "bd get MacAddress.1 -i image.bin", "bd get 2 --type u32"});
}

} // namespace boardctl
