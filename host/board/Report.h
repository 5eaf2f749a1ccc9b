#pragma once

#include <optional>
#include <string>
#include <vector>

#include "InfoContainer.h"
#include "board/CpuMeter.h"
#include "board/Firmware.h"
#include "board/Readings.h"

namespace board {

class Host;

/// One driver's part of the information dump.
struct DriverReport {
    std::string name;
    InfoContainer rows;
    std::string fault; ///< why the driver's device gave nothing; empty where all is well
};

/// The VoIP capacity.
struct CapacityReport {
    std::optional<unsigned> dspChannels; ///< nothing where the board does not say
    unsigned sipLegs = 0;
};

/// The whole information dump of a hosted board.
struct Report {
    std::vector<DriverReport> drivers; ///< in the repository's order
    std::vector<FanReading> fans;
    std::vector<TemperatureReading> temperatures;
    std::vector<PowerReading> powers;
    std::vector<LedReading> leds;
    std::optional<CapacityReport>
        capacity;                  ///< nothing where the board has none or it can't be settled
    std::optional<CpuReading> cpu; ///< left empty by `makeReport`: it takes time to measure
    std::optional<FirmwareReading>
        firmware; ///< left empty by `makeReport`: no driver stands for it
};

/// Loads the board descriptor. Returns why that failed; empty on success. A corrupt image leaves
/// the tags before the fault in the descriptor. The host must have a descriptor.
std::string loadDescriptor(const Host& host);

/// Settles the VoIP capacity from the descriptor that is loaded and the preferences. Returns why
/// that failed. The host must have a capacity.
std::string settleCapacity(const Host& host);

/// Loads the descriptor, settles the capacity, and asks every driver of the repository.
Report makeReport(const Host& host);

} // namespace board
