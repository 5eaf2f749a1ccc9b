#pragma once

#include "leds/check/LedFindings.h"
#include "profile/Profile.h"

namespace board {

/// Runs the default rows in the real sequencer, one by one, and finds those that a later default
/// row ends, changes or hides before the first tick.
void checkLedStart(const LedSequencerProfile& tables, LedFindings& findings);

} // namespace board
