#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "base/Error.h"
#include "base/Events.h"
#include "base/FileDescriptor.h"

namespace board {

/// The named pipe from which the LED sequencer reads its command lines.
constexpr char LED_PIPE[] = "/tmp/evt.fifo";

/// How many bytes the sequencer reads at once. A line that is longer, with its newline, is cut in
/// two.
constexpr std::size_t MAX_LED_LINE = 80;

/// The line with two words and a number, without its newline. Throws std::invalid_argument with
/// what is wrong: a word that is empty or contains a blank or a control character, or a line that
/// is too long.
std::string ledLine(const std::string& word1, const std::string& word2,
                    std::optional<std::int32_t> number);

/// Writes `line`, made by ledLine, and a newline into the pipe in one piece, without waiting.
/// Throws Error if the pipe does not exist, has no reader or may not be written by this user, if
/// its path leads to something other than a pipe, or if the next read would cut the line because
/// the pipe holds other lines.
void sendLedLine(const std::string& line);

/// The same, but takes turns with other senders and writes only while the pipe is empty, so that
/// the next read can't cut the line. Until then, calls `pause` again and again. `pause` waits for a
/// quarter of a tick, and returns false to give up. Throws Error, saying that the line was not
/// sent, if `pause` returns false or this sender's turn does not come within LED_TURN_TICKS ticks.
void sendLedLineInTurn(const std::string& line, const std::function<bool()>& pause);

constexpr unsigned LED_PAUSES_PER_TICK = 4;
/// At most one line per tick is sent in turn, so this is also how many senders can wait at once.
constexpr unsigned LED_TURN_TICKS = 300;

/// Another service reads the pipe.
struct LedPipeInUse : Error {
    using Error::Error;
};

/// The right to read the pipe. Only one sequencer on a machine can have it, as two would share the
/// lines between them.
class LedPipeClaim {
public:
    /// Creates the pipe if it is missing. Throws LedPipeInUse if somebody else reads it, and Error
    /// if something other than a pipe is in its place, or if it can't be created or opened.
    LedPipeClaim();

    /// Why the path no longer leads to this pipe. Empty if it still does. Costs one system call.
    std::optional<std::string> loss() const;

    /// Who may write lines: "everybody", "its owner and group" or "its owner alone".
    const std::string& writers() const { return m_writers; }

private:
    FileDescriptor m_reader;
    /// Kept open: a read of the empty pipe then returns "no data", not "end of file".
    FileDescriptor m_writer;
    std::optional<FileIdentity> m_identity;
    std::string m_writers;
};

/// Keeps a claim on the pipe even if somebody removes or replaces it. One thread at a time.
class LedPipeKeeper {
public:
    /// Claims the pipe if that is possible.
    explicit LedPipeKeeper(EventQueue& events);

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
    /// If another service had the pipe from the start, it keeps the pipe.
    bool look();

private:
    EventQueue& m_events;
    std::optional<LedPipeClaim> m_claim;
    std::optional<std::string> m_fault;
    bool m_isLeftToOthers = false;
    std::optional<FileIdentity> m_rejected; ///< what was in the pipe's place
    unsigned m_looks = 0;                   ///< since it was rejected
};

/// Why another user could put something else in the pipe's place: the names of the kernel's
/// protections that are switched off. Empty if both are on or the kernel does not have them.
std::optional<std::string> ledPipeRisk();

} // namespace board
