#pragma once

#include "leds/check/LedFindings.h"
#include "leds/check/LedRows.h"

namespace board {

/// Finds rows that are wrong by themselves: whose line never reaches them, whose LEDs have no file,
/// and whose action, group or time does not do what it looks like.
void checkLedRows(const LedSequencerProfile& tables, const LedRows& rows, LedFindings& findings);

} // namespace board
