#pragma once

#include <cstddef>
#include <filesystem>
#include <iterator>

namespace support {

/// The number of open descriptors of this process, including the one that counts them.
inline std::ptrdiff_t openDescriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

} // namespace support
