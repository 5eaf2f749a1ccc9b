#include "button/ButtonService.h"

#include <cerrno>
#include <utility>

#include <fcntl.h>

#include "base/Error.h"
#include "base/File.h"

namespace board {

namespace {

TYTime monotonicTime() {
    TYTime now;
    static_cast<void>(now.getSystemClock(TYTime::MONOTONIC_CLOCK));
    return now;
}

/// Opens the button's file. As long as it is open, no other file can get its identity. A character
/// device is opened only as a path (O_PATH), because its driver may allow just one reader. A pipe
/// stays open for reading and writing, because the monitor opens it again for each message and a
/// message written in between must not be lost.
FileDescriptor openButton(const std::string& path) {
    FileDescriptor file = openFile(path, O_PATH);
    if (kindOf(file) == FileKind::CHARACTER_DEVICE) {
        expectReadable(path);
        return file;
    }
    if (kindOf(file) == FileKind::PIPE) // checked again: the path may lead to another file now
        file = openFile(path, O_RDWR | O_NONBLOCK);
    if (kindOf(file) != FileKind::PIPE)
        throw Error(path + ": is not a button (expected a pipe or a character device)");
    return file;
}

} // namespace

XCode ButtonService::Watch::runThread() {
    XCode status = ServiceButton::runThread(); // returns only if the device has failed
    report("");
    return status;
}

void ButtonService::Watch::end(const String& why) {
    report(why);
    static_cast<void>(stop()); // takes effect when this thread waits next
}

void ButtonService::Watch::report(const String& why) {
    m_hasFailed = true;
    m_events.push(event::FaultReport{
        String::format("button: %s%s is no longer watched", m_path.c_str(), why.c_str()).c_str()});
}

void ButtonService::Watch::processButtonMessage(const String& message) {
    const auto found = tryIdentify(m_path.c_str());
    if (found && found != tryIdentify(m_file)) // reads of the new file might never wait
        end(" was replaced and");
    else if (!message.isEmpty())
        ServiceButton::processButtonMessage(message);
    // A pipe returns nothing if somebody opened and closed it. A device that returns nothing once
    // would do so forever.
    else if (kindOf(m_file) == FileKind::CHARACTER_DEVICE)
        end(" returned no message (expected a device that waits for the button) and");
}

ButtonService::ButtonService(const NamedPath& device, EventQueue& events, Clock clock)
    : m_events(events), m_clock(clock ? std::move(clock) : monotonicTime),
      m_file(openButton(device.path)), m_button(device.path.c_str(), this, m_file, events) {
    // Two monitors would each get a part of a pipe's messages.
    if (kindOf(m_file) == FileKind::PIPE && !m_lock.tryTake(m_file)) {
        if (errno != EWOULDBLOCK)
            failWith(device.path, "can't lock", errno);
        throw Error(device.path + ": another program watches this button");
    }
    String error;
    if (!m_button.start(error).isSuccess())
        throw Error(error.c_str());
}

ButtonService::~ButtonService() {
    static_cast<void>(m_button.stop()); // while the observer still exists
}

// The times that the library passes come from the calendar clock, which may be set during a press.
void ButtonService::onButtonPressed(const TYTime&) {
    m_pressedAt = m_clock();
    m_events.push(event::ButtonPressed{});
}

void ButtonService::onButtonReleased(const TYTime&) {
    // If the button was down before the service started, nobody knows for how long.
    const std::optional<TYTime> pressedAt = std::exchange(m_pressedAt, std::nullopt);
    m_events.push(
        event::ButtonReleased{pressedAt ? std::optional(m_clock() - *pressedAt) : std::nullopt});
}

} // namespace board
