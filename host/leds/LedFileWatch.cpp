#include "leds/LedFileWatch.h"

#include <cerrno>

#include <fcntl.h>

#include "base/Error.h"
#include "base/File.h"

namespace board {

LedClaim::LedClaim(const std::vector<Led>& leds) : m_leds(leds) {
    lock();
}

void LedClaim::lock() {
    for (const Led& led : m_leds) {
        m_file = tryOpen(led.path, O_RDONLY | O_NONBLOCK);
        m_path = led.path;
        if (!m_file.isOpen())
            continue;
        if (!m_lock.tryTake(m_file) && errno == EWOULDBLOCK)
            throw LedsInUse(
                led.path + ": another program drives the LEDs of this board; they are left alone",
                led.path);
        return;
    }
}

bool LedClaim::isFree(const std::string& path) {
    const FileDescriptor file = tryOpen(path, O_RDONLY | O_NONBLOCK);
    HostLock lock;
    return !file.isOpen() || lock.tryTake(file) || errno != EWOULDBLOCK;
}

void LedClaim::renew() {
    if (!m_file.isOpen() || tryIdentify(m_file) != tryIdentify(m_path))
        lock();
}

void LedFileWatch::begin() {
    for (std::size_t i = 0; i < m_leds.size(); ++i) {
        const Led& led = m_leds[i];
        try {
            if (led.path.empty())
                continue;
            expectWritable(led.path);
            m_files[i].opened = tryIdentify(led.path);
        } catch (const Error& error) {
            m_files[i].fault = error.what(); // so that later looks do not report it again
            m_states.lose(i);
            m_events.push(
                event::LedFileGone{led.name, led.fault.empty() ? error.what() : led.fault});
        }
    }
}

void LedFileWatch::report(std::size_t index, const std::string& fault) {
    File& file = m_files[index];
    file.opened.reset();
    m_states.lose(index);
    if (file.fault != fault)
        m_events.push(event::LedFileGone{m_leds[index].name, fault});
    file.fault = fault;
}

bool LedFileWatch::lookAt(std::size_t index) {
    const Led& led = m_leds[index];
    File& file = m_files[index];
    const std::optional<FileIdentity> found = tryIdentify(led.path);
    if (found && found == file.opened)
        return false;
    try {
        expectWritable(led.path);
    } catch (const Error& error) {
        report(index, error.what());
        return false;
    }
    if (!found) // it appeared after tryIdentify
        return false;
    if (file.opened)
        report(index, led.path + ": was replaced");
    file.opened = found;
    file.fault.clear();
    m_events.push(event::LedFileBack{led.name});
    m_states.renew(index);
    return true;
}

bool LedFileWatch::look() {
    bool mustOpen = false;
    for (std::size_t i = 0; i < m_leds.size(); ++i)
        if (!m_leds[i].path.empty() && lookAt(i))
            mustOpen = true;
    try {
        if (mustOpen)
            m_claim.renew();
    } catch (const Error&) {
        m_events.push(
            event::FaultReport{"leds: another program drives the LEDs of this board too"});
    }
    return mustOpen;
}

} // namespace board
