#include "Output.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iomanip>
#include <iostream>

using nlohmann::ordered_json;

std::string printable(const String& text) {
    std::string shown;
    for (unsigned i = 0; i < text.length(); ++i) {
        const char c = text.c_str()[i];
        if (c >= ' ' && c <= '~')
            shown += c;
        else
            shown += String::format("\\x%02x", static_cast<unsigned char>(c)).c_str();
    }
    return shown;
}

void printRows(const InfoContainer& rows) {
    constexpr unsigned INDENT = 2;
    std::size_t column = 0;
    for (const auto& row : rows.getRows())
        column = std::max(column, std::size_t{row.level} * INDENT + printable(row.key).size());
    for (const auto& row : rows.getRows()) {
        const std::string key = std::string(std::size_t{row.level} * INDENT, ' ') + printable(row.key);
        if (row.value.isEmpty())
            std::cout << key << "\n";
        else
            std::cout << std::left << std::setw(static_cast<int>(column)) << key << "  "
                      << printable(row.value) << "\n";
    }
}

ordered_json rowsToJson(const InfoContainer& rows) {
    ordered_json json = ordered_json::array();
    for (const auto& row : rows.getRows())
        json.push_back({{"level", row.level},
                        {"index", row.index},
                        {"key", std::string(row.key.c_str(), row.key.length())},
                        {"value", std::string(row.value.c_str(), row.value.length())}});
    return json;
}

ordered_json fanToJson(const board::FanReading& fan) {
    ordered_json json = {{"name", fan.name}, {"description", fan.description}};
    if (fan.fault.empty()) {
        json["speed"] = board::speedName(fan.speed);
    } else {
        json["speed"] = nullptr;
        json["error"] = fan.fault;
    }
    return json;
}

void printJson(const ordered_json& json, int indent) {
    std::cout << json.dump(indent, ' ', false, ordered_json::error_handler_t::replace) << "\n";
}

void complain(const std::string& what) {
    std::cerr << "boardctl: " << what << "\n";
}

bool flushOutput() {
    errno = 0;
    if (std::cout.flush())
        return true;
    complain(std::string("can't write to standard output: ") + std::strerror(errno));
    return false;
}
