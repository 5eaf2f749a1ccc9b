#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace board {

/// How many bytes the sequencer reads at once. A line that is longer, with its newline, is cut in
/// two.
constexpr std::size_t MAX_LED_LINE = 80;

/// The line with two words and a number, without its newline. Throws std::invalid_argument with
/// what is wrong: a word that is empty or contains a blank or a control character, or a line that
/// is too long.
std::string ledLine(const std::string& word1, const std::string& word2,
                    std::optional<std::int32_t> number);

/// Writes `line`, made by ledLine, and a newline into the LED pipe in one piece, without waiting.
/// Throws Error if the pipe does not exist, has no reader or may not be written by this user, if
/// its path leads to something other than a pipe, or if the next read would cut the line because
/// the pipe holds other lines.
///
/// A pipe of a stranger is an Error too, because somebody may have put it there to get the lines.
/// It must belong to root or to this user, or be writable by a group of this user or by `group`,
/// the one of the profile: only a member of a group can give a pipe to it.
void sendLedLine(const std::string& line, const std::string& group = "");

/// The same, but takes turns with other senders and writes only while the pipe is empty, so that
/// the next read can't cut the line. Until then, calls `pause` again and again. `pause` waits for a
/// quarter of a tick, and returns false to give up. Throws Error, saying that the line was not
/// sent, if `pause` returns false or this sender's turn does not come within LED_TURN_TICKS ticks.
void sendLedLineInTurn(const std::string& line, const std::function<bool()>& pause,
                       const std::string& group = "");

constexpr unsigned LED_PAUSES_PER_TICK = 4;
/// At most one line per tick is sent in turn, so this is also how many senders can wait at once.
constexpr unsigned LED_TURN_TICKS = 300;

} // namespace board
