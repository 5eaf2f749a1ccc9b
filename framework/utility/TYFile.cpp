#include "TYFile.h"

#include <cstring>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include "Waiting.h"

TYFile::TYFile(const String& path, bool closeAtEnd, bool create)
    : m_path(path), m_closeAtEnd(closeAtEnd), m_create(create) {}

TYFile::~TYFile() {
    if (m_closeAtEnd && m_descriptor >= 0)
        ::close(m_descriptor);
}

XCode TYFile::open(int flags, unsigned mode, int extraFlags) {
    if (m_descriptor >= 0)
        ::close(std::exchange(m_descriptor, -1));
    const int allFlags = flags | extraFlags | O_CLOEXEC | (m_create ? O_CREAT : 0);
    m_descriptor = waiting::interruptible([&] { return ::open(m_path.c_str(), allFlags, mode); });
    if (m_descriptor < 0)
        return XCode(XCode::FAILURE,
                     String::format("OPEN '%s': %s", m_path.c_str(), std::strerror(errno)));
    if (waiting::stopRequested()) {
        static_cast<void>(close());
        waiting::endIfStopped();
        return XCode(XCode::FAILURE,
                     String::format("OPEN '%s': THREAD IS STOPPED", m_path.c_str()));
    }
    return XCode();
}

XCode TYFile::readOnce(char* buffer, unsigned size, unsigned& count, bool wait) {
    count = 0;
    if (!wait && m_descriptor >= 0) { // if the file is closed, the read below fails
        pollfd data{m_descriptor, POLLIN, 0};
        if (waiting::interruptible([&] { return ::poll(&data, 1, 0); }) == 0)
            return XCode();
    }
    const ssize_t got = waiting::interruptible([&] { return ::read(m_descriptor, buffer, size); });
    if (got < 0)
        return XCode(XCode::FAILURE,
                     String::format("READ '%s': %s", m_path.c_str(), std::strerror(errno)));
    count = static_cast<unsigned>(got);
    return XCode();
}

XCode TYFile::close() {
    // The system frees the descriptor even on failure. Closing it again could close another
    // thread's new file.
    const int descriptor = std::exchange(m_descriptor, -1);
    if (descriptor < 0 || ::close(descriptor) == 0)
        return XCode();
    return XCode(XCode::FAILURE,
                 String::format("CLOSE '%s': %s", m_path.c_str(), std::strerror(errno)));
}
