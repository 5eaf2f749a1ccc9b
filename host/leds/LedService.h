#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "LedCtrl.h"
#include "base/FileDescriptor.h"
#include "leds/LedPipe.h"
#include "leds/LedStates.h"
#include "leds/LedTable.h"

namespace board {

/// The LED sequencer of a hosted board. It runs for as long as the object exists; each line from
/// the pipe is an event.
class LedService {
public:
    /// Starts the sequencer. If another service reads the pipe, it shows its defaults and accepts
    /// no commands. `profile` must outlive the object. Throws Error if another program drives the
    /// LEDs of this board, because each would overwrite the other's states, or if a thread can't be
    /// created.
    LedService(const LedSequencerProfile& profile, bool tellsChanges, EventQueue& events,
               const DeviceLocator& locator = DeviceLocator());

    /// What does not work: the pipe, or files that were not found.
    const std::vector<std::string>& faults() const { return m_faults; }

    /// Who may send commands, in words; empty if no commands are accepted.
    std::optional<std::string> writers() const;

    std::vector<LedStates::State> states() const { return m_states.states(); }

private:
    struct Release {
        void operator()(LedCtrl* leds) const { leds->release(); }
    };

    const LedTable m_table;
    const FileDescriptor m_claim; ///< locked: other programs leave these LEDs alone
    std::vector<std::string> m_faults;
    std::optional<LedPipeClaim> m_pipe;
    /// Outlives the sequencer, which writes into the pipes that this drains.
    const LedStates m_states;
    std::unique_ptr<LedCtrl, Release> m_leds;
};

} // namespace board
