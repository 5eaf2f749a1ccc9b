#include <functional>
#include <iostream>

#include "BdCommands.h"
#include "Output.h"
#include "base/File.h"
#include "base/Text.h"
#include "descriptor/DescriptorCheck.h"
#include "descriptor/DescriptorImage.h"

using nlohmann::ordered_json;

namespace {

constexpr BD::TagId MAC_TAG = 1;

/// The bytes of an image file, or of the board's device without one.
std::string readBytes(const Options& options, const std::string& image) {
    TString<char> bytes;
    if (image.empty()) {
        const Board board(options);
        if (!board.host().descriptor())
            throw board::Error(board.profilePath() + ": the board has no descriptor");
        String error;
        if (!board.host().descriptor()->readRawBD(bytes, error).isSuccess()) {
            const std::string fault = board.host().faultOf(board::DESCRIPTOR_DRIVER);
            throw board::Error(error.isEmpty()
                                   ? fault
                                   : error.c_str() + (fault.empty() ? "" : " (" + fault + ")"));
        }
    } else {
        bytes = board::readImage(image);
    }
    return std::string(bytes.data(), bytes.length());
}

/// What `use` makes of the tags of an image; of a corrupt one it gets those before the fault, and
/// the status is FAILED.
int withTags(const Options& options, const BdWords& words,
             const std::function<int(CBoardDescr&)>& use) {
    const std::string bytes = readBytes(options, words.image);
    CBoardDescr descriptor;
    String fault;
    const bool isGood =
        descriptor.importBD(TString<char>(bytes.data(), static_cast<unsigned>(bytes.size())), fault)
            .isSuccess();
    const int status = use(descriptor);
    if (isGood)
        return status;
    static_cast<void>(flushOutput());
    complain(fault.c_str());
    return FAILED;
}

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

const char* nameOf(board::Finding::Weight weight) {
    switch (weight) {
    case board::Finding::Weight::CORRUPT:
        return "corrupt";
    case board::Finding::Weight::WARNING:
        return "warning";
    case board::Finding::Weight::NOTE:
        break;
    }
    return "note";
}

} // namespace

int bdGet(const Options& options, const BdWords& words) {
    const board::TagPlace place = meant([&] { return board::parseTagPlace(words.tag); });
    const board::TagType type = meant([&] { return board::parseTagType(words.type); });
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

int bdCheck(const Options& options, const BdWords& words) {
    const bool isDevice = words.image.empty() || board::isDevice(words.image);
    const std::string bytes = readBytes(options, words.image);
    const board::CheckedImage image = board::checkImage(bytes, isDevice);
    if (options.json) {
        ordered_json findings = ordered_json::array();
        for (const board::Finding& finding : image.findings)
            findings.push_back({{"offset", finding.offset},
                                {"weight", nameOf(finding.weight)},
                                {"text", finding.text}});
        printJson({{"corrupt", image.isCorrupt},
                   {"size", bytes.size()},
                   {"used", image.usedBytes},
                   {"tags", image.tags},
                   {"findings", std::move(findings)}});
    } else {
        for (const board::Finding& finding : image.findings)
            std::cout << "at " << finding.offset << ": " << nameOf(finding.weight) << ": "
                      << finding.text << "\n";
        std::cout << image.tags << (image.tags == 1 ? " tag" : " tags") << " in " << image.usedBytes
                  << " of " << bytes.size() << " bytes" << (image.isCorrupt ? "; CORRUPT" : "")
                  << "\n";
    }
    if (!image.isCorrupt)
        return DONE;
    static_cast<void>(flushOutput());
    for (const board::Finding& finding : image.findings)
        if (finding.weight == board::Finding::Weight::CORRUPT)
            complain(finding.text);
    return FAILED;
}

int bdMacList(const Options& options, const BdWords& words) {
    return showMacs(options, words, 0, 0, true);
}

int bdMacGet(const Options& options, const BdWords& words) {
    const unsigned index = meantNumber(words.position, board::MAX_IMAGE_SIZE, "address");
    return showMacs(options, words, index, 1, false);
}
