#include "button/ButtonService.h"

#include <cerrno>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/Error.h"
#include "base/File.h"

namespace board {

ButtonService::Hold::Hold(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0)
        throw Error(path + ": can't open: " + std::strerror(errno));
    if (S_ISCHR(status.st_mode)) {
        expectReadable(path);
        return;
    }
    if (!S_ISFIFO(status.st_mode))
        throw Error(path + ": is no button (expected a pipe or a character device)");
    m_pipe = ::open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    if (m_pipe < 0)
        throw Error(path + ": can't open: " + std::strerror(errno));
    if (::flock(m_pipe, LOCK_EX | LOCK_NB) != 0) {
        ::close(m_pipe);
        throw Error(path + ": another program watches this button");
    }
}

XCode ButtonService::Watch::runThread() {
    XCode status = ServiceButton::runThread(); // comes back only where the device has failed
    end("");
    return status;
}

void ButtonService::Watch::end(const String& why) {
    m_hasFailed = true;
    m_events.push(event::Fault{
        String::format("button: %s%s is not watched any more", m_path.c_str(), why.c_str())
            .c_str()});
}

void ButtonService::Watch::processButtonMessage(const String& message) {
    if (!message.isEmpty())
        return ServiceButton::processButtonMessage(message);
    // A pipe that somebody opened and closed again; but a device that gives nothing does so for
    // ever.
    struct stat status {};
    if (::stat(m_path.c_str(), &status) != 0 || !S_ISCHR(status.st_mode))
        return;
    end(" is at its end (expected a device that waits for the button) and");
    static_cast<void>(stop()); // takes effect when this thread waits next
}

ButtonService::Hold::~Hold() {
    if (m_pipe >= 0)
        ::close(m_pipe);
}

ButtonService::ButtonService(const NamedPath& device, EventQueue& events)
    : m_events(events), m_hold(device.path), m_button(device.path.c_str(), this, events) {
    String error;
    if (!m_button.start(error).isSuccess())
        throw Error(error.c_str());
}

ButtonService::~ButtonService() {
    static_cast<void>(m_button.stop()); // while the observer still exists
}

void ButtonService::onButtonPressed(const TYTime&) {
    m_isPressed = true;
    m_events.push(event::ButtonPressed{});
}

void ButtonService::onButtonReleased(const TYTime& heldFor) {
    // Of a button that was down before anybody watched, nobody knows for how long.
    const bool isKnown = std::exchange(m_isPressed, false);
    m_events.push(event::ButtonReleased{isKnown ? std::optional(heldFor) : std::nullopt});
}

} // namespace board
