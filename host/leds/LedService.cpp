#include "leds/LedService.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include "base/Error.h"

namespace board {

namespace {

/// The sequencer without its pipe, which somebody else reads: it shows the defaults.
class SilentLedCtrl : public LedCtrl {
public:
    SilentLedCtrl(const LedTable& table, const LedSequencerProfile& profile)
        : LedCtrl(table.commands().data(), static_cast<unsigned>(table.commands().size()),
                  table.files().data(), static_cast<unsigned>(table.files().size()), profile.access,
                  profile.tickMs, profile.blinkPattern, NotStarted()),
          m_tick(profile.tickMs * 1000U) {
        if (!start(String::EMPTY()).isSuccess())
            throw Error("no thread for the LED sequencer");
    }
    ~SilentLedCtrl() override { static_cast<void>(stop()); }

    XCode runThread() override {
        openFiles();
        setupDefault();
        for (;;) {
            update();
            TYThread::usleep(m_tick);
        }
    }

private:
    const unsigned m_tick;
};

} // namespace

LedService::Claim::Claim(const std::vector<Led>& leds) {
    for (const Led& led : leds) {
        m_file = ::open(led.path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        if (m_file < 0)
            continue;
        if (::flock(m_file, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK)
            return;
        ::close(m_file);
        throw Error(led.path +
                    ": another program drives the LEDs of this board; they are left to it");
    }
}

LedService::Claim::~Claim() {
    if (m_file >= 0)
        ::close(m_file);
}

LedService::LedService(const LedSequencerProfile& profile, bool tellsChanges, EventQueue& events,
                       const DeviceLocator& locator)
    : m_table(profile, locator), m_claim(m_table.leds()), m_faults(m_table.faults()),
      m_states(m_table.leds(), profile.tickMs, tellsChanges, events) {
    const bool canTick =
        profile.tickMs * 1000U != 0; // otherwise the sequencer says so and stays idle
    try {
        if (canTick)
            m_pipe.emplace();
    } catch (const Error& error) {
        m_faults.push_back(error.what() + std::string("; the LEDs run without commands"));
    }
    if (!m_pipe && canTick)
        m_leds.reset(new SilentLedCtrl(m_table, profile));
    else
        m_leds.reset(
            new LedCtrl(m_table.commands().data(), static_cast<unsigned>(m_table.commands().size()),
                        m_table.files().data(), static_cast<unsigned>(m_table.files().size()),
                        profile.access, profile.tickMs, profile.blinkPattern));
}

std::optional<std::string> LedService::writers() const {
    return m_pipe ? std::optional(m_pipe->writers()) : std::nullopt;
}

} // namespace board
