#pragma once

#include <string>
#include <vector>

#include "Fans.h"
#include "InfoContainer.h"

namespace board {

class Host;

/// One driver's part of the information dump.
struct DriverReport {
    std::string name;
    InfoContainer rows;
    std::string fault; ///< why the driver's device gave nothing; empty where all is well
};

/// The whole information dump of a hosted board.
struct Report {
    std::vector<DriverReport> drivers; ///< in the repository's order
    std::vector<FanReading> fans;
};

/// Asks every driver of the repository, after the board descriptor was loaded from its device.
Report makeReport(const Host& host);

/// Loads the board descriptor. Returns why that failed; empty on success. A corrupt image leaves the tags
/// before the fault in the descriptor. The host must have a descriptor.
std::string loadDescriptor(const Host& host);

} // namespace board
