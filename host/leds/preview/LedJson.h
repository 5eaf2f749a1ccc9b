#pragma once

#include <nlohmann/json.hpp>

#include "leds/preview/LedPreview.h"

namespace board {

/// A preview for programs: {"ticks", "tick_ms", "leds", "events"}.
///
/// An LED has "mask", "name", "color" (null if it is not known), "wave" and "segments". A segment
/// has "from" and "to" (the first tick after it), what drives the LED ("row", the row's index;
/// "words"; "light", one of none, steady, blink, flash and roll; "timed") and "covered", a list of
/// what is hidden, with the same keys. An event has "tick", "ms", "line" and "row", which is null
/// if the line names no row.
nlohmann::ordered_json toJson(LedWaves waves);

/// The word for `light` in JSON.
const char* lightWord(LedLight light);

} // namespace board
