#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "LedCtrl.h"
#include "leds/HostedLedCtrl.h"
#include "leds/LedMemory.h"
#include "leds/LedStates.h"
#include "leds/LedTable.h"

namespace board {

/// The LED sequencer of a hosted board. It runs for as long as the object exists. Each line from
/// the pipe is an event, and so is a pipe or an LED's file that goes or comes back.
class LedService {
public:
    /// Starts the sequencer. If another service reads the pipe, it shows its defaults and accepts
    /// no commands until that service has ended. `profile` must outlive the object. Throws
    /// LedsInUse if another host drives the LEDs of this board, because each would overwrite the
    /// other's states, and Error if a thread can't be created.
    ///
    /// `memory` is a file that survives a restart of the service, but not of the board. What the
    /// LEDs hold without a time is kept there, and held again at the next start. If it is empty,
    /// nothing is remembered.
    LedService(const LedSequencerProfile& profile, bool tellsChanges, EventQueue& events,
               const DeviceLocator& locator = DeviceLocator(), const std::string& memory = "");

    /// Files that were not found and are left out. One that can appear later is an event instead.
    const std::vector<std::string>& faults() const { return m_faults; }
    /// Why the sequencer accepted no commands when it started; empty if it did.
    const std::optional<std::string>& pipeFault() const { return m_pipeFault; }

    /// Who could send commands when the service started, in words; empty if nobody could.
    const std::optional<std::string>& writers() const { return m_writers; }

    /// Whether `line` held something without a time when the service was restarted.
    bool remembers(const std::string& line) const;

    ///@{
    /// Any thread.
    std::vector<LedStates::State> states() const { return m_states.states(); }
    /// Why each LED shows what it shows, in ascending order of their masks; nothing before the
    /// first tick is explained. Empty if the profile's tick period can't be used.
    std::vector<LedExplanation> explain() const;
    LedCounts counts() const;
    /// The LEDs that are lit in the present tick: bits of the masks in the profile. Nothing is lit
    /// before the first tick.
    std::uint32_t lit() const;
    /// If `isWanted`, each change of `lit` from now on calls `wake` of the events; otherwise, none
    /// does, as at first. Read `lit` after the call, because nothing reports an earlier change.
    void wakeAtChanges(bool isWanted) const;
    ///@}

private:
    struct Release {
        void operator()(LedCtrl* leds) const { leds->release(); }
    };

    const LedTable m_table;
    LedClaim m_claim; ///< until the sequencer runs; then its thread uses it
    const std::vector<std::string> m_faults;
    std::optional<std::string> m_pipeFault;
    std::optional<std::string> m_writers;
    ///@{
    /// They outlive the sequencer, which writes into the pipes that the first one drains.
    LedStates m_states;
    std::optional<LedMemoryFile> m_memory;
    ///@}
    std::unique_ptr<LedCtrl, Release> m_leds;
    HostedLedCtrl* m_hosted = nullptr; ///< the same; null if the sequencer is idle
};

} // namespace board
