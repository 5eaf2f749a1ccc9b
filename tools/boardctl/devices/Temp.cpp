#include "board/Readings.h"
#include "devices/SensorCommand.h"
#include "program/Commands.h"

namespace boardctl {

void addTemp(CLI::App& app, Options& options) {
    addSensorCommand<board::DeviceKind::THERMAL, board::readTemperature>(
        app, options, "temp", "Read the temperature sensors");
}

} // namespace boardctl
