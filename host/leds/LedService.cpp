#include "leds/LedService.h"

#include <cerrno>

#include <fcntl.h>

#include "base/Error.h"
#include "base/File.h"

namespace board {

namespace {

/// The sequencer of a hosted board. Each line from the pipe is also an event.
class HostedLedCtrl final : public LedCtrl {
public:
    HostedLedCtrl(const LedTable& table, const std::vector<FileNameMap>& files,
                  const LedSequencerProfile& profile, bool takesCommands, EventQueue& events)
        : LedCtrl(table.commands().data(), static_cast<unsigned>(table.commands().size()),
                  files.data(), static_cast<unsigned>(files.size()), profile.access, profile.tickMs,
                  profile.blinkPattern, NotStarted()),
          m_tickUs(profile.tickUs()), m_takesCommands(takesCommands), m_events(events) {
        if (!start(String::EMPTY()).isSuccess())
            throw Error("can't create the thread for the LED sequencer");
    }
    ~HostedLedCtrl() override { static_cast<void>(stop()); }

    /// The base's loop, with two differences: the pipe is optional, and each line is reported. The
    /// base offers no place for them, because a new virtual operation would change the library's
    /// binary interface.
    XCode runThread() override {
        if (m_takesCommands) {
            setupFifo();
            testFifo();
        }
        openFiles();
        setupDefault();
        for (;;) {
            update();
            TYThread::usleep(m_tickUs);
            readLines([this](char* line) {
                m_events.push(event::LedCommand{line});
                handleCmd(line);
            });
        }
    }

private:
    const unsigned m_tickUs;
    const bool m_takesCommands;
    EventQueue& m_events;
};

/// Locks the first LED's file, as does every program that drives these LEDs from a profile. The
/// result is not open if no file can be opened.
FileDescriptor claim(const std::vector<Led>& leds) {
    for (const Led& led : leds) {
        FileDescriptor file = tryOpen(led.path, O_RDONLY | O_NONBLOCK);
        if (!file.isOpen())
            continue;
        if (!tryLock(file) && errno == EWOULDBLOCK)
            throw Error(led.path +
                        ": another program drives the LEDs of this board; they are left alone");
        return file;
    }
    return FileDescriptor();
}

/// The files that the sequencer writes 0 and 1 to.
std::vector<LedCtrl::FileNameMap> filesOf(const LedTable& table, const LedStates& states) {
    std::vector<LedCtrl::FileNameMap> files = table.files();
    for (LedCtrl::FileNameMap& file : files)
        for (std::size_t i = 0; i < table.leds().size(); ++i)
            if (table.leds()[i].mask == static_cast<std::uint32_t>(file.ledMask) &&
                states.relayOf(i))
                file.fileName = states.relayOf(i);
    return files;
}

} // namespace

LedService::LedService(const LedSequencerProfile& profile, bool tellsChanges, EventQueue& events,
                       const DeviceLocator& locator)
    : m_table(profile, locator), m_claim(claim(m_table.leds())), m_faults(m_table.faults()),
      m_states(m_table.leds(), profile.tickMs, tellsChanges, events) {
    if (profile.tickUs() == 0) { // stays idle and logs why
        m_leds.reset(new LedCtrl(nullptr, 0, nullptr, 0, profile.access, profile.tickMs, 0));
        return;
    }
    try {
        m_pipe.emplace();
    } catch (const Error& error) {
        m_faults.push_back(error.what() + std::string("; the LEDs run without commands"));
    }
    m_leds.reset(new HostedLedCtrl(m_table, filesOf(m_table, m_states), profile, m_pipe.has_value(),
                                   events));
}

std::optional<std::string> LedService::writers() const {
    return m_pipe ? std::optional(m_pipe->writers()) : std::nullopt;
}

} // namespace board
