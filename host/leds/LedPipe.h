#pragma once

#include <cstdint>
#include <optional>
#include <string>

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

/// Writes `line` and a newline into the pipe in one piece, without waiting. Throws Error if there
/// is no pipe, if nobody reads it, or if the line can't be written, for example because the pipe is
/// full.
void sendLedLine(const std::string& line);

/// The right to read the pipe. Only one sequencer on a machine can have it, as two would share the
/// lines between them.
class LedPipeClaim {
public:
    /// Creates the pipe if it is missing. Throws Error if somebody else reads it, if something
    /// other than a pipe is in its place, or if it can't be created or opened.
    LedPipeClaim();

    /// Who may write lines, in words: "everybody", "its owner and group" or "its owner alone".
    const std::string& writers() const { return m_writers; }

private:
    FileDescriptor m_reader;
    std::string m_writers;
};

/// Why another user could put something else in the pipe's place: the names of the kernel's
/// protections that are switched off. Empty if both are on or the kernel does not have them.
std::optional<std::string> ledPipeRisk();

} // namespace board
