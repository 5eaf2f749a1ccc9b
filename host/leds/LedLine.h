#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace board {

/// How many bytes the sequencer reads at once. A line that is longer, including its newline, is cut
/// in two.
constexpr std::size_t MAX_LED_LINE = 80;

/// The line with two words and a number, without its newline. Throws std::invalid_argument with a
/// message if a word is empty or contains a blank or a control character, or if the line is too
/// long.
std::string ledLine(const std::string& word1, const std::string& word2,
                    std::optional<std::int32_t> number);

/// Writes `line`, made by ledLine, and a newline into the LED pipe in one piece, without waiting.
/// Throws Error if the pipe does not exist, has no reader or may not be written by this user, if
/// its path leads to something other than a pipe, or if the next read would cut the line because
/// the pipe holds other lines.
///
/// Also throws Error if a stranger may have put the pipe there to get the lines. A pipe of root or
/// of this user is accepted. A pipe of another user is accepted if its group may write to it, and
/// that group is `group` (the profile's group) or one of this user's groups: a user who is not in
/// that group can't give a pipe to it.
void sendLedLine(const std::string& line, const std::string& group = "");

/// The same as sendLedLine, but takes turns with other senders and writes only while the pipe is
/// empty, so that the next read can't cut the line. Calls `pause` again and again until it can
/// write. `pause` waits for a quarter of a tick, and returns false to give up. Throws Error, saying
/// that the line was not sent, if `pause` returns false or this sender's turn does not come within
/// LED_TURN_TICKS ticks.
void sendLedLineInTurn(const std::string& line, const std::function<bool()>& pause,
                       const std::string& group = "");

constexpr unsigned LED_PAUSES_PER_TICK = 4;
/// At most one line per tick is sent in turn, so at most this many waiting senders get their turn.
constexpr unsigned LED_TURN_TICKS = 300;

} // namespace board
