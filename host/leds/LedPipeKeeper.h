#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "base/Events.h"
#include "leds/LedPipe.h"

namespace board {

/// Keeps a claim on the pipe even if somebody removes or replaces the pipe. If another service has
/// the pipe, takes it over when that service ends. One thread at a time.
class LedPipeKeeper {
public:
    /// Claims the pipe for `group`, as LedPipeClaim does, if that is possible. `looksPerTry`, at
    /// least 1, is how often `look` is called in a few seconds.
    LedPipeKeeper(EventQueue& events, const std::string& group, unsigned looksPerTry);

    /// Why no lines arrive through the pipe: it could not be claimed, or was lost later. Empty
    /// while the claim holds.
    const std::optional<std::string>& fault() const { return m_fault; }
    /// LedPipeClaim::writers while the claim holds, otherwise empty.
    std::optional<std::string> writers() const;

    /// Checks whether the path still leads to the claimed pipe. If not, claims the pipe that is
    /// there, or a new one, under the same conditions as the constructor. Reports an event when the
    /// pipe is lost and when it is back. Costs one or two system calls unless something has changed
    /// or it is time for another try. True if the sequencer must open the pipe now, because it is
    /// another pipe.
    ///
    /// While another service has the pipe, only every `looksPerTry`-th call tries to claim it, and
    /// only if the pipe at the path has not changed since the previous one of these calls:
    /// otherwise, that service may be replacing its pipe.
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
    std::optional<FileIdentity> m_rejected; ///< what was in the pipe's place at the last try
    unsigned m_looks = 0;                   ///< so far, without a claim
};

} // namespace board
