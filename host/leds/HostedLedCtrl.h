#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/Events.h"
#include "leds/LedFileWatch.h"
#include "leds/LedMemory.h"
#include "leds/LedPipeKeeper.h"
#include "leds/TracedLedCtrl.h"

namespace board {

/// How many lines the sequencer has read.
struct LedCounts {
    std::uint64_t handled = 0; ///< lines that ran a row
    std::uint64_t unknown = 0; ///< lines that no row matched
};

/// The sequencer of a hosted board. Reports each line from the pipe. Checks the pipe and the LEDs'
/// files between two ticks, so that the process does not wake up more often for these checks.
class HostedLedCtrl final : public TracedLedCtrl {
public:
    /// What the sequencer works with. The objects behind pointers and references must outlive it.
    struct Parts {
        LedPipeKeeper pipe;
        LedFileWatch files;
        LedMemoryFile* memory; ///< null if nothing is remembered
        EventQueue& events;
    };

    /// Starts the thread; throws Error if it can't be created.
    HostedLedCtrl(const LedSequencerProfile& profile, const LedTable& table,
                  const std::vector<FileNameMap>& files, Parts parts);
    ~HostedLedCtrl() override;

    /// How often `look` of LedPipeKeeper is called in a few seconds. `tickUs` must be above 0.
    static unsigned pipeLooksPerTry(std::uint32_t tickUs);

    /// The base's loop with additions and an optional pipe. The base's own loop can't be extended,
    /// because a new virtual operation would change the library's binary interface.
    XCode runThread() override;

    ///@{
    /// Any thread.
    LedCounts counts() const;
    /// The LEDs that are lit in the present tick, as `LedService::lit` describes.
    std::uint32_t litNow() const { return m_lit; }
    void wakeAtChanges(bool isWanted) { m_wakesAtChanges = isWanted; }
    ///@}

private:
    void begin();
    void recall();
    void remember();
    void look();
    void tellLit();
    void handleLine(char* line);

    const std::uint32_t m_tickUs;
    const bool m_drivesFiles;
    const std::uint32_t m_tableNumber;
    const std::uint32_t m_ticksPerFileLook;
    Parts m_parts;
    std::uint32_t m_ticks = 0;
    mutable std::mutex m_mutex; ///< guards the counts
    LedCounts m_counts;
    std::atomic<std::uint32_t> m_lit{0};
    std::atomic<bool> m_wakesAtChanges{false};
};

} // namespace board
