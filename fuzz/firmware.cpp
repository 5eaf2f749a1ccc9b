// Any bytes as information file and as a file with a number.

#include <cstdlib>
#include <cstring>

#include <sys/mman.h>
#include <unistd.h>

#include "ImageInfo.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    static const int file = ::memfd_create("firmware", MFD_CLOEXEC);
    if (::ftruncate(file, 0) != 0 || ::pwrite(file, bytes, size, 0) != static_cast<ssize_t>(size))
        std::abort();
    const String path = String::format("/proc/self/fd/%d", file);
    ImageInfo info(path);
    String error;
    if (!info.init(error).isSuccess() || std::strchr(info.versionString.c_str(), '\n'))
        std::abort();
    int value = 0;
    if (readValueFromFile(path, value).isSuccess() != (size > 0))
        std::abort();
    return 0;
}
