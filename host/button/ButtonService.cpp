#include "button/ButtonService.h"

#include <cerrno>
#include <utility>

#include <fcntl.h>

#include "base/Error.h"
#include "base/File.h"

namespace board {

namespace {

/// Locks a pipe against a second monitor and keeps it open for reading and writing, because the
/// monitor opens it again for each message and a message written in between must not be lost. Owns
/// nothing for a character device.
FileDescriptor claim(const std::string& path) {
    const FileKind kind = kindOf(path);
    if (kind == FileKind::MISSING)
        failWith(path, "can't open", errno);
    if (kind == FileKind::CHARACTER_DEVICE) {
        expectReadable(path);
        return FileDescriptor();
    }
    if (kind != FileKind::PIPE)
        throw Error(path + ": is not a button (expected a pipe or a character device)");
    FileDescriptor pipe = openFile(path, O_RDWR | O_NONBLOCK);
    if (!tryLock(pipe))
        throw Error(path + ": another program watches this button");
    return pipe;
}

} // namespace

XCode ButtonService::Watch::runThread() {
    XCode status = ServiceButton::runThread(); // returns only if the device has failed
    end("");
    return status;
}

void ButtonService::Watch::end(const String& why) {
    m_hasFailed = true;
    m_events.push(event::FaultReport{
        String::format("button: %s%s is no longer watched", m_path.c_str(), why.c_str()).c_str()});
}

void ButtonService::Watch::processButtonMessage(const String& message) {
    if (!message.isEmpty())
        return ServiceButton::processButtonMessage(message);
    // Somebody opened and closed a pipe. A device that returns nothing would do so forever.
    if (kindOf(m_path.c_str()) != FileKind::CHARACTER_DEVICE)
        return;
    end(" returned no message (expected a device that waits for the button) and");
    static_cast<void>(stop()); // takes effect when this thread waits next
}

ButtonService::ButtonService(const NamedPath& device, EventQueue& events)
    : m_events(events), m_claim(claim(device.path)), m_button(device.path.c_str(), this, events) {
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
    // If the button was down before the service started, nobody knows for how long.
    const bool isKnown = std::exchange(m_isPressed, false);
    m_events.push(event::ButtonReleased{isKnown ? std::optional(heldFor) : std::nullopt});
}

} // namespace board
