#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "base/Events.h"
#include "leds/LedPipe.h"

namespace board {

/// Keeps a claim on the pipe even if somebody removes or replaces it, and takes the pipe over when
/// another service that has it ends. One thread at a time.
class LedPipeKeeper {
public:
    /// Claims the pipe for `group`, as LedPipeClaim does, if that is possible. `looksPerTry` is how
    /// often `look` is called in some seconds, at least 1.
    LedPipeKeeper(EventQueue& events, const std::string& group, unsigned looksPerTry);

    /// Why no lines arrive through the pipe: it could not be claimed, or has been lost since. Empty
    /// while the claim holds.
    const std::optional<std::string>& fault() const { return m_fault; }
    /// LedPipeClaim::writers while the claim holds, otherwise empty.
    std::optional<std::string> writers() const;

    /// Looks whether the path still leads to the claimed pipe. If not, claims the pipe that is
    /// there, or a new one, under the same conditions as at the start. Each loss is an event, and
    /// so is its end. While all is well, or while the same thing is in the pipe's place, this costs
    /// one system call. True if the sequencer must open the pipe now, because it is another one.
    ///
    /// While another service has the pipe, only every `looksPerTry`-th look tries to claim it, and
    /// only if the same pipe was there at the last try: that service may be replacing its pipe.
    bool look();

private:
    bool isTimeToTry();
    bool claim(const std::optional<std::string>& loss);
    void keep(LedPipeClaim claim);

    EventQueue& m_events;
    const std::string m_group;
    const unsigned m_looksPerTry;
    std::optional<LedPipeClaim> m_claim;
    std::optional<std::string> m_fault;
    bool m_isInUse = false;                 ///< by another service
    std::optional<FileIdentity> m_rejected; ///< what was in the pipe's place
    unsigned m_looks = 0;                   ///< since the pipe was lost
};

} // namespace board
