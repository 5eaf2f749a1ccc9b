#include "SimulatedButton.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Error.h"

namespace board {

SimulatedButton::SimulatedButton(const std::string& pipe)
    : m_path(pipe), m_pipe(::open(pipe.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC)) {
    if (m_pipe < 0)
        throw Error(m_path + ": can't open: " + std::strerror(errno));
    struct stat status {};
    if (::fstat(m_pipe, &status) != 0 || !S_ISFIFO(status.st_mode)) {
        ::close(m_pipe);
        throw Error(m_path + ": is no simulated button (expected a pipe)");
    }
}

SimulatedButton::~SimulatedButton() {
    ::close(m_pipe);
}

void SimulatedButton::awaitReader() const {
    using Clock = std::chrono::steady_clock;
    constexpr auto PATIENCE = std::chrono::seconds(1);
    constexpr auto NEXT_LOOK = std::chrono::microseconds(200);
    const auto end = Clock::now() + PATIENCE;
    for (int waiting = 0; ::ioctl(m_pipe, FIONREAD, &waiting) == 0 && waiting > 0;) {
        if (Clock::now() > end)
            throw Error(m_path + ": nobody watches the button");
        std::this_thread::sleep_for(NEXT_LOOK);
    }
}

// Not by flock, with which the one who watches keeps others from watching too.
void SimulatedButton::lock(short type) const {
    struct flock lock {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    if (::fcntl(m_pipe, F_OFD_SETLKW, &lock) != 0)
        throw Error(m_path + ": can't press: " + std::strerror(errno));
}

void SimulatedButton::press() const {
    lock(F_WRLCK);
    send("pressed\n");
}

void SimulatedButton::release() const {
    send("released\n");
    lock(F_UNLCK);
}

void SimulatedButton::send(const std::string& message) const {
    awaitReader();
    if (::write(m_pipe, message.data(), message.size()) != static_cast<ssize_t>(message.size()))
        throw Error(m_path + ": can't write: " + std::strerror(errno));
    awaitReader();
}

} // namespace board
