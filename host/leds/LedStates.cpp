#include "leds/LedStates.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>

#include "base/Error.h"
#include "base/File.h"
#include "devices/DeviceValue.h"

namespace board {

LedStates::LedStates(std::uint32_t tickMs, bool tellsChanges, EventQueue& events)
    : m_tickMs(tickMs), m_tellsChanges(tellsChanges), m_events(events),
      m_notice(FileDescriptor(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))),
      m_thread("led states", this) {}

LedStates::LedStates(const std::vector<Led>& leds, std::uint32_t tickMs, bool tellsChanges,
                     EventQueue& events)
    : LedStates(tickMs, tellsChanges, events) {
    for (const Led& led : leds) {
        m_states.push_back({led.name, std::nullopt});
        m_sources.push_back({led.path, led.on, {}, {}, {}, {}});
        openPipe(m_sources.back());
    }
    if (!m_notice.isOpen())
        throw Error("can't follow the states of the LEDs: " + reasonOf(errno));
    if (!m_thread.start(String::EMPTY()).isSuccess())
        throw Error("can't create the thread for the states of the LEDs");
}

LedStates::~LedStates() {
    {
        const std::lock_guard<std::mutex> hold(m_mutex);
        m_isEnding = true;
    }
    ::eventfd_write(m_notice.number(), 1);
    static_cast<void>(m_thread.join());
}

void LedStates::lose(std::size_t index) {
    mark(index, Presence::GONE);
}

void LedStates::renew(std::size_t index) {
    mark(index, Presence::RENEWED);
}

void LedStates::mark(std::size_t index, Presence presence) {
    {
        const std::lock_guard<std::mutex> hold(m_mutex);
        m_sources[index].presence = presence;
        m_states[index].isLit.reset();
    }
    ::eventfd_write(m_notice.number(), 1);
}

std::vector<LedStates::State> LedStates::states() const {
    const std::lock_guard<std::mutex> hold(m_mutex);
    return m_states;
}

const char* LedStates::relayOf(std::size_t index) const {
    const Source& source = m_sources[index];
    return source.writeEnd.isOpen() ? source.relay.c_str() : nullptr;
}

void LedStates::openPipe(Source& source) {
    if (kindOf(source.path) != FileKind::PIPE) {
        // If no pipe can be created, the sequencer writes 1 to the file itself: a dim light is
        // better than none.
        if (source.on != 1 && !source.path.empty() && tryMakePipe(source.pipe, source.writeEnd))
            source.relay = "/proc/self/fd/" + std::to_string(source.pipe.number());
        return;
    }
    // Opened for writing too, so that a read reports no end when the sequencer closes the pipe.
    source.pipe = tryOpen(source.path, O_RDWR | O_NONBLOCK);
    source.stateFile = tryOpen(source.path + ".state", O_WRONLY | O_NONBLOCK | O_NOFOLLOW);
    if (kindOf(source.stateFile) != FileKind::REGULAR)
        source.stateFile.close();
}

bool LedStates::hasEnded() {
    eventfd_t ignored;
    ::eventfd_read(m_notice.number(), &ignored);
    const std::lock_guard<std::mutex> hold(m_mutex);
    return m_isEnding;
}

void LedStates::reopen() {
    const std::lock_guard<std::mutex> hold(m_mutex);
    for (std::size_t i = 0; i < m_sources.size(); ++i) {
        Source& source = m_sources[i];
        if (source.presence != Presence::RENEWED)
            continue;
        source.presence = Presence::HERE;
        if (source.writeEnd.isOpen())
            continue; // the sequencer still writes into it
        source.pipe.close();
        openPipe(source);
    }
}

bool LedStates::isHere(std::size_t index) const {
    const std::lock_guard<std::mutex> hold(m_mutex);
    return m_sources[index].presence == Presence::HERE;
}

XCode LedStates::runThread() {
    do {
        reopen();
        std::vector<pollfd> waited{{m_notice.number(), POLLIN, 0}};
        std::vector<std::size_t> drained, looked;
        for (std::size_t i = 0; i < m_sources.size(); ++i)
            if (m_sources[i].pipe.isOpen()) {
                waited.push_back({m_sources[i].pipe.number(), POLLIN, 0});
                drained.push_back(i);
            } else if (m_tellsChanges && !m_sources[i].path.empty() && isHere(i)) {
                looked.push_back(i);
            }
        const int pause = looked.empty() ? -1 : static_cast<int>(std::min(m_tickMs, 1000U));
        while (waited.front().revents == 0) {
            for (const std::size_t index : looked)
                look(index);
            if (::poll(waited.data(), waited.size(), pause) > 0)
                for (std::size_t i = 0; i < drained.size(); ++i)
                    if (waited[i + 1].revents != 0)
                        drain(drained[i]);
        }
    } while (!hasEnded());
    return XCode();
}

void LedStates::drain(std::size_t index) {
    char bytes[512];
    const ssize_t count = tryRead(m_sources[index].pipe, bytes, sizeof bytes);
    for (ssize_t i = 0; i < count; ++i)
        if (bytes[i] == '0' || bytes[i] == '1')
            set(index, bytes[i] == '1');
}

void LedStates::look(std::size_t index) {
    const FileDescriptor file = tryOpen(m_sources[index].path, O_RDONLY | O_NONBLOCK);
    if (!file.isOpen())
        return;
    // The kernel's files begin with a number. In other files, the last byte written is the state.
    const bool hasEnd = !isOfDeviceTree(file) && kindOf(file) == FileKind::REGULAR;
    char byte = 0;
    const ssize_t count =
        hasEnd ? tryReadAt(file, &byte, 1, trySize(file) - 1) : tryRead(file, &byte, 1);
    if (count == 1)
        set(index, byte != '0');
}

// What the thread reads before it has opened a renewed file is dropped: it may come from the former
// file, or would be reported a second time. The thread reads the LED's state again later.
bool LedStates::isNews(std::size_t index, bool isLit) const {
    return m_sources[index].presence == Presence::HERE && m_states[index].isLit != isLit;
}

void LedStates::set(std::size_t index, bool isLit) {
    std::unique_lock<std::mutex> hold(m_mutex);
    if (!isNews(index, isLit))
        return;
    hold.unlock();
    const bool isShown = !m_sources[index].writeEnd.isOpen() || passOn(index, isLit);
    FileDescriptor& stateFile = m_sources[index].stateFile;
    if (isShown && stateFile.isOpen() && tryWriteAt(stateFile, isLit ? "1" : "0", 1, 0) < 0)
        stateFile.close(); // gives up a copy that can't be written; the state is known anyway
    hold.lock();
    if (!isNews(index, isLit))
        return;
    m_states[index].isLit = isShown ? std::optional(isLit) : std::nullopt;
    if (isShown && m_tellsChanges) // under the lock, so that no change is reported after a loss
        m_events.push(event::LedChanged{m_states[index].name, isLit});
}

bool LedStates::passOn(std::size_t index, bool isLit) {
    Source& source = m_sources[index];
    const Result<void> written =
        writeContent(source.path, std::to_string(isLit ? source.on : 0U) + "\n");
    if (!written && !source.isFaulty)
        m_events.push(event::FaultReport{"leds: " + written.fault()});
    source.isFaulty = !written;
    return !source.isFaulty;
}

} // namespace board
