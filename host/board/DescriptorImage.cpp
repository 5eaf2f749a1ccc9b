#include "DescriptorImage.h"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

#include "Error.h"

namespace board {

std::string readFile(const std::string& path, std::size_t limit) {
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0)
        throw Error(path + ": can't open: " + std::strerror(errno));
    std::string content;
    char chunk[4096];
    ssize_t got;
    while ((got = ::read(file, chunk, sizeof chunk)) != 0) {
        if (got < 0 || content.size() + static_cast<std::size_t>(got) > limit)
            break;
        content.append(chunk, static_cast<std::size_t>(got));
    }
    const int error = errno;
    ::close(file);
    if (got < 0)
        throw Error(path + ": can't read: " + std::strerror(error));
    if (got > 0)
        throw Error(path + ": is larger than " + std::to_string(limit) +
                    " bytes, which is the most expected");
    return content;
}

TString<char> readImage(const std::string& path) {
    const std::string bytes = readFile(path, MAX_IMAGE_SIZE);
    return TString<char>(bytes.data(), static_cast<unsigned>(bytes.size()));
}

} // namespace board
