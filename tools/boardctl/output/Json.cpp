#include "output/Json.h"

#include <iostream>

using nlohmann::ordered_json;

namespace boardctl {

void printJson(const ordered_json& json, int indent) {
    std::cout << json.dump(indent, ' ', false, ordered_json::error_handler_t::replace) << "\n";
}

} // namespace boardctl
