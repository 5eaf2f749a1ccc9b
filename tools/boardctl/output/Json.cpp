#include "output/Json.h"

#include <iostream>
#include <utility>

#include "String.h"
#include "program/Board.h"

using nlohmann::ordered_json;

namespace boardctl {

namespace {

void markSimulated(ordered_json& json) {
    if (json.is_array())
        for (ordered_json& element : json)
            markSimulated(element);
    else if (json.is_object())
        json["simulated"] = true;
}

/// Escapes the control characters that JSON allows in strings, because a terminal may obey them.
std::string withoutControls(const std::string& json) {
    constexpr unsigned DELETE = 0x7F, LEAD = 0xC2, LAST = 0x9F;
    std::string text;
    for (std::size_t i = 0; i < json.size(); ++i) {
        const auto byte = static_cast<unsigned char>(json[i]);
        const auto next = static_cast<unsigned char>(i + 1 < json.size() ? json[i + 1] : 0);
        const unsigned code = byte == DELETE ? byte : byte == LEAD && next <= LAST ? next : 0;
        if (code == 0) {
            text += json[i];
            continue;
        }
        text += String::format("\\u%04x", code).c_str();
        i += byte == LEAD ? 1 : 0;
    }
    return text;
}

} // namespace

std::string jsonText(ordered_json json, int indent) {
    if (worksOnSimulatedBoard())
        markSimulated(json);
    return withoutControls(json.dump(indent, ' ', false, ordered_json::error_handler_t::replace)) +
           "\n";
}

void printJson(ordered_json json, int indent) {
    std::cout << jsonText(std::move(json), indent);
}

} // namespace boardctl
