#pragma once

#include "leds/check/LedFindings.h"
#include "leds/check/LedRows.h"

namespace board {

/// Finds rows that no line runs, rows whose LEDs have no file, and rows whose action, group or time
/// has another effect than it seems to have.
void checkLedRows(const LedSequencerProfile& tables, const LedRows& rows, LedFindings& findings);

} // namespace board
