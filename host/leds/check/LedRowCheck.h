#pragma once

#include "leds/check/LedFindings.h"
#include "leds/check/LedRows.h"

namespace board {

/// Finds rows that are wrong by themselves: no line runs them, their LEDs have no file, or their
/// action, group or time does something other than it seems to do.
void checkLedRows(const LedSequencerProfile& tables, const LedRows& rows, LedFindings& findings);

} // namespace board
