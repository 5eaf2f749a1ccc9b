#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "profile/Profile.h"

namespace board {

/// The tick in which the sequencer loads its blink pattern for the first time, and the number of
/// ticks until it loads the pattern again.
constexpr unsigned FIRST_BLINK = 32, BLINK_PERIOD = 33;

/// Blinking LEDs are lit in tick k if character k is '1'. After the last character, the last
/// BLINK_PERIOD characters repeat without end.
std::string blinkPhases(const LedSequencerProfile& profile);

/// For each row, whether a line can run it.
std::vector<bool> reachableRows(const LedSequencerProfile& profile);

/// The indices of the rows that may change what the LEDs in `mask` show, ascending: rows that light
/// these LEDs or put them out, and rows that may end what such a row has started.
std::vector<std::size_t> rowsFor(std::uint32_t mask,
                                 const std::vector<LedSequencerProfile::Command>& rows);

/// A table with only `rows` of `profile`, and with another blink pattern. Besides the LED with
/// `mask`, it has an LED for each bit of `mask`, because the runs that hold the bits are part of
/// the LED's state.
LedSequencerProfile profileFor(std::uint32_t mask, const std::vector<std::size_t>& rows,
                               const LedSequencerProfile& profile, std::uint32_t blinkPattern);

} // namespace board
