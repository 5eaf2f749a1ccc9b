#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "CBoardDescr.h"
#include "CResourceVoip.h"
#include "InfoContainer.h"
#include "base/Result.h"
#include "base/files/FileLock.h"
#include "board/Firmware.h"
#include "board/Readings.h"

namespace board {

class Host;

/// One driver's part of the report.
struct DriverReport {
    std::string name;
    InfoContainer rows;               ///< only what is known
    std::optional<std::string> fault; ///< why the driver or its device does not work
};

/// The VoIP capacity.
struct CapacityReport {
    std::optional<unsigned> dspChannels; ///< empty if the descriptor does not state them
    unsigned sipLegs = 0;
};

/// The identifiers in a board descriptor; each is empty if the descriptor lacks it.
struct BoardIdentity {
    std::optional<unsigned> platform;
    std::optional<unsigned> product;
};

/// Everything that the drivers of a hosted board report.
struct Report {
    std::vector<DriverReport> drivers; ///< in the order of the repository
    std::vector<FanReading> fans;
    std::vector<TemperatureReading> temperatures;
    std::vector<PowerReading> powers;
    std::vector<LedReading> leds;
    BoardIdentity identity;
    std::optional<CapacityReport> capacity; ///< empty if there is none or it can't be determined

    // `makeReport` leaves these empty, because they have no driver.
    std::optional<Result<unsigned>> cpuSinceBoot; ///< percent
    std::optional<Result<FirmwareInfo>> firmware;
};

/// How long a host waits for a program that edits its descriptor. A host that never starts would be
/// worse than one without a descriptor.
constexpr std::chrono::seconds DESCRIPTOR_WAIT{3};

/// Loads the board descriptor. If the image is corrupt, the descriptor holds the tags before the
/// fault. While another program edits the device, waits as long as `wait` allows. If the device is
/// still locked then, loads nothing, returns a fault and calls Host::awaitDescriptor(true). The
/// host must have a descriptor.
Result<void> loadDescriptor(const Host& host, const LockWait& wait = {DESCRIPTOR_WAIT});

/// Determines the VoIP capacity from the loaded descriptor and the preferences. The host must have
/// a capacity.
Result<void> settleCapacity(const Host& host);

/// The identifiers in the tags that the descriptor holds now. Takes the descriptor's lock.
BoardIdentity identityOf(CBoardDescr& descriptor);

/// An identifier as it is printed, such as "0x12ab".
std::string identifierText(unsigned identifier);

/// The DSP channels; empty if the board does not state them.
std::optional<unsigned> dspChannelsOf(const CResourceVoip& capacity);

/// Loads the descriptor (see loadDescriptor), determines the capacity, and asks every driver of the
/// repository.
Report makeReport(const Host& host, const LockWait& wait = {DESCRIPTOR_WAIT});

} // namespace board
