#include "output/Json.h"

#include <iostream>

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

void printJson(ordered_json json, int indent) {
    if (worksOnSimulatedBoard())
        markSimulated(json);
    std::cout << json.dump(indent, ' ', false, ordered_json::error_handler_t::replace) << "\n";
}

} // namespace boardctl
