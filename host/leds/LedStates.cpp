#include "leds/LedStates.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/Error.h"
#include "base/File.h"
#include "descriptor/DescriptorStore.h"

namespace board {

LedStates::LedStates(std::uint32_t tickMs, bool tellsChanges, EventQueue& events)
    : m_tickMs(tickMs), m_tellsChanges(tellsChanges), m_events(events),
      m_end(::eventfd(0, EFD_CLOEXEC)), m_thread("led states", this) {}

LedStates::LedStates(const std::vector<Led>& leds, std::uint32_t tickMs, bool tellsChanges,
                     EventQueue& events)
    : LedStates(tickMs, tellsChanges, events) { // from here on the destructor closes what is open
    for (const Led& led : leds) {
        m_states.push_back({led.name, std::nullopt});
        m_sources.push_back({led.path, -1, -1});
        openPipe(m_sources.back());
    }
    if (m_end < 0)
        throw Error(std::string("can't follow the states of the LEDs: ") + std::strerror(errno));
    if (!m_thread.start(String::EMPTY()).isSuccess())
        throw Error("no thread for the states of the LEDs");
}

LedStates::~LedStates() {
    ::eventfd_write(m_end, 1);
    static_cast<void>(m_thread.join());
    ::close(m_end);
    for (const Source& source : m_sources) {
        if (source.pipe >= 0)
            ::close(source.pipe);
        if (source.stateFile >= 0)
            ::close(source.stateFile);
    }
}

std::vector<LedStates::State> LedStates::states() const {
    const std::lock_guard<std::mutex> hold(m_mutex);
    return m_states;
}

void LedStates::openPipe(Source& source) {
    struct stat status {};
    if (::stat(source.path.c_str(), &status) != 0 || !S_ISFIFO(status.st_mode))
        return;
    // For both, so that it never comes to an end when the LED service closes it.
    source.pipe = ::open(source.path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    source.stateFile = ::open((source.path + ".state").c_str(), O_WRONLY | O_CLOEXEC);
}

XCode LedStates::runThread() {
    std::vector<pollfd> waited{{m_end, POLLIN, 0}};
    std::vector<std::size_t> drained, looked;
    for (std::size_t i = 0; i < m_sources.size(); ++i)
        if (m_sources[i].pipe >= 0) {
            waited.push_back({m_sources[i].pipe, POLLIN, 0});
            drained.push_back(i);
        } else if (m_tellsChanges && !m_sources[i].path.empty()) {
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
    return XCode();
}

void LedStates::drain(std::size_t index) {
    char bytes[512];
    const ssize_t count = ::read(m_sources[index].pipe, bytes, sizeof bytes);
    for (ssize_t i = 0; i < count; ++i)
        if (bytes[i] == '0' || bytes[i] == '1')
            set(index, bytes[i] == '1');
}

void LedStates::look(std::size_t index) {
    const std::string& path = m_sources[index].path;
    const int file = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (file < 0)
        return;
    // The system's files begin with a number; in others the last byte written is the state.
    struct stat status {};
    const bool hasEnd = !isDevice(path) && ::fstat(file, &status) == 0 && S_ISREG(status.st_mode);
    char byte = 0;
    const ssize_t count =
        hasEnd ? ::pread(file, &byte, 1, status.st_size - 1) : ::read(file, &byte, 1);
    ::close(file);
    if (count == 1)
        set(index, byte != '0');
}

void LedStates::set(std::size_t index, bool isLit) {
    std::string name;
    {
        const std::lock_guard<std::mutex> hold(m_mutex);
        if (m_states[index].isLit == isLit)
            return;
        m_states[index].isLit = isLit;
        name = m_states[index].name;
    }
    const int stateFile = m_sources[index].stateFile;
    if (stateFile >= 0 && ::pwrite(stateFile, isLit ? "1" : "0", 1, 0) < 0)
        ::close(
            std::exchange(m_sources[index].stateFile, -1)); // the LED is what counts, not its copy
    if (m_tellsChanges)
        m_events.push(event::LedChanged{name, isLit});
}

} // namespace board
