#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace board {

/// Makes text from files or users safe to print on one line of a terminal or a message. Each byte
/// of a control character, line separator or invalid UTF-8 becomes an escape such as "\x1b". So
/// does each byte of a character that changes the direction of text.
std::string printable(const std::string& text);

/// The columns that UTF-8 text occupies on a screen, counting one per character.
std::size_t columnsOf(const std::string& text);

/// True for one or more decimal digits and nothing else.
bool isDigits(const std::string& text);

/// The items of `list` with `separator` between them. An item may be anything that can be appended
/// to a string.
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
