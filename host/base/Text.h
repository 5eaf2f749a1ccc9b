#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace board {

/// Makes text from files or users safe for a terminal or a message, on one line: each byte of a
/// control or direction character, line separator or invalid UTF-8 becomes an escape: "\x1b".
std::string printable(const std::string& text);

/// The columns that UTF-8 text occupies on a screen, counting one per character.
std::size_t columnsOf(const std::string& text);

/// True for one or more decimal digits and nothing else.
bool isDigits(const std::string& text);

/// The items of `list` with `separator` between them. An item is anything that a string can append.
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

/// The words of a choice: "a, b or c".
std::string joinChoices(const std::vector<std::string>& words);

/// The part of a path before the name of the file: "a/b/" of "a/b/c". Empty if there is none.
std::string folderOf(const std::string& path);

/// The name of the file at the end of a path: "c" of "a/b/c".
std::string fileNameOf(const std::string& path);

} // namespace board
