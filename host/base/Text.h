#pragma once

#include <cstddef>
#include <string>

namespace board {

/// Foreign text made safe for a terminal or a message, on one line: control characters, line
/// separators and bytes that are not UTF-8 become "\x1b".
std::string printable(const std::string& text);

/// The columns that UTF-8 text takes on a screen, one per character.
std::size_t columnsOf(const std::string& text);

/// The items of `list`, with `separator` between them. An item is a text or converts to one.
template <class List>
std::string join(const List& list, const char* separator = ", ") {
    std::string joined;
    bool isFirst = true;
    for (const auto& item : list) {
        if (!isFirst)
            joined += separator;
        isFirst = false;
        joined += item;
    }
    return joined;
}

} // namespace board
