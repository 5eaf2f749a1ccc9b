#pragma once

#include <nlohmann/json.hpp>

#include "board/Host.h"
#include "descriptor/TagImage.h"
#include "leds/LedTrace.h"
#include "watch/Watch.h"

/// Parts of a host's answers, as org.boarddrivers.Host.varlink describes them.
namespace board {

/// The type Device. `watched` is null for a device that no watch reads; its state dates from
/// `started`.
nlohmann::ordered_json toJson(const Device& device, const WatchedDevice* watched,
                              const TYTime& started);

/// The type Alarm.
nlohmann::ordered_json toJson(const Alarm& alarm);

/// The type Led. `profile` is that of the sequencer.
nlohmann::ordered_json toJson(const LedExplanation& led, const LedSequencerProfile& profile);

/// The type Tag.
nlohmann::ordered_json toJson(const ImageTag& tag);

/// The type Cpu.
nlohmann::ordered_json toJson(const Result<CpuReading>& load);

} // namespace board
