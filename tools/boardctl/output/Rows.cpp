#include "output/Rows.h"

#include <algorithm>
#include <iostream>

#include "base/Text.h"

using nlohmann::ordered_json;

namespace boardctl {

std::string toStdString(const String& text) {
    return std::string(text.c_str(), text.length());
}

std::string rowsText(const InfoContainer& rows) {
    constexpr unsigned INDENT = 2;
    const auto keyOf = [](const InfoContainer::Row& row) {
        return std::string(std::size_t{row.level} * INDENT, ' ') +
               board::printable(toStdString(row.key));
    };
    std::size_t column = 0;
    for (const auto& row : rows.getRows())
        column = std::max(column, board::columnsOf(keyOf(row)));
    std::string text;
    for (const auto& row : rows.getRows()) {
        const std::string key = keyOf(row);
        text += key;
        if (!row.value.isEmpty()) {
            text.append(column + 2 - board::columnsOf(key), ' ');
            text += board::printable(toStdString(row.value));
        }
        text += "\n";
    }
    return text;
}

void printRows(const InfoContainer& rows) {
    std::cout << rowsText(rows);
}

ordered_json rowsToJson(const InfoContainer& rows) {
    ordered_json json = ordered_json::array();
    for (const auto& row : rows.getRows())
        json.push_back({{"level", row.level},
                        {"index", row.index},
                        {"key", toStdString(row.key)},
                        {"value", toStdString(row.value)}});
    return json;
}

} // namespace boardctl
