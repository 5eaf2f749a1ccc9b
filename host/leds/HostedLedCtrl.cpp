#include "leds/HostedLedCtrl.h"

#include <algorithm>
#include <utility>

#include "base/Error.h"

namespace board {

namespace {

constexpr std::uint32_t TICKS_PER_PIPE_LOOK = 4;
constexpr std::uint32_t FILE_LOOK_US = 1000000, PIPE_TRY_US = 5000000;

TYTime now() {
    TYTime time;
    static_cast<void>(time.getSystemClock(TYTime::SYSTEM_CLOCK));
    return time;
}

} // namespace

HostedLedCtrl::HostedLedCtrl(const LedSequencerProfile& profile, const LedTable& table,
                             const std::vector<FileNameMap>& files, Parts parts)
    : TracedLedCtrl(profile, table, files), m_tickUs(profile.tickUs()),
      m_drivesFiles(profile.access == ACCESS_FILES), m_tableNumber(numberOf(table)),
      m_ticksPerFileLook(std::max(1U, FILE_LOOK_US / m_tickUs)), m_parts(std::move(parts)) {
    begin();
    const XCode started = start(String::EMPTY());
    if (!started.isSuccess()) {
        shutdown(); // the pipe must not keep a reader, or senders would not notice the failure
        throw Error(std::string("can't start the LED sequencer: ") + started.getMessage().c_str());
    }
}

unsigned HostedLedCtrl::pipeLooksPerTry(std::uint32_t tickUs) {
    return std::max(1U, PIPE_TRY_US / TICKS_PER_PIPE_LOOK / tickUs);
}

HostedLedCtrl::~HostedLedCtrl() {
    static_cast<void>(stop());
}

XCode HostedLedCtrl::runThread() {
    for (;;) {
        tick();
        tellLit();
        remember();
        TYThread::usleep(m_tickUs);
        look();
        readLines([this](char* line) { handleLine(line); });
    }
}

// Called before the thread starts, because `testFifo` drops the lines in the pipe: no line may be
// lost once the service exists.
void HostedLedCtrl::begin() {
    if (!m_parts.pipe.fault()) {
        setupFifo();
        testFifo();
    }
    openFiles();
    if (m_drivesFiles)
        m_parts.files.begin();
    runDefaults(now());
    recall();
}

void HostedLedCtrl::recall() {
    if (!m_parts.memory || !m_parts.memory->former())
        return;
    const LedMemory& memory = *m_parts.memory->former();
    if (memory.table == m_tableNumber)
        restore(memory.holds);
    else
        rerun(memory.holds, [this](const LedHold& hold) {
            m_parts.events.push(event::FaultReport{"leds: the line '" + hold.line +
                                                   "' from before the restart is dropped: no row "
                                                   "of the table matches it any more"});
        });
}

void HostedLedCtrl::remember() {
    if (m_parts.memory && hasChanged())
        m_parts.memory->keep(toText({m_tableNumber, holds()}));
}

// No change is missed, because all threads see the operations on these atomics in one order. Either
// this thread sees that changes are wanted, or the thread that asked for them reads the new value.
void HostedLedCtrl::tellLit() {
    const std::uint32_t now = lit();
    if (m_lit.exchange(now) != now && m_wakesAtChanges)
        m_parts.events.wake();
}

void HostedLedCtrl::look() {
    ++m_ticks;
    if (m_ticks % TICKS_PER_PIPE_LOOK == 0 && m_parts.pipe.look())
        setupFifo(); // not testFifo, which would leave one more writer open for each new pipe
    if (m_drivesFiles && m_ticks % m_ticksPerFileLook == 0 && m_parts.files.look())
        openFiles();
}

void HostedLedCtrl::handleLine(char* line) {
    const bool isKnown = handle(line, now());
    {
        const std::lock_guard<std::mutex> hold(m_mutex);
        ++(isKnown ? m_counts.handled : m_counts.unknown);
    }
    if (isKnown)
        m_parts.events.push(event::LedCommand{line});
    else
        m_parts.events.push(event::LedCommandUnknown{line});
}

LedCounts HostedLedCtrl::counts() const {
    const std::lock_guard<std::mutex> hold(m_mutex);
    return m_counts;
}

} // namespace board
