#pragma once

#include "leds/check/LedFindings.h"
#include "leds/check/LedRows.h"

namespace board {

/// Finds LEDs that no row lights. If the table has rows that put LEDs out, also finds the rows
/// whose light nothing ever ends.
void checkLedLights(const LedSequencerProfile& tables, const LedRows& rows, LedFindings& findings);

} // namespace board
