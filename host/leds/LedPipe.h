#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace board {

/// The named pipe that the LED sequencer takes its command lines from.
constexpr char LED_PIPE[] = "/tmp/evt.fifo";

/// How many bytes the sequencer takes at once; a line with its newline must fit, or it is cut in
/// two.
constexpr std::size_t MAX_LED_LINE = 80;

/// The line of two words and a number, without its newline. Throws std::invalid_argument with what
/// is wrong: an empty word, a blank, a control character or a zero byte in one, or a line that is
/// too long.
std::string ledLine(const std::string& word1, const std::string& word2,
                    std::optional<std::int32_t> number);

/// Writes `line` and a newline into the pipe, in one piece. Never waits. Throws Error where there
/// is no pipe, nobody reads it, or it is full.
void sendLedLine(const std::string& line);

/// The right to read the pipe, which only one sequencer on a machine can have: two would share the
/// lines between them.
class LedPipeClaim {
public:
    /// Makes the pipe where there is none. Throws Error where somebody else reads it, or where
    /// something else than a pipe is in its place.
    LedPipeClaim();
    ~LedPipeClaim();
    LedPipeClaim(const LedPipeClaim&) = delete;
    LedPipeClaim& operator=(const LedPipeClaim&) = delete;

    /// Who may write lines, in words: "everybody", "owner and group" or "owner alone".
    const std::string& writers() const { return m_writers; }

private:
    int m_descriptor;
    std::string m_writers;
};

/// Why other users could put something else into the pipe's place; empty where the kernel prevents
/// it.
std::string ledPipeRisk();

} // namespace board
