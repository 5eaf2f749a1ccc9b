#include "button/ButtonPipe.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/ioctl.h>

#include "base/Error.h"
#include "base/File.h"

namespace board {

ButtonPipe::ButtonPipe(const std::string& path, const char* what)
    : m_path(path), m_pipe(openFile(path, O_RDWR | O_NONBLOCK)) {
    if (kindOf(m_pipe) != FileKind::PIPE)
        throw Error(m_path + ": is not a " + what + " (expected a pipe)");
}

bool ButtonPipe::isEmpty() const {
    int waiting = 0;
    return ::ioctl(m_pipe.number(), FIONREAD, &waiting) != 0 || waiting == 0;
}

void ButtonPipe::write(const std::string& message) const {
    if (tryWrite(m_pipe, message.data(), message.size()) != static_cast<ssize_t>(message.size()))
        failWith(m_path, "can't write", errno);
}

// Uses a record lock, which does not conflict with the flock that a host without its own lock file
// holds on the pipe.
bool ButtonPipe::setLock(int how, short type) const {
    struct flock lock {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    if (::fcntl(m_pipe.number(), how, &lock) == 0)
        return true;
    if (errno != EAGAIN)
        failWith(m_path, "can't press", errno);
    return false;
}

void ButtonPipe::lock() const {
    setLock(F_OFD_SETLKW, F_WRLCK);
}

bool ButtonPipe::tryLock() const {
    return setLock(F_OFD_SETLK, F_WRLCK);
}

void ButtonPipe::unlock() const {
    setLock(F_OFD_SETLK, F_UNLCK);
}

} // namespace board
