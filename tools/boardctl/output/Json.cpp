#include "output/Json.h"

#include <iostream>
#include <utility>

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

} // namespace

std::string jsonText(ordered_json json, int indent) {
    if (worksOnSimulatedBoard())
        markSimulated(json);
    return json.dump(indent, ' ', false, ordered_json::error_handler_t::replace) + "\n";
}

void printJson(ordered_json json, int indent) {
    std::cout << jsonText(std::move(json), indent);
}

} // namespace boardctl
