#include "base/FileDescriptor.h"

#include <cerrno>

#include <unistd.h>

namespace board {

void FileDescriptor::close() noexcept {
    const int error = errno;
    if (m_number >= 0)
        static_cast<void>(::close(release()));
    errno = error;
}

} // namespace board
