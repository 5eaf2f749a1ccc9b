#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "board/Report.h"

namespace board {

/// What only a running host knows.
struct HostFigures {
    struct Alarm {
        std::string kind;   ///< such as "temperature"
        std::string device; ///< the driver's name
    };
    std::chrono::system_clock::time_point started;
    std::vector<Alarm> alarms; ///< in force now
    // Since the start.
    std::uint64_t ledLines = 0;        ///< lines from the LED pipe that a row matched
    std::uint64_t unknownLedLines = 0; ///< lines that no row matched
    std::uint64_t buttonPresses = 0;
    std::uint64_t lostEvents = 0; ///< events for which the queue had no room
};

/// The report's figures in the Prometheus text format, one family of samples for each figure.
/// Values that can't be read are omitted, so that a monitor sees a gap instead of a false value.
/// `figures` is null if no running host supplied them. Each sample of a simulated board has the
/// label simulated="true".
std::string toMetrics(const Host& host, const Report& report, bool isSimulated,
                      const HostFigures* figures);

} // namespace board
