#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "LedCtrl.h"
#include "leds/LedPipe.h"
#include "leds/LedStates.h"
#include "leds/LedTable.h"

namespace board {

/// The LED sequencer of a hosted board, from its making to its end.
class LedService {
public:
    /// Starts it. Where another service reads the pipe, the sequencer shows its defaults without
    /// taking commands. `profile` must outlive the object. Throws Error where another program
    /// drives the LEDs of this board, which both would set differently, and where no thread can be
    /// had.
    LedService(const LedSequencerProfile& profile, bool tellsChanges, EventQueue& events,
               const DeviceLocator& locator = DeviceLocator());

    /// What does not work: the pipe, files that are not there.
    const std::vector<std::string>& faults() const { return m_faults; }

    /// Who may send commands, in words; nothing where none are taken.
    std::optional<std::string> writers() const;

    std::vector<LedStates::State> states() const { return m_states.states(); }

private:
    struct Release {
        void operator()(LedCtrl* leds) const { leds->release(); }
    };

    /// Locks the first file of the LEDs, as everybody does who drives them from here.
    class Claim {
    public:
        explicit Claim(const std::vector<Led>& leds);
        ~Claim();
        Claim(const Claim&) = delete;
        Claim& operator=(const Claim&) = delete;

    private:
        int m_file = -1;
    };

    const LedTable m_table;
    const Claim m_claim;
    std::vector<std::string> m_faults;
    std::optional<LedPipeClaim> m_pipe;
    const LedStates
        m_states; // ends after the sequencer, which writes into the pipes that it drains
    std::unique_ptr<LedCtrl, Release> m_leds;
};

} // namespace board
