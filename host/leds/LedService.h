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

/// The LED sequencer of a hosted board. It runs for as long as the object exists. It reports an
/// event for each line from the pipe, and when the pipe or an LED's file goes or comes back.
class LedService {
public:
    /// Starts the sequencer. If another service reads the pipe, the sequencer shows its defaults
    /// and accepts no commands until that service has ended. `profile` must outlive the object.
    /// Throws LedsInUse if another host drives the LEDs of this board, because the two hosts would
    /// overwrite each other's states. Throws Error if a thread can't be created.
    ///
    /// `memory` is the path of a file that survives a restart of the service, but not of the board.
    /// The service keeps there what lines have set without a time limit, and sets it again at its
    /// next start. If the path is empty, nothing is remembered.
    LedService(const LedSequencerProfile& profile, bool tellsChanges, EventQueue& events,
               const DeviceLocator& locator = DeviceLocator(), const std::string& memory = "");

    /// The files that were not found and are left out. If a missing file can appear later, an event
    /// reports it instead.
    const std::vector<std::string>& faults() const { return m_faults; }
    /// Why the sequencer accepted no commands when it started; empty if it accepted them.
    const std::optional<std::string>& pipeFault() const { return m_pipeFault; }

    /// Who could send commands when the service started, in words; empty if nobody could.
    const std::optional<std::string>& writers() const { return m_writers; }

    /// True if `line` had set something without a time limit that was still in force when the
    /// service was restarted.
    bool remembers(const std::string& line) const;

    ///@{
    /// Any thread.
    std::vector<LedStates::State> states() const { return m_states.states(); }
    /// Why each LED shows what it shows, in ascending order of the masks. Before the first tick, no
    /// reason is known. Empty if the profile's tick period can't be used.
    std::vector<LedExplanation> explain() const;
    LedCounts counts() const;
    /// The LEDs that are lit in the present tick, with the bits that they have in the profile; 0
    /// before the first tick.
    std::uint32_t lit() const;
    /// Sets whether each change of `lit` calls `wake` of the event queue. At first, no change does.
    /// Read `lit` after the call, because nothing reports an earlier change.
    void wakeAtChanges(bool isWanted) const;
    ///@}

private:
    struct Release {
        void operator()(LedCtrl* leds) const { leds->release(); }
    };

    const LedTable m_table;
    LedClaim m_claim; ///< used by the sequencer's thread as soon as that runs
    const std::vector<std::string> m_faults;
    std::optional<std::string> m_pipeFault;
    std::optional<std::string> m_writers;
    ///@{
    /// They outlive the sequencer, which writes into the pipes that `m_states` drains.
    LedStates m_states;
    std::optional<LedMemoryFile> m_memory;
    ///@}
    std::unique_ptr<LedCtrl, Release> m_leds;
    HostedLedCtrl* m_hosted = nullptr; ///< the same object; null if the sequencer is idle
};

} // namespace board
