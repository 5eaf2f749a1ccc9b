#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "profile/Profile.h"

namespace board {

/// The tick in which the sequencer loads its blink pattern for the first time, and how many ticks
/// later it does so again.
constexpr unsigned FIRST_BLINK = 32, BLINK_PERIOD = 33;

/// What blinks is lit in tick k if character k is '1'. After the last character, the last
/// BLINK_PERIOD ones repeat without end.
std::string blinkPhases(const LedSequencerProfile& profile);

/// Whether each row is the one that its line runs.
std::vector<bool> reachableRows(const LedSequencerProfile& profile);

/// The indices of the rows that may change what the LEDs in `mask` show, ascending: rows that light
/// or end them, and rows that may end what one of these has started.
std::vector<std::size_t> rowsFor(std::uint32_t mask,
                                 const std::vector<LedSequencerProfile::Command>& rows);

/// A table with only `rows` of `profile`, and with another blink pattern. Its LEDs are the one with
/// `mask`, and each bit of it: the runs that hold the bits are part of the LED's state.
LedSequencerProfile profileFor(std::uint32_t mask, const std::vector<std::size_t>& rows,
                               const LedSequencerProfile& profile, std::uint32_t blinkPattern);

} // namespace board
