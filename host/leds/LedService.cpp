#include "leds/LedService.h"

#include <algorithm>
#include <utility>

#include "base/Error.h"

namespace board {

namespace {

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
                       const DeviceLocator& locator, const std::string& memory)
    : m_table(profile, locator), m_claim(m_table.leds()), m_faults(m_table.faults()),
      m_states(m_table.leds(), profile.tickMs, tellsChanges, events) {
    if (profile.tickUs() == 0) { // the sequencer stays idle and logs why
        m_leds.reset(new LedCtrl(nullptr, 0, nullptr, 0, profile.access, profile.tickMs, 0));
        return;
    }
    LedPipeKeeper pipe(events, profile.group, HostedLedCtrl::pipeLooksPerTry(profile.tickUs()));
    m_writers = pipe.writers();
    if (pipe.fault())
        m_pipeFault = *pipe.fault() + "; the LEDs run without commands";
    if (!memory.empty())
        m_memory.emplace(memory, events);
    auto* const hosted =
        new HostedLedCtrl(profile, m_table, filesOf(m_table, m_states),
                          {std::move(pipe), LedFileWatch(m_table.leds(), m_claim, m_states, events),
                           m_memory ? &*m_memory : nullptr, events});
    m_leds.reset(hosted);
    m_hosted = hosted;
}

bool LedService::remembers(const std::string& line) const {
    if (!m_memory || !m_memory->former())
        return false;
    const std::vector<LedHold>& holds = m_memory->former()->holds;
    return std::any_of(holds.begin(), holds.end(),
                       [&](const LedHold& hold) { return hold.line == line; });
}

std::vector<LedExplanation> LedService::explain() const {
    return m_hosted ? m_hosted->explain() : std::vector<LedExplanation>();
}

LedCounts LedService::counts() const {
    return m_hosted ? m_hosted->counts() : LedCounts();
}

std::uint32_t LedService::lit() const {
    return m_hosted ? m_hosted->litNow() : 0;
}

void LedService::wakeAtChanges(bool isWanted) const {
    if (m_hosted)
        m_hosted->wakeAtChanges(isWanted);
}

} // namespace board
