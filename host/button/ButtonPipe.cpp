#include "button/ButtonPipe.h"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/Error.h"

namespace board {

ButtonPipe::ButtonPipe(const std::string& path, const char* what)
    : m_path(path), m_pipe(::open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC)) {
    if (m_pipe < 0)
        throw Error(m_path + ": can't open: " + std::strerror(errno));
    struct stat status {};
    if (::fstat(m_pipe, &status) != 0 || !S_ISFIFO(status.st_mode)) {
        ::close(m_pipe);
        throw Error(m_path + ": is no " + what + " (expected a pipe)");
    }
}

ButtonPipe::~ButtonPipe() {
    ::close(m_pipe);
}

bool ButtonPipe::isEmpty() const {
    int waiting = 0;
    return ::ioctl(m_pipe, FIONREAD, &waiting) != 0 || waiting == 0;
}

void ButtonPipe::write(const std::string& message) const {
    if (::write(m_pipe, message.data(), message.size()) != static_cast<ssize_t>(message.size()))
        throw Error(m_path + ": can't write: " + std::strerror(errno));
}

// Not by flock, with which the one who watches keeps others from watching too.
bool ButtonPipe::setLock(int how, short type) const {
    struct flock lock {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    if (::fcntl(m_pipe, how, &lock) == 0)
        return true;
    if (errno != EAGAIN)
        throw Error(m_path + ": can't press: " + std::strerror(errno));
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
