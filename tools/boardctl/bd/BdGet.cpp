#include <iostream>

#include "base/Text.h"
#include "bd/BdCommands.h"
#include "bd/BdImage.h"
#include "descriptor/DescriptorImage.h"
#include "output/Json.h"
#include "output/Messages.h"

using nlohmann::ordered_json;

namespace boardctl {

namespace {

/// The value of a tag as `type`, through the library's accessors and with their failures.
XCode valueOf(CBoardDescr& descriptor, const board::TagPlace& place, board::TagType type,
              ordered_json& value, String& error) {
    XCode status;
    const auto read = [&](auto number, auto operation) {
        status = (descriptor.*operation)(place.id, place.index, number, error);
        if (status.isSuccess())
            value = number;
    };
    switch (type) {
    case board::TagType::U8:
        read(static_cast<unsigned char>(0), &CBoardDescr::getTagUInt8);
        break;
    case board::TagType::U16:
        read(static_cast<unsigned short>(0), &CBoardDescr::getTagUInt16);
        break;
    case board::TagType::U32:
        read(0UL, &CBoardDescr::getTagUInt32);
        break;
    case board::TagType::UINT:
        read(0U, &CBoardDescr::getTagUInt);
        break;
    case board::TagType::TEXT:
    case board::TagType::HEX: {
        const BD::Tag* const tag = descriptor.getTag(place.id, place.index, error);
        if (!tag)
            return XCode(XCode::FAILURE);
        const String text = board::textOf(*tag);
        value = type == board::TagType::HEX ? board::hexDigits(*tag)
                                            : std::string(text.c_str(), text.length());
    }
    }
    return status;
}

} // namespace

int bdGet(const Options& options, const BdWords& words) {
    const board::TagPlace place = orWrongCall([&] { return board::parseTagPlace(words.tag); });
    const board::TagType type = orWrongCall([&] { return board::parseTagType(words.type); });
    return withTags(options, words, [&](CBoardDescr& descriptor) {
        ordered_json value;
        String error;
        const bool isRead = valueOf(descriptor, place, type, value, error).isSuccess();
        if (options.json) {
            ordered_json json = {{"id", place.id},
                                 {"name", BD::TAG_ID_TO_STRING(place.id).c_str()},
                                 {"index", place.index},
                                 {"type", words.type},
                                 {"value", value}};
            String ignored;
            if (const BD::Tag* const tag = descriptor.getTag(place.id, place.index, ignored)) {
                json["length"] = tag->length;
                json["data"] = board::hexDigits(*tag);
            }
            if (!isRead)
                json["error"] = error.c_str();
            printJson(json);
        } else if (isRead) {
            const std::string text = value.is_string() ? value.get<std::string>() : value.dump();
            std::cout << board::printable(text) << "\n";
        }
        if (isRead)
            return DONE;
        complain(error.c_str());
        return FAILED;
    });
}

} // namespace boardctl
