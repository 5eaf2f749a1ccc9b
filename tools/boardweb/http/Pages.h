#pragma once

#include <cstddef>
#include <string_view>

namespace boardweb {

/// A file of the page, which the program contains.
struct PageFile {
    std::string_view path; ///< "/" for the page itself
    const char* type;
    const char* tag; ///< a hash of the content; in quotation marks, as HTTP writes it
    std::string_view content;
};

extern const PageFile PAGE_FILES[];
extern const std::size_t PAGE_FILES_COUNT;

} // namespace boardweb
